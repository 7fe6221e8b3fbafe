#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/text/FontLibrary.h"
#include "platform/text/FontconfigRef.h"

namespace qz {

/// An installed font with all the names by which it may be asked for, in every language.
struct ListedFont {
    InstalledFont font;
    std::vector<std::string> postScriptNames;
    std::vector<std::string> fullNames;
    std::vector<std::string> familyStyleNames;
    std::vector<std::string> familyNames;
};

/// The usable fonts of a configuration, the current one for none. Those added by `addFontDirectory` come first, then
/// newer versions, so that the order does not depend on Fontconfig's hashing.
[[gnu::visibility("hidden")]] std::vector<ListedFont> listFonts(FcConfig* config);

/// The file and index of the font that a configuration has for a family name or alias; an empty path without one.
[[gnu::visibility("hidden")]] std::pair<std::string, int> bestMatch(FcConfig* config, const char* family);

/// Adds the fonts of the files in a folder and the folders in it to a configuration. False when it is no folder that
/// can be read. `problems` receives a line for each matter.
[[gnu::visibility("hidden")]] bool addFontDirectory(FcConfig* config, const std::string& directory,
                                                    std::vector<FontProblem>& problems);

}  // namespace qz
