#include "apps/qzanno/SameFile.h"

#include <cstdio>
#include <filesystem>

#include <unistd.h>

#include "QzAnno/platform/foundation/Files.h"

namespace qz::tool {

bool placeSameFile(const std::string& from, const std::string& to, std::string* error) {
    const std::string name = ".qz-" + std::to_string(::getpid()) + "-same";
    const std::string beside = (std::filesystem::path(to).parent_path() / name).string();
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

}  // namespace qz::tool
