#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "captions/AssScript.h"
#include "captions/CaptionProblem.h"
#include "captions/CuePlacement.h"
#include "captions/CueText.h"

namespace qz {

struct AssText {
    CueText text;
    CuePlacement placement;
};

/// Reads the text of lines of dialogue.
///
/// `{\b}`, `{\i}`, `{\u}`, `{\c}` and `{\r}` with a style become spans, a colour's name being "#ffee00"; `{\an}`,
/// `{\a}`, `{\pos}` and the line's margins become its placement. Other overrides show nothing and are reported, each
/// kind once for the file; drawings (`{\p1}`) are left out, and what stands in braces without a backslash is a comment.
class AssTextReader {
public:
    /// Both outlive this object.
    AssTextReader(const AssScript& script, std::vector<CaptionProblem>& problems)
        : script_(script), problems_(problems) {}

    AssText read(const AssEvent& event);

private:
    class Builder;

    const AssScript& script_;
    std::vector<CaptionProblem>& problems_;
    std::set<std::string> told_;
};

}  // namespace qz
