#include "apps/qzanno/FontFolders.h"

namespace qz::tool {

std::shared_ptr<FontLibrary> fontsWithFolders(const std::vector<std::string>& folders, bool isStrict,
                                              Diagnostics& diagnostics) {
    if (folders.empty()) return FontLibrary::shared();
    std::vector<FontProblem> problems;
    std::shared_ptr<FontLibrary> fonts = FontLibrary::withDirectories(folders, &problems);
    const bool isRefused = !fonts || (isStrict && !problems.empty());
    for (const FontProblem& problem : problems) {
        if (isRefused)
            diagnostics.error(problem.path, problem.what);
        else
            diagnostics.warning(problem.path, problem.what);
    }
    if (isRefused) return {};
    return fonts;
}

}  // namespace qz::tool
