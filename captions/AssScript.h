#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionColour.h"
#include "captions/CaptionProblem.h"

namespace qz {

/// "&H00FFFFFF", "&HFFFFFF&" or a decimal number, as alpha, blue, green, red from the highest byte. There alpha is how
/// transparent a colour is, here how opaque.
std::optional<CaptionColour> parsedAssColour(std::string_view text);

/// A style. Lengths are in script pixels, of which the screen has `AssScript::width` by `height`.
struct AssStyle {
    std::string name = "Default";
    /// A family.
    std::string fontName = "Arial";
    /// The height of a line, ascent and descent of the font together (its usWinAscent and usWinDescent).
    double fontSize = 18;
    CaptionColour primary;
    CaptionColour outline = {0, 0, 0, 255};
    CaptionColour back = {0, 0, 0, 255};
    bool isBold = false;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isStruck = false;
    double spacing = 0;
    /// 3 and 4 are boxes, of the outline's or the back's colour.
    int borderStyle = 1;
    /// On each side of the letters.
    double outlineWidth = 2;
    /// To the right and downward.
    double shadow = 2;
    /// As on the number pad, 1 at the lower left.
    int alignment = 2;
    double marginLeft = 10;
    double marginRight = 10;
    double marginVertical = 10;
    /// What the style asks for and nothing here has, such as "ScaleX".
    std::vector<std::string> unsupported;
    uint32_t line = 0;
};

/// A line of dialogue.
struct AssEvent {
    /// Seconds; the end is not before the start.
    double start = 0;
    double end = 0;
    std::string_view style;
    std::string_view speaker;
    std::string_view text;
    /// What moves the line about: "Banner;20".
    std::string_view effect;
    double layer = 0;
    /// 0 for the style's.
    double marginLeft = 0;
    double marginRight = 0;
    double marginVertical = 0;
    uint32_t line = 0;
};

struct AssScript {
    double width = 384;
    double height = 288;
    std::vector<AssStyle> styles;
    /// By name, where in `styles`.
    std::map<std::string, size_t, std::less<>> stylePlaces;
    /// In the order of the file.
    std::vector<AssEvent> events;
    /// What the events point into.
    std::unique_ptr<const std::string> text;

    /// The style of that name, a leading "*" aside; the one named "Default" for a name that there is not; none when
    /// there is neither.
    const AssStyle* styleNamed(std::string_view name) const;
    /// The style named "Default", or else the first, from which others differ; null without styles.
    const AssStyle* globalStyle() const;
};

/// Reads an Advanced SubStation Alpha script, or one of its forerunner (`[V4 Styles]`), in UTF-8 or in UTF-16 with a
/// byte-order mark, as players do: sections in any order, columns as each section's Format line names them, a column
/// that is missing or cannot be read at its default. What is not in the form is a problem, and so is what the script
/// asks for as a whole and titles do not show; sections of editors are not looked at. None, with the reason in `error`,
/// for another encoding, and for a file with neither styles nor events.
std::optional<AssScript> parseAssScript(const NSData& file, CaptionProblems& problems, CaptionProblem* error);

}  // namespace qz
