#include <algorithm>
#include <array>
#include <filesystem>

#include <unicode/unistr.h>

#include "platform/foundation/FileEnding.h"
#include "platform/text/FontListing.h"

namespace qz {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 4> kFontEndings = {".ttf", ".otf", ".ttc", ".otc"};
constexpr std::array<std::string_view, 5> kOtherFontEndings = {".woff", ".woff2", ".pfa", ".pfb", ".dfont"};

/// The files in a folder and its subfolders, in an order that does not depend on the file system.
std::vector<fs::path> filesBelow(const std::string& directory, std::error_code& error) {
    std::vector<fs::path> files;
    fs::recursive_directory_iterator entry(directory, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        std::error_code isUnknown;
        if (entry->is_regular_file(isUnknown)) files.push_back(entry->path());
    }
    std::ranges::sort(files);
    return files;
}

int addedFonts(FcConfig* config) {
    const FcFontSet* const set = FcConfigGetFonts(config, FcSetApplication);
    return set ? set->nfont : 0;
}

}  // namespace

bool addFontDirectory(FcConfig* config, const std::string& directory, std::vector<FontProblem>& problems) {
    std::error_code error;
    const std::vector<fs::path> files = filesBelow(directory, error);
    if (error) {
        problems.push_back({directory, "the folder of fonts cannot be read: " + error.message()});
        return false;
    }
    const int before = addedFonts(config);
    for (const fs::path& file : files) {
        const std::string ending = endingOf(file.native());
        if (std::ranges::find(kOtherFontEndings, ending) != kOtherFontEndings.end()) {
            problems.push_back({file.string(), "fonts of this kind are not supported; convert it to .ttf or .otf"});
        }
        if (std::ranges::find(kFontEndings, ending) == kFontEndings.end()) continue;
        const int fonts = addedFonts(config);
        FcConfigAppFontAddFile(config, fontconfigText(file.c_str()));
        if (addedFonts(config) == fonts) {
            problems.push_back({file.string(), "cannot be read as a font and is left out"});
        }
    }
    if (addedFonts(config) == before) problems.push_back({directory, "has no usable font"});
    return true;
}

}  // namespace qz
