#include "apps/qzanno/ManifestFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace qz::tool {
namespace {

bool fail(std::string* error) {
    *error = "cannot be written: " + std::string(std::strerror(errno));
    return false;
}

}  // namespace

std::string ManifestFile::targetOf(const std::string& path) {
    struct stat former {};
    const bool exists = ::stat(path.c_str(), &former) == 0;
    if (exists && !S_ISREG(former.st_mode)) return path;
    std::error_code error;
    const std::filesystem::path target = std::filesystem::weakly_canonical(path, error);
    return error ? path : target.string();
}

std::unique_ptr<ManifestFile> ManifestFile::create(const std::string& path, std::string* error) {
    struct stat former {};
    const bool exists = ::stat(path.c_str(), &former) == 0;
    const bool isReplaced = !exists || S_ISREG(former.st_mode);
    const std::string part = isReplaced ? partOf(path) : "";
    if (exists && ::access(path.c_str(), W_OK) != 0) {
        fail(error);
        return {};
    }
    std::FILE* const file = std::fopen((isReplaced ? part : path).c_str(), "we");
    if (!file) {
        fail(error);
        return {};
    }
    if (exists && isReplaced) ::fchmod(::fileno(file), former.st_mode & 07777);
    return std::unique_ptr<ManifestFile>(new ManifestFile(path, part, file));
}

bool ManifestFile::append(std::string_view line, std::string* error) {
    return (std::fwrite(line.data(), 1, line.size(), file_.get()) == line.size() && std::fflush(file_.get()) == 0) ||
           fail(error);
}

bool ManifestFile::commit(std::string* error) {
    if (!part_.empty() && ::fsync(::fileno(file_.get())) != 0) return fail(error);
    if (std::fclose(file_.release()) != 0) return fail(error);
    return part_.empty() || std::rename(part_.c_str(), path_.c_str()) == 0 || fail(error);
}

}  // namespace qz::tool
