#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/text/FontLibrary.h"
#include "platform/text/FontconfigRef.h"

namespace qz {

/// An installed font with all the names that find it, in every language.
struct ListedFont {
    InstalledFont font;
    std::vector<std::string> postScriptNames;
    std::vector<std::string> fullNames;
    std::vector<std::string> familyStyleNames;
    std::vector<std::string> familyNames;
};

/// The usable fonts of a configuration; null means the current one. Fonts added by `addFontDirectory` come first, then
/// newer versions, so that the order does not depend on Fontconfig's hashing.
[[gnu::visibility("hidden")]] std::vector<ListedFont> listFonts(FcConfig* config);

/// The file and index of a configuration's best font for a family name or alias; an empty path if there is none.
[[gnu::visibility("hidden")]] std::pair<std::string, int> bestMatch(FcConfig* config, const char* family);

/// Adds the fonts in a folder and its subfolders to a configuration. Returns false if the folder cannot be read.
/// `problems` receives one line for each problem.
[[gnu::visibility("hidden")]] bool addFontDirectory(FcConfig* config, const std::string& directory,
                                                    std::vector<FontProblem>& problems);

}  // namespace qz
