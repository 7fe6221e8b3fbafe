#include "apps/qzanno/RunMark.h"

#include <filesystem>
#include <vector>

#include <unistd.h>

#include "QzAnno/platform/foundation/Files.h"

namespace qz::tool {
namespace fs = std::filesystem;
namespace {

std::string markOf(const std::string& manifest) {
    return manifest + ".run";
}

}  // namespace

bool placeRunMark(const std::string& manifest, std::string* error) {
    const std::string number = std::to_string(::getpid());
    return writeFileAtomically(markOf(manifest), {reinterpret_cast<const uint8_t*>(number.data()), number.size()},
                               error);
}

void removeRunMark(const std::string& manifest) {
    std::error_code ignored;
    fs::remove(markOf(manifest), ignored);
}

void removeLeftOvers(const std::string& manifest, const std::set<std::string>& folders) {
    const Ref<NSData> mark = readFile(markOf(manifest), nullptr, 20);
    const std::string number(mark ? mark->view() : std::string_view());
    if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos) return;
    const std::string begin = ".qz-" + number + "-";
    for (const std::string& folder : folders) {
        std::error_code error;
        std::vector<fs::path> leftOvers;
        for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
            if (entry->path().filename().string().starts_with(begin)) leftOvers.push_back(entry->path());
        }
        for (const fs::path& file : leftOvers) fs::remove(file, error);
    }
}

}  // namespace qz::tool
