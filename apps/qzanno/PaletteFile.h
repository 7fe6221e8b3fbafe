#pragma once

#include <string>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/text/FontLibrary.h"
#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// Reads a palette file, a property list or an archive as determined by its first bytes, with these fonts (null means
/// the system's). An empty path means the built-in palette. Returns null, with an error reported, if the file cannot be
/// read. `file`, if given, receives the file's bytes.
Ref<QzAnnoPalette> loadPalette(const std::string& path, const std::shared_ptr<FontLibrary>& fonts,
                               Diagnostics& diagnostics, Ref<NSData>* file = nullptr);

/// Warns about each fault in a readable palette file, and with `fonts` also about missing fonts; the built-in palette
/// has no faults. Returns the number of faults.
size_t reportFaults(const std::string& path, FontLibrary* fonts, Diagnostics& diagnostics);

/// The name of a palette in messages.
std::string paletteName(const std::string& path);

/// The palette used by default: white letters with a dark border at the bottom of the picture.
Ref<QzAnnoPalette> builtInPalette();

}  // namespace qz::tool
