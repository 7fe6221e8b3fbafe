#include "captions/CueAnnotator.h"

#include <algorithm>
#include <array>

#include "captions/AsciiText.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

/// The annotation of a tag that is not written as a class.
const char* nameOfTag(CueSpan::Kind kind) {
    switch (kind) {
        case CueSpan::styleClass:
        case CueSpan::reset:
            return "c";
        case CueSpan::bold:
            return "b";
        case CueSpan::italic:
            return "i";
        case CueSpan::underline:
            return "u";
        case CueSpan::strikeThrough:
            return "s";
        case CueSpan::voice:
            return "v";
        case CueSpan::colour:
            return "font";
        case CueSpan::language:
            return "lang";
    }
    return "";
}

/// The name of a span's annotation, as written.
std::string nameOf(const CueSpan& span) {
    const std::string tag = nameOfTag(span.kind);
    switch (span.kind) {
        case CueSpan::styleClass:
        case CueSpan::reset:
        case CueSpan::colour:
            return span.name;
        case CueSpan::voice:
            return span.name.empty() ? tag : span.name;
        case CueSpan::language:
            return tag + " " + span.name;
        default:
            return tag + span.name;
    }
}

/// Groups of spans where only the innermost applies.
enum Group { kColours, kBehind, kLanguages, kGroups };

std::optional<Group> groupOf(const CueSpan& span) {
    if (span.kind == CueSpan::colour) return kColours;
    if (span.kind == CueSpan::language) return kLanguages;
    const auto look = span.kind == CueSpan::styleClass ? lookOfWebVTTClass(span.name) : std::nullopt;
    return !look ? std::nullopt : std::optional(look->box ? kBehind : kColours);
}

}  // namespace

Ref<QzMutableAnnoString> CueAnnotator::annotated(const CueText& cue) {
    auto text = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(cue.text));
    struct Outer {
        Ref<QzAnnoKey> key;
        uint64_t end;
    };
    std::array<std::vector<Outer>, kGroups> outers;
    for (const CueSpan& span : cue.spans) {
        const auto& keys = keysOf(span);
        if (keys.empty() || span.range.length == 0) continue;
        if (const auto group = groupOf(span)) {
            std::vector<Outer>& outer = outers[*group];
            while (!outer.empty() && outer.back().end <= span.range.location) outer.pop_back();
            if (!outer.empty()) text->removeAnno(outer.back().key, span.range);
            outer.push_back({keys.back(), span.range.end()});
            if (*group == kBehind && span.range.length < text->length())
                problems_.addOnce(
                    CaptionProblem::notShown, span.line,
                    "the background " + quotedExcerpt(span.name) + " is not shown; only a whole caption can have a box",
                    "background");
        }
        for (const Ref<QzAnnoKey>& key : keys) text->addAnno(key, span.range);
    }
    return text;
}

const std::vector<Ref<QzAnnoKey>>& CueAnnotator::keysOf(const CueSpan& span) {
    const auto [place, isNew] = known_.try_emplace({span.kind, span.name});
    std::vector<Ref<QzAnnoKey>>& keys = place->second;
    if (!isNew) return keys;
    const Looks which = names_.looks ? names_.looks->which() : Looks::house;
    Ref<QzAnnoKey> key = which == Looks::file ? fileKeyOf(span) : nullptr;
    if (!key) key = paletteKeyOf(span);
    // A language is not a look.
    if (!key && (which == Looks::both || span.kind == CueSpan::language)) key = fileKeyOf(span);
    if (!key) report(span);
    if (key && !key->isDefault()) keys.push_back(key);
    const bool standsForSpeaker =
        key && span.kind == CueSpan::voice && !span.name.empty() && key->name()->utf8() != span.name;
    if (names_.others && (!key || standsForSpeaker)) keys.push_back(names_.others->keyNamed(nameOf(span)));
    return keys;
}

Ref<QzAnnoKey> CueAnnotator::paletteKeyOf(const CueSpan& span) const {
    const Ref<QzAnnoKey> key = find(span, names_.palette);
    return names_.looks && names_.looks->lookOf(key) ? nullptr : key;
}

Ref<QzAnnoKey> CueAnnotator::fileKeyOf(const CueSpan& span) const {
    if (!names_.looks) return {};
    const bool isClass = span.kind == CueSpan::styleClass || span.kind == CueSpan::reset;
    const std::optional<CaptionLook> look = !isClass       ? lookOfSpan(span)
                                            : lookOfClass_ ? lookOfClass_(span)
                                                           : std::nullopt;
    if (!look) return {};
    const Ref<QzAnnoKey> key = names_.looks->keyOf(*look);
    return names_.others && key ? names_.others->keyNamed(look->name) : key;
}

Ref<QzAnnoKey> CueAnnotator::find(const CueSpan& span, const QzAnnoPalette& palette) {
    const auto named = [&](std::string_view name) { return palette.findAnnoKey(NSString::stringWithUTF8String(name)); };
    const std::string tag = nameOfTag(span.kind);
    switch (span.kind) {
        case CueSpan::styleClass:
        case CueSpan::reset: {
            std::string spaced = span.name;
            std::ranges::replace(spaced, '_', ' ');
            const Ref<QzAnnoKey> key = named(span.name);
            return key ? key : named(spaced);
        }
        case CueSpan::colour: {
            const Ref<QzAnnoKey> key = named(span.name);
            return key ? key : named(lowered(span.name));
        }
        case CueSpan::voice: {
            const Ref<QzAnnoKey> key = span.name.empty() ? nullptr : named(span.name);
            return key ? key : named(tag);
        }
        default:
            return named(nameOf(span));
    }
}

void CueAnnotator::report(const CueSpan& span) {
    const std::string tag = nameOfTag(span.kind);
    const std::string name = quotedExcerpt(span.name);
    const std::string effect = names_.others ? " changes nothing" : " is ignored";
    const std::string noAnnotation = "; the palette has no annotation of that name";
    switch (span.kind) {
        case CueSpan::styleClass:
        case CueSpan::reset:
            return problems_.add(CaptionProblem::unknownClass, span.line, "the class " + name + effect + noAnnotation);
        case CueSpan::colour:
            return problems_.add(CaptionProblem::unknownClass, span.line,
                                 "the colour " + name + effect + noAnnotation +
                                     (parsedCssColour(span.name) ? "" : ", and it is not a known colour"));
        case CueSpan::voice:
            return problems_.add(CaptionProblem::unknownName, span.line,
                                 span.name.empty()
                                     ? "<v> adds nothing; the palette has no annotation \"v\""
                                     : "the voice " + name + " adds nothing" + noAnnotation + " and none \"v\"");
        case CueSpan::language:
            return problems_.add(CaptionProblem::notShown, span.line,
                                 "the language " + name + effect +
                                     (lookOfSpan(span) ? noAnnotation : "; it is not a tag such as ja or zh-Hant"));
        default:
            // Removing a trait concerns a style that is not drawn either.
            if (span.name.empty())
                problems_.add(CaptionProblem::unknownClass, span.line,
                              "<" + tag + "> adds nothing; the palette has no annotation \"" + tag + "\"");
    }
}

}  // namespace qz
