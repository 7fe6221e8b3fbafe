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

/// Parses "&H00FFFFFF", "&HFFFFFF&" or a decimal number: alpha, blue, green, red from the highest byte. There alpha
/// means transparency, here opacity.
std::optional<CaptionColour> parsedAssColour(std::string_view text);

/// A style. Lengths are in script pixels, on a screen of `AssScript::width` by `height`.
struct AssStyle {
    std::string name = "Default";
    /// A font family.
    std::string fontName = "Arial";
    /// The height of a line: ascent plus descent of the font (its usWinAscent and usWinDescent).
    double fontSize = 18;
    CaptionColour primary;
    CaptionColour outline = {0, 0, 0, 255};
    CaptionColour back = {0, 0, 0, 255};
    bool isBold = false;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isStruck = false;
    double spacing = 0;
    /// 3 and 4 are boxes, in the outline's or the back colour.
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
    /// Unsupported features of the style, such as "ScaleX".
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
    /// The animation of the line: "Banner;20".
    std::string_view effect;
    double layer = 0;
    /// 0 means the style's.
    double marginLeft = 0;
    double marginRight = 0;
    double marginVertical = 0;
    uint32_t line = 0;
};

struct AssScript {
    double width = 384;
    double height = 288;
    std::vector<AssStyle> styles;
    /// Indices in `styles` by name.
    std::map<std::string, size_t, std::less<>> stylePlaces;
    /// In the order of the file.
    std::vector<AssEvent> events;
    /// Events point into this text.
    std::unique_ptr<const std::string> text;

    /// The style of that name, ignoring a leading "*"; for an unknown name the style "Default", or null.
    const AssStyle* styleNamed(std::string_view name) const;
    /// The style "Default", or else the first, which others are compared with; null if there are no styles.
    const AssStyle* globalStyle() const;
};

/// Reads an Advanced SubStation Alpha script, or one of its forerunner (`[V4 Styles]`), in UTF-8 or in UTF-16 with a
/// byte-order mark, as players do: sections in any order, columns as named by each section's Format line, with defaults
/// for columns that are missing or unreadable. Reports malformed parts and unsupported script-wide features as
/// problems, and ignores editors' sections. Returns no value, with the reason in `error`, for another encoding, and for
/// a file with neither styles nor events.
std::optional<AssScript> parseAssScript(const NSData& file, CaptionProblems& problems, CaptionProblem* error);

}  // namespace qz
