#include "apps/qzanno/ReportLines.h"

#include <cstdio>

#include "QzAnno/platform/foundation/NSString.h"
#include "apps/qzanno/Manifest.h"

namespace qz::tool {
namespace {

constexpr size_t kShownCharactersMax = 24;

/// The first characters of a text, in quotes.
std::string excerpt(const std::u16string& text) {
    size_t end = std::min(text.size(), kShownCharactersMax);
    if (end < text.size() && (text[end] & 0xFC00) == 0xDC00) --end;
    std::string shown = utf8FromUtf16(std::u16string_view(text).substr(0, end));
    for (char& c : shown) {
        if (c >= 0 && c < ' ') c = ' ';
    }
    return quoted(shown) + (end < text.size() ? "…" : "");
}

std::string excerpt(const std::string& text) {
    return excerpt(utf16FromUtf8(text));
}

/// "U+1F600"
std::string codePoint(const std::string& character) {
    const std::u16string units = utf16FromUtf8(character);
    if (units.empty()) return "";
    uint32_t code = units[0];
    if (units.size() == 2) code = 0x10000 + ((code & 0x3FF) << 10) + (units[1] & 0x3FFu);
    char text[16];
    std::snprintf(text, sizeof text, "U+%04X", code);
    return text;
}

}  // namespace

bool ReportLines::tell(const std::string& where, const std::u16string& text, const RenderReport& report) {
    for (const auto& substitution : report.substitutions) {
        if (!substitution.isFontMissing) tellSubstitution(where, substitution);
    }
    for (const auto& missing : report.missingGlyphs) tellMissingGlyph(where, missing);
    for (const auto& missing : report.missingTraits) tellMissingTrait(where, missing);
    for (const auto& clipping : report.clipped) tellClipping(where, text, clipping);
    return !isStrict_ || report.isEmpty();
}

void ReportLines::tellSubstitution(const std::string& where, const RenderReport::Substitution& substitution) {
    const std::string what =
        "the font " + quoted(substitution.fontAskedFor) + " does not have " + excerpt(substitution.characters) + "; ";
    const std::string served = quoted(substitution.fontThatServed);
    if (isStrict_)
        diagnostics_.error(where, what + served + " would be used; not rendered, because of --strict");
    else
        diagnostics_.note(where, what + served + " serves");
}

void ReportLines::tellMissingGlyph(const std::string& where, const RenderReport::MissingGlyph& missing) {
    const std::string what = "no available font has the character " + quoted(missing.character) + " (" +
                             codePoint(missing.character) + "), which is missing from " + quoted(missing.font);
    if (isStrict_)
        diagnostics_.error(where, what + "; not rendered, because of --strict");
    else if (toldMissing_.insert(what).second)
        diagnostics_.warning(where, what + "; install one that has it, or give its folder with --font-dir");
}

void ReportLines::tellMissingTrait(const std::string& where, const RenderReport::MissingTrait& missing) {
    using Trait = RenderReport::MissingTrait::Trait;
    const bool isSynthesised = missing.trait == Trait::bold || missing.trait == Trait::italic;
    const std::string what = "the font " + quoted(missing.font) + " has no " + nameOfTrait(missing.trait) + " face";
    if (isStrict_)
        diagnostics_.error(where, what + "; not rendered, because of --strict");
    else
        diagnostics_.note(where, what + (isSynthesised ? "; one is synthesised" : "; it is shown as it is"));
}

void ReportLines::tellClipping(const std::string& where, const std::u16string& title,
                               const RenderReport::Clipping& clipping) {
    using Part = RenderReport::Clipping::Part;
    const Range cut = clipping.characters;
    const std::string text = cut.end() <= title.size() ? excerpt(title.substr(cut.location, cut.length)) : "";
    std::string what;
    if (clipping.part == Part::text)
        what = "the box is too small for " + text + ", from character " +
               std::to_string(clipping.characters.location + 1) + " on";
    else if (clipping.part == Part::glyphs)
        what = "the picture's edge cuts " + text;
    else
        what = "the picture's edge cuts " + nameOfPart(clipping) + " of " + text;
    if (isStrict_)
        diagnostics_.error(where, what + "; not rendered, because of --strict");
    else if (clipping.part == Part::text || clipping.part == Part::glyphs)
        diagnostics_.warning(where, what);
    else
        diagnostics_.note(where, what);
}

}  // namespace qz::tool
