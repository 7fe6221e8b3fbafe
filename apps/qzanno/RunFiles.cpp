#include "apps/qzanno/RunFiles.h"

#include <cstdio>
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

bool placeSameFile(const std::string& from, const std::string& to, std::string* error) {
    const std::string name = ".qz-" + std::to_string(::getpid()) + "-same";
    const std::string beside = (fs::path(to).parent_path() / name).string();
    ::unlink(beside.c_str());
    if (::link(from.c_str(), beside.c_str()) == 0) {
        const bool isPlaced = std::rename(beside.c_str(), to.c_str()) == 0;
        // Renaming over another name of the same file leaves both.
        ::unlink(beside.c_str());
        if (isPlaced) return true;
    }
    const Ref<NSData> bytes = readFile(from, error);
    return bytes && writeFileAtomically(to, bytes->bytes(), error, Flush::later);
}

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
