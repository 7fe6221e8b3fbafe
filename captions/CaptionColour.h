#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qz {

/// A colour that a caption file names, not premultiplied.
struct CaptionColour {
    uint8_t red = 255;
    uint8_t green = 255;
    uint8_t blue = 255;
    uint8_t alpha = 255;
    friend bool operator==(const CaptionColour&, const CaptionColour&) = default;
};

/// "#ff0000", with two digits more when it is not opaque: "#ff000080".
std::string nameOfColour(const CaptionColour& colour);

/// A colour as CSS writes it, in any letter case: a name, or 3, 4, 6 or 8 digits behind "#". As players have it, 6 or 8
/// digits may also stand alone.
std::optional<CaptionColour> parsedCssColour(std::string_view text);

}  // namespace qz
