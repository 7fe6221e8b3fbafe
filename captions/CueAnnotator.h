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
/// with the speaker's name, else "v"; a colour is the annotation of that name as it is written, or in small letters. A
/// name missing from the palette gets the look defined by the file, if `CueNames` has looks (see Looks). A name with
/// neither is reported at its first occurrence, and adds nothing, or the key of its name as written (see CueNames). The
/// global annotation, which applies anyway, adds nothing.
///
/// Of nested colours, backgrounds and languages only the innermost applies.
class CueAnnotator {
public:
    /// The look that a file defines for a class.
    using LookOfClass = std::function<std::optional<CaptionLook>(const CueSpan&)>;

    /// The first two arguments must outlive this object.
    CueAnnotator(const CueNames& names, CaptionProblems& problems, LookOfClass lookOfClass = {})
        : names_(names), problems_(problems), lookOfClass_(std::move(lookOfClass)) {}

    Ref<QzMutableAnnoString> annotated(const CueText& cue);

    /// The annotation of a span, which may be the global one; null if the palette does not have it.
    static Ref<QzAnnoKey> find(const CueSpan& span, const QzAnnoPalette& palette);

    /// The keys that a span adds to its text: usually one; with `others`, up to two for a voice, the last one with the
    /// speaker's name.
    const std::vector<Ref<QzAnnoKey>>& keysOf(const CueSpan& span);

private:
    Ref<QzAnnoKey> paletteKeyOf(const CueSpan& span) const;
    Ref<QzAnnoKey> fileKeyOf(const CueSpan& span) const;
    void report(const CueSpan& span);

    const CueNames names_;
    CaptionProblems& problems_;
    const LookOfClass lookOfClass_;
    // Empty if it adds nothing.
    std::map<std::pair<CueSpan::Kind, std::string>, std::vector<Ref<QzAnnoKey>>> known_;
};

}  // namespace qz
