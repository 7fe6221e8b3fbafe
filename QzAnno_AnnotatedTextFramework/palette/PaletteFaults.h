#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

class FontLibrary;

/// Something in a palette that will not have its intended effect.
struct PaletteFault {
    /// The annotation's name; if the list has none, the name assigned in reading.
    std::string annotationName;
    /// Empty if the fault is in the annotation's name.
    std::string attributeName;
    /// The fault and its effect, without a line feed: "margins need four numbers, found 2; the margins are ignored".
    std::string message;
};

/// The faults in a palette's property list, including values that the library would silently clamp or ignore. A list
/// that is not a palette at all has no faults here; `QzAnnoPalette::paletteFromPListData` says why it is refused.
/// Unknown attribute names are not faults, and neither are missing fonts, unless `fonts` is given.
std::vector<PaletteFault> faultsOfPropertyList(const NSObject& plist, FontLibrary* fonts);

}  // namespace qz
