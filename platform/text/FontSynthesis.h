#pragma once

namespace qz {

/// The synthesis applied to a face whose family has none with the requested traits: an emboldened or slanted outline.
/// Advances do not change, so line breaks stay.
struct FontSynthesis {
    bool bold = false;    ///< the outline is emboldened
    bool italic = false;  ///< the outline is slanted

    /// Whether there is no synthesis.
    bool isEmpty() const { return !bold && !italic; }
    friend bool operator==(const FontSynthesis&, const FontSynthesis&) = default;
};

}  // namespace qz
