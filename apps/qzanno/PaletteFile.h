#pragma once

#include <string>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/text/FontLibrary.h"
#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// The palette of a file, a property list or an archive as its first bytes tell, with these fonts (null for the
/// machine's); null, with an error reported, if the file cannot be read as one. An empty path stands for the built-in
/// palette. `file`, when given, receives the file's bytes.
Ref<QzAnnoPalette> loadPalette(const std::string& path, const std::shared_ptr<FontLibrary>& fonts,
                               Diagnostics& diagnostics, Ref<NSData>* file = nullptr);

/// Warns of each fault of a palette file that can be read, with `fonts` also of fonts missing there; the built-in
/// palette has no faults. Returns how many there were.
size_t reportFaults(const std::string& path, FontLibrary* fonts, Diagnostics& diagnostics);

/// How messages name the palette of a path.
std::string paletteName(const std::string& path);

/// The palette that serves when none is given: white letters with a dark border at the foot of the picture.
Ref<QzAnnoPalette> builtInPalette();

}  // namespace qz::tool
