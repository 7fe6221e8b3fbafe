#pragma once

#include "captions/AssScript.h"
#include "captions/CaptionProblem.h"
#include "captions/CuePlacement.h"
#include "captions/CueText.h"

namespace qz {

struct AssText {
    CueText text;
    CuePlacement placement;
    /// Whether it holds a drawing and nothing else.
    bool isDrawing = false;
};

/// Reads the text of lines of dialogue.
///
/// `{\b}`, `{\i}`, `{\u}`, `{\s}` and `{\r}` with a style become spans, and so do `{\c}`, `{\1a}` and `{\alpha}`, by a
/// colour's name: "#ffee00", with alpha "#ffee0080". A trait that an override takes from a style which has it is a span
/// of the name "0". `{\an}`, `{\a}`, `{\pos}` and the line's margins become its placement. Other overrides show nothing
/// and are reported, each kind once for the file, and so are drawings (`{\p1}`), layers and effects; what stands in
/// braces without a backslash is a comment.
class AssTextReader {
public:
    /// Both outlive this object.
    AssTextReader(const AssScript& script, CaptionProblems& problems) : script_(script), problems_(problems) {}

    AssText read(const AssEvent& event);

private:
    class Builder;

    const AssScript& script_;
    CaptionProblems& problems_;
};

}  // namespace qz
