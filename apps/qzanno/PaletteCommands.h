#pragma once

#include <string>

#include "apps/qzanno/Diagnostics.h"
#include "apps/qzanno/RenderCommand.h"

namespace qz::tool {

/// Prints a palette as a table, the highest priority first and the global annotation last. The exit code.
int showPalette(const std::string& path, const std::shared_ptr<FontLibrary>& fonts, Diagnostics& diagnostics);

/// What `qzanno palette check` was asked for.
struct PaletteCheckOptions {
    std::string path;
    /// What the palette is meant for.
    PixelSize screen = {1920, 1080};
    /// Whether what is hard to read is a fault.
    bool strict = false;
};

/// Reports each fault of a palette file, and what is hard to read. The exit code: 1 when there is a fault.
int checkPalette(const PaletteCheckOptions& options, const std::shared_ptr<FontLibrary>& fonts,
                 Diagnostics& diagnostics);

/// Writes a palette file, or the styles of a SubStation Alpha script (.ass, .ssa), as a property list (.plist) or as an
/// archive (.annopalette), by the ending of the output's name. The exit code.
int convertPalette(const std::string& input, const std::string& output, const std::shared_ptr<FontLibrary>& fonts,
                   Diagnostics& diagnostics);

}  // namespace qz::tool
