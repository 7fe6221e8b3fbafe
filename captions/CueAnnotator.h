#pragma once

#include <map>
#include <string>
#include <utility>

#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "captions/CaptionProblem.h"
#include "captions/CueNames.h"
#include "captions/CueText.h"

namespace qz {

/// Turns the spans of a file's cues into annotations of a palette.
///
/// A class is the annotation of exactly that name, or, since classes cannot hold blanks, of the name with a blank for
/// each "_"; bold, italic, underlined and struck text are the annotations "b", "i", "u", "s"; a voice is the annotation
/// with the speaker's name, else "v"; a colour is the annotation of that name as it is written, or in small letters.
/// What the palette lacks is reported once, where it first stands, and adds nothing, or the key of its name as it is
/// written (see CueNames). The global annotation, which holds anyway, adds nothing.
class CueAnnotator {
public:
    /// What both refer to outlives this object.
    CueAnnotator(const CueNames& names, CaptionProblems& problems) : names_(names), problems_(problems) {}

    Ref<QzMutableAnnoString> annotated(const CueText& cue);

    /// The annotation that a span stands for, the global one included; none when the palette lacks it.
    static Ref<QzAnnoKey> find(const CueSpan& span, const QzAnnoPalette& palette);

private:
    Ref<QzAnnoKey> keyOf(const CueSpan& span);
    void report(const CueSpan& span);

    const CueNames names_;
    CaptionProblems& problems_;
    // None for what adds nothing.
    std::map<std::pair<CueSpan::Kind, std::string>, Ref<QzAnnoKey>> known_;
};

}  // namespace qz
