#include "captions/CueAnnotator.h"

#include <algorithm>

#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

/// The annotation of a tag that is not written as a class.
const char* nameOfTag(CueSpan::Kind kind) {
    switch (kind) {
        case CueSpan::styleClass:
            return "c";
        case CueSpan::bold:
            return "b";
        case CueSpan::italic:
            return "i";
        case CueSpan::underline:
            return "u";
        case CueSpan::voice:
            return "v";
        case CueSpan::colour:
            return "font";
    }
    return "";
}

}  // namespace

Ref<QzMutableAnnoString> CueAnnotator::annotated(const CueText& cue) {
    auto text = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(cue.text));
    for (const CueSpan& span : cue.spans) {
        const Ref<QzAnnoKey> key = keyOf(span);
        if (key && span.range.length > 0) text->addAnno(key, span.range);
    }
    return text;
}

Ref<QzAnnoKey> CueAnnotator::keyOf(const CueSpan& span) {
    const auto [place, isNew] = known_.try_emplace({span.kind, span.name});
    if (!isNew) return place->second;
    Ref<QzAnnoKey> key = find(span, names_.palette);
    if (!key) {
        report(span);
        if (names_.others) key = names_.others->keyNamed(span.name.empty() ? nameOfTag(span.kind) : span.name);
    }
    if (key && !key->isDefault()) place->second = std::move(key);
    return place->second;
}

Ref<QzAnnoKey> CueAnnotator::find(const CueSpan& span, const QzAnnoPalette& palette) {
    const auto named = [&](std::string_view name) { return palette.findAnnoKey(NSString::stringWithUTF8String(name)); };
    Ref<QzAnnoKey> key = span.name.empty() ? nullptr : named(span.name);
    if (key) return key;
    std::string otherwise = span.name;
    if (span.kind == CueSpan::styleClass)
        std::ranges::replace(otherwise, '_', ' ');
    else if (span.kind == CueSpan::colour)
        std::ranges::transform(otherwise, otherwise.begin(),
                               [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c; });
    else
        otherwise = nameOfTag(span.kind);
    return named(otherwise);
}

void CueAnnotator::report(const CueSpan& span) {
    const std::string tag = nameOfTag(span.kind);
    const std::string name = quotedExcerpt(span.name);
    const std::string effect = names_.others ? " changes nothing" : " is ignored";
    if (span.kind == CueSpan::styleClass) {
        problems_.push_back({CaptionProblem::unknownClass, span.line,
                             "the class " + name + effect + "; the palette has no annotation of that name"});
    } else if (span.kind == CueSpan::colour) {
        problems_.push_back({CaptionProblem::unknownClass, span.line,
                             "the colour " + name + effect + "; the palette has no annotation of that name"});
    } else if (span.name.empty()) {
        problems_.push_back({CaptionProblem::unknownName, span.line,
                             "<" + tag + "> adds nothing; the palette has no annotation \"" + tag + "\""});
    } else {
        problems_.push_back(
            {CaptionProblem::unknownName, span.line,
             "the voice " + name + " adds nothing; the palette has no annotation of that name and none \"v\""});
    }
}

}  // namespace qz
