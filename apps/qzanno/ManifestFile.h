#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace qz::tool {

/// A manifest as it is written: line by line into a file beside it, FILE.part, which takes its place at the end. So
/// whoever finds the manifest finds it whole, and a run that was killed leaves the lines of what it had done.
///
/// A pipe or a device is written to as it is.
class ManifestFile {
public:
    /// None, with the reason in `error`, when it cannot be written. `path` as `targetOf` gives it.
    static std::unique_ptr<ManifestFile> create(const std::string& path, std::string* error);

    /// The line's file must be in place, for the line is taken for a proof of it from now on.
    bool append(std::string_view line, std::string* error);
    bool commit(std::string* error);
    /// Whether the path is that of a file.
    bool replacesFile() const { return !part_.empty(); }

    /// The file that a path means, behind symbolic links where it is to be replaced.
    static std::string targetOf(const std::string& path);
    static std::string partOf(const std::string& path) { return path + ".part"; }

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    ManifestFile(std::string path, std::string part, std::FILE* file)
        : path_(std::move(path)), part_(std::move(part)), file_(file) {}

    const std::string path_;
    // Empty when the path is written to as it is.
    const std::string part_;
    std::unique_ptr<std::FILE, Close> file_;
};

}  // namespace qz::tool
