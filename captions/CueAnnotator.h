#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "captions/CaptionProblem.h"
#include "captions/CueNames.h"
#include "captions/CueText.h"

namespace qz {

/// Turns the spans of a file's cues into annotations of a palette.
///
/// A class is the annotation of exactly that name, or, since classes cannot hold blanks, of the name with a blank for
/// each "_"; bold, italic, underlined and struck text are the annotations "b", "i", "u", "s"; a voice is the annotation
/// with the speaker's name, else "v"; a colour is the annotation of that name as it is written, or in small letters.
/// What the palette lacks is the look that the file itself defines, if the names have looks (see Looks). What has
/// neither is reported once, where it first stands, and adds nothing, or the key of its name as it is written (see
/// CueNames). The global annotation, which holds anyway, adds nothing.
///
/// Of colours, backgrounds and languages that lie within one another the innermost holds alone.
class CueAnnotator {
public:
    /// The look that a file defines for a class.
    using LookOfClass = std::function<std::optional<CaptionLook>(const CueSpan&)>;

    /// What the first two refer to outlives this object.
    CueAnnotator(const CueNames& names, CaptionProblems& problems, LookOfClass lookOfClass = {})
        : names_(names), problems_(problems), lookOfClass_(std::move(lookOfClass)) {}

    Ref<QzMutableAnnoString> annotated(const CueText& cue);

    /// The annotation that a span stands for, the global one included; none when the palette lacks it.
    static Ref<QzAnnoKey> find(const CueSpan& span, const QzAnnoPalette& palette);

    /// What a span lays on its text: mostly one key, with `others` for a voice up to two, of which the last one has the
    /// speaker's name.
    const std::vector<Ref<QzAnnoKey>>& keysOf(const CueSpan& span);

private:
    Ref<QzAnnoKey> paletteKeyOf(const CueSpan& span) const;
    Ref<QzAnnoKey> fileKeyOf(const CueSpan& span) const;
    void report(const CueSpan& span);

    const CueNames names_;
    CaptionProblems& problems_;
    const LookOfClass lookOfClass_;
    // Empty for what adds nothing.
    std::map<std::pair<CueSpan::Kind, std::string>, std::vector<Ref<QzAnnoKey>>> known_;
};

}  // namespace qz
