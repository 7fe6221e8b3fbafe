#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

class QzAnnoPalette;

/// Something in a palette that will not do what its author meant.
struct PaletteFault {
    /// Where the list gives none, the name that reading gives it.
    std::string annotationName;
    /// Empty when the fault is in the annotation's name.
    std::string attributeName;
    /// What is wrong and what happens, without a line feed: "margins need four numbers, found 2; the margins are
    /// ignored".
    std::string message;
    /// Whether it is a font that is not installed: no fault of the file, but of the machine that it is used on.
    bool isMissingFont = false;
};

/// The faults of a palette's property list as it was read from a file, with values that the library would only clamp or
/// ignore. A list that is no palette at all has none here; `QzAnnoPalette::paletteFromPListData` says why it is
/// refused. Attribute names that the library does not know are no faults.
std::vector<PaletteFault> faultsOfPropertyList(const NSObject& plist);

/// The same for a palette in memory, whose colours have been clamped already; also names the values that cannot be
/// saved.
std::vector<PaletteFault> faultsOfPalette(const QzAnnoPalette& palette);

}  // namespace qz
