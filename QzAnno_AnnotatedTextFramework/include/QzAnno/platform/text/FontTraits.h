#pragma once

#include <optional>

namespace qz {

/// What a run asks of its font beyond the font's name: with the trait or without. What is not set stays as the font is.
struct FontTraits {
    std::optional<bool> bold;    ///< from semibold on
    std::optional<bool> italic;  ///< oblique counts as that

    /// Whether nothing is asked.
    bool isEmpty() const { return !bold && !italic; }
    friend bool operator==(const FontTraits&, const FontTraits&) = default;
};

/// What is made of a face whose family has none with these traits: an outline that is emboldened, or slanted. Advances
/// stay, so that no line breaks elsewhere for it.
struct FontSynthesis {
    bool bold = false;    ///< the outline is emboldened
    bool italic = false;  ///< the outline is slanted

    /// Whether the face is shown as it is.
    bool isEmpty() const { return !bold && !italic; }
    friend bool operator==(const FontSynthesis&, const FontSynthesis&) = default;
};

}  // namespace qz
