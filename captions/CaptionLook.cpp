#include "captions/CaptionLook.h"

#include <algorithm>
#include <iterator>

#include "captions/AsciiText.h"
#include "captions/AssLook.h"
#include "platform/text/LanguageTag.h"

namespace qz {
namespace {

std::string identityOf(const std::optional<bool>& flag) {
    return !flag ? "-" : *flag ? "1" : "0";
}

std::string identityOf(const std::optional<CaptionColour>& colour) {
    return colour ? nameOfColour(*colour) : "-";
}

}  // namespace

std::string CaptionLook::identity() const {
    std::string text = name + "\n";
    for (const std::optional<bool>& flag : {isBold, isItalic, isUnderlined, isStruck}) text += identityOf(flag);
    text += identityOf(colour) + identityOf(box) + "\n" + language;
    if (!style) return text;
    text += "\n" + writtenStyle(style->style) + "\n" + writtenStyle(style->global) + "\n";
    return text + shortNumber(style->shorterSide) + (style->isWhole ? "w" : "") + (style->isReset ? "r" : "");
}

std::optional<CaptionLook> lookOfSpan(const CueSpan& span) {
    const bool isOn = span.name.empty();
    switch (span.kind) {
        case CueSpan::bold:
            return CaptionLook{.name = isOn ? "b" : "b0", .isBold = isOn};
        case CueSpan::italic:
            return CaptionLook{.name = isOn ? "i" : "i0", .isItalic = isOn};
        case CueSpan::underline:
            return CaptionLook{.name = isOn ? "u" : "u0", .isUnderlined = isOn};
        case CueSpan::strikeThrough:
            return CaptionLook{.name = isOn ? "s" : "s0", .isStruck = isOn};
        case CueSpan::colour: {
            const auto colour = parsedCssColour(span.name);
            return colour ? std::optional(CaptionLook{.name = lowered(span.name), .colour = colour}) : std::nullopt;
        }
        case CueSpan::language:
            if (!isLanguageTag(span.name)) return {};
            return CaptionLook{.name = "lang " + span.name, .language = span.name};
        default:
            return {};
    }
}

std::optional<CaptionLook> lookOfWebVTTClass(std::string_view name) {
    // W3C WebVTT, "default text colors" and "default text background colors".
    constexpr std::string_view kColours[] = {"white", "lime", "cyan", "red", "yellow", "magenta", "blue", "black"};
    constexpr std::string_view kBehind = "bg_";
    const bool isBehind = name.starts_with(kBehind);
    const std::string_view colour = name.substr(isBehind ? kBehind.size() : 0);
    if (std::ranges::find(kColours, colour) == std::end(kColours)) return {};
    CaptionLook look{.name = std::string(name)};
    (isBehind ? look.box : look.colour) = parsedCssColour(colour);
    return look;
}

}  // namespace qz
