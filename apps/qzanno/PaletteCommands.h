#pragma once

#include <string>

#include "apps/qzanno/Diagnostics.h"
#include "apps/qzanno/RenderCommand.h"

namespace qz::tool {

/// Prints a palette as a table, from the highest priority down to the global annotation. Returns the exit code.
int showPalette(const std::string& path, const std::shared_ptr<FontLibrary>& fonts, Diagnostics& diagnostics);

/// The options of `qzanno palette check`.
struct PaletteCheckOptions {
    std::string path;
    /// The intended screen.
    PixelSize screen = {1920, 1080};
    /// Whether text that is hard to read is a fault.
    bool strict = false;
};

/// Reports faults in a palette file, and text that is hard to read. Returns the exit code: 1 if there is a fault.
int checkPalette(const PaletteCheckOptions& options, const std::shared_ptr<FontLibrary>& fonts,
                 Diagnostics& diagnostics);

/// Writes a palette file, or the styles of a SubStation Alpha script (.ass, .ssa), as a property list (.plist) or as an
/// archive (.annopalette), depending on the output's ending. Returns the exit code.
int convertPalette(const std::string& input, const std::string& output, const std::shared_ptr<FontLibrary>& fonts,
                   Diagnostics& diagnostics);

}  // namespace qz::tool
