#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace qz::tool {

/// Writes a manifest line by line into a file beside it, FILE.part, which replaces it at the end. So the manifest is
/// always complete, and a killed run leaves the lines of the titles that it had done.
///
/// Pipes and devices are written to directly.
class ManifestFile {
public:
    /// Returns null, with the reason in `error`, if it cannot be written. `path` must come from `targetOf`.
    static std::unique_ptr<ManifestFile> create(const std::string& path, std::string* error);

    /// The line's file must be in place, since the line counts as proof of it.
    bool append(std::string_view line, std::string* error);
    bool commit(std::string* error);
    /// Whether the path is a file's.
    bool replacesFile() const { return !part_.empty(); }

    /// The path to write to, following symbolic links if the file will be replaced.
    static std::string targetOf(const std::string& path);
    static std::string partOf(const std::string& path) { return path + ".part"; }

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    ManifestFile(std::string path, std::string part, std::FILE* file)
        : path_(std::move(path)), part_(std::move(part)), file_(file) {}

    const std::string path_;
    // Empty if the path is written to directly.
    const std::string part_;
    std::unique_ptr<std::FILE, Close> file_;
};

}  // namespace qz::tool
