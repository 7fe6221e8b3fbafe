#pragma once

#include <span>
#include <string>
#include <string_view>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// A starter palette, a file in palettes/.
struct StarterPalette {
    std::string_view name;
    std::string_view propertyList;

    /// One line: the first comment in the file.
    std::string_view description() const;
};

/// Sorted by name.
std::span<const StarterPalette> starterPalettes();

/// The options of `qzanno palette new`.
struct NewPaletteOptions {
    /// Empty to list the starter palettes.
    std::string name;
    /// Empty for NAME.plist; "-" for standard output.
    std::string output;
    bool overwrite = false;
};

/// Writes a starter palette, or lists them. Returns the exit code.
int newStarterPalette(const NewPaletteOptions& options, Diagnostics& diagnostics);

}  // namespace qz::tool
