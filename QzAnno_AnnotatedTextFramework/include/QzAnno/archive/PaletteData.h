#pragma once

#include <string>
#include <string_view>

#include "QzAnno/palette/QzAnnoPalette.h"

namespace qz {

/// Whether the bytes begin as those of an archive do.
bool isArchive(const NSData& data);

/// The content of a palette's file: an archive when its name ends in ".annopalette", else an XML property list. None,
/// with one line in `errorDescription`, for a null palette, and when a value has no such form.
Ref<NSData> dataOfPalette(const Ref<QzAnnoPalette>& palette, std::string_view fileName,
                          std::string* errorDescription = nullptr);

/// The palette that a file holds, as an archive or as an XML property list. A new, locked palette; none, with one line
/// in `errorDescription`, for anything else. Null data leaves there what reading the file has said.
Ref<QzAnnoPalette> paletteFromData(const Ref<NSData>& data, std::string* errorDescription = nullptr);

}  // namespace qz
