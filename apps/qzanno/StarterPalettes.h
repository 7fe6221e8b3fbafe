#pragma once

#include <span>
#include <string>
#include <string_view>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// A palette to begin with, a file of palettes/.
struct StarterPalette {
    std::string_view name;
    std::string_view propertyList;

    /// One line: the first comment of the list.
    std::string_view description() const;
};

/// In the order of their names.
std::span<const StarterPalette> starterPalettes();

/// What `qzanno palette new` was asked for.
struct NewPaletteOptions {
    /// Empty for a list of those that there are.
    std::string name;
    /// Empty for NAME.plist; "-" for standard output.
    std::string output;
    bool overwrite = false;
};

/// Writes a starter palette, or prints which there are. The exit code.
int newStarterPalette(const NewPaletteOptions& options, Diagnostics& diagnostics);

}  // namespace qz::tool
