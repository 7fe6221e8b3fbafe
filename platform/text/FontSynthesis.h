#pragma once

namespace qz {

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
