#include "apps/qzanno/ArchiveFile.h"

#include "QzAnno/platform/foundation/Files.h"

namespace qz::tool {

std::optional<ArchivedTitles> readArchivedTitles(const std::string& path, const Ref<QzAnnoPalette>& palette,
                                                 Diagnostics& diagnostics) {
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    if (!file) {
        diagnostics.error(path, reason);
        return {};
    }
    auto titles = archivedTitles(file, palette, &reason);
    if (!titles) diagnostics.error(path, reason + "; 'qzanno archive dump' shows what it is");
    return titles;
}

std::string lostAnnotations(const ArchivedTitles& titles) {
    const bool isOne = titles.lostCount == 1;
    return std::to_string(titles.lostCount) +
           (isOne ? " annotation cannot be read and is lost" : " annotations cannot be read and are lost");
}

}  // namespace qz::tool
