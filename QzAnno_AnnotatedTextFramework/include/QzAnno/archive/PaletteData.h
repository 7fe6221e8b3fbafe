#pragma once

#include <string>
#include <string_view>

#include "QzAnno/palette/QzAnnoPalette.h"

namespace qz {

/// Whether the bytes begin like an archive.
bool isArchive(const NSData& data);

/// Makes the content of a palette file: an archive if its name ends in ".annopalette", else an XML property list.
/// Returns null, with one line in `errorDescription`, if the palette is null or a value has no such form.
Ref<NSData> dataOfPalette(const Ref<QzAnnoPalette>& palette, std::string_view fileName,
                          std::string* errorDescription = nullptr);

/// Reads a palette from an archive or an XML property list. Returns a new, locked palette; for anything else null, with
/// one line in `errorDescription`. Null data leaves `errorDescription` as it is, so that it keeps the error from
/// reading the file. The palette, and the fonts that an archive holds, look fonts up in `fontLibrary`; null stands for
/// the fonts of this machine.
Ref<QzAnnoPalette> paletteFromData(const Ref<NSData>& data, std::string* errorDescription = nullptr,
                                   const std::shared_ptr<FontLibrary>& fontLibrary = {});

}  // namespace qz
