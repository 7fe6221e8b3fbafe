#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

class FontLibrary;
class QzAnnoPalette;

/// Something in a palette that will not do what its author meant.
struct PaletteFault {
    /// The name that reading gives the annotation if the list gives it no name.
    std::string annotationName;
    /// Empty when the fault is in the annotation's name.
    std::string attributeName;
    /// What is wrong and what happens, without a line feed: "margins need four numbers, found 2; the margins are
    /// ignored".
    std::string message;
};

/// The faults of a palette's property list as it was read from a file, with values that the library would only clamp or
/// ignore. A list that is not a palette at all has no faults here; `QzAnnoPalette::paletteFromPListData` says why it is
/// refused. Attribute names that the library does not know are not faults. Neither are missing fonts, unless `fonts`
/// says where to look for them.
std::vector<PaletteFault> faultsOfPropertyList(const NSObject& plist, FontLibrary* fonts);

/// The same for a palette in memory, whose colours have been clamped already and whose fonts are looked up in its own
/// library; also names the values that cannot be saved.
std::vector<PaletteFault> faultsOfPalette(const QzAnnoPalette& palette);

}  // namespace qz
