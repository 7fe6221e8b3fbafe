#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include <stdlib.h>

#include "QzAnno/platform/foundation/Files.h"

namespace qz {

/// A folder that lives as long as its object.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string form = (std::filesystem::temp_directory_path() / "qzanno-XXXXXX").string();
        path_ = ::mkdtemp(form.data());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string file(const std::string& name) const { return (path_ / name).string(); }
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

inline bool writeText(const std::string& path, std::string_view text, std::string* error = nullptr) {
    return writeFileAtomically(path, {reinterpret_cast<const uint8_t*>(text.data()), text.size()}, error);
}

/// "(unreadable)" when there is no such file.
inline std::string readText(const std::string& path) {
    const Ref<NSData> data = readFile(path, nullptr);
    return data ? std::string(data->view()) : "(unreadable)";
}

}  // namespace qz
