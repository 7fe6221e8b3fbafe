#pragma once

#include "captions/AssScript.h"
#include "captions/CaptionProblem.h"
#include "captions/CuePlacement.h"
#include "captions/CueText.h"

namespace qz {

struct AssText {
    CueText text;
    CuePlacement placement;
    /// Whether it holds only a drawing.
    bool isDrawing = false;
};

/// Reads the text of lines of dialogue.
///
/// `{\b}`, `{\i}`, `{\u}`, `{\s}` and `{\r}` with a style become spans, and so do `{\c}`, `{\1a}` and `{\alpha}`, by a
/// colour's name: "#ffee00", with alpha "#ffee0080". An override that removes a trait of the style is a span named "0".
/// `{\an}`, `{\a}`, `{\pos}` and the line's margins become its placement. Other overrides have no effect and are
/// reported, each kind once for the file, and so are drawings (`{\p1}`), layers and effects; text in braces without a
/// backslash is a comment.
class AssTextReader {
public:
    /// Script and problems must outlive this object. The style "Default" is a class only if `isDefaultNamed`, since
    /// scripts use it for all text without another style.
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
