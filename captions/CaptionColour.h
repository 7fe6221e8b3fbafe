#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qz {

/// A colour in a caption file, not premultiplied.
struct CaptionColour {
    uint8_t red = 255;
    uint8_t green = 255;
    uint8_t blue = 255;
    uint8_t alpha = 255;
    friend bool operator==(const CaptionColour&, const CaptionColour&) = default;
};

/// "#ff0000", with two more digits if not opaque: "#ff000080".
std::string nameOfColour(const CaptionColour& colour);

/// Parses a CSS colour, ignoring case: a name, or "#" and 3, 4, 6 or 8 digits. As in players, 6 or 8 digits may also be
/// without "#".
std::optional<CaptionColour> parsedCssColour(std::string_view text);

}  // namespace qz
