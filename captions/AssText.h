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
    /// Script and problems outlive this object. The style "Default" is a class only if that is asked for: every script
    /// has it, for what has no other.
    AssTextReader(const AssScript& script, CaptionProblems& problems, bool isDefaultNamed = false)
        : script_(script), problems_(problems), isDefaultNamed_(isDefaultNamed) {}

    AssText read(const AssEvent& event);

private:
    class Builder;

    const AssScript& script_;
    CaptionProblems& problems_;
    const bool isDefaultNamed_;
};

}  // namespace qz
