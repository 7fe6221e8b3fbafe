#pragma once

#include <string>

#include "QzAnno/platform/text/FontLibrary.h"
#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

// Each returns the exit code: 0, or 1 if something failed.

/// Writes the titles of a caption, text or archive file as an archive: one annotated string, or an array of them.
int packArchive(const std::string& input, const std::string& palette, const std::string& output,
                Diagnostics& diagnostics);

/// Prints the annotated strings of an archive: text, keys and runs. With a palette, also what each run looks like, in
/// these fonts.
int showArchive(const std::string& path, const std::string& palette, const std::shared_ptr<FontLibrary>& fonts,
                Diagnostics& diagnostics);

/// Prints any typed-stream archive as an indented listing, without knowing its classes.
int dumpArchive(const std::string& path, Diagnostics& diagnostics);

}  // namespace qz::tool
