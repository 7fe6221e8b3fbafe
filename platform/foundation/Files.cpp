#include "QzAnno/platform/foundation/Files.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qz {
namespace {

constexpr size_t kChunkBytes = size_t{1} << 20;

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }
    // Returns false if the system reports a failed write only now.
    bool close() {
        const int number = number_;
        number_ = -1;
        return ::close(number) == 0;
    }

private:
    int number_;
};

bool fail(std::string* error, std::string_view what, int code) {
    if (error) *error = std::string(what) + ": " + std::generic_category().message(code);
    return false;
}

bool writeAll(const Descriptor& file, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file.number(), bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) return false;
        if (written > 0) bytes = bytes.subspan(static_cast<size_t>(written));
    }
    return true;
}

// Follows the symbolic links of the path's last component; the file itself need not exist. Returns an empty path after
// more links than the system would follow.
std::string followedLinks(std::string path) {
    for (int links = 0; links < 40; ++links) {
        std::error_code noLink;
        const std::filesystem::path next = std::filesystem::read_symlink(path, noLink);
        if (noLink) return path;
        path = (std::filesystem::path(path).parent_path() / next).string();
    }
    return {};
}

std::string folderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

// A pipe or device has no old content to preserve.
bool writeThrough(const std::string& path, std::span<const uint8_t> bytes, std::string* error) {
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file) return fail(error, "cannot be opened for writing", errno);
    if (!writeAll(file, bytes) || !file.close()) return fail(error, "cannot be written", errno);
    return true;
}

// Creates a file in the folder under a name that no other write uses.
int createBeside(const std::string& folder, mode_t mode, std::string& name) {
    static std::atomic<uint32_t> counter = 0;
    for (int attempt = 0; attempt < 100; ++attempt) {
        name = folder + "/.qz-" + std::to_string(::getpid()) + "-" + std::to_string(++counter);
        const int number = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (number >= 0 || errno != EEXIST) return number;
    }
    return -1;
}

bool fill(Descriptor& file, std::span<const uint8_t> bytes, const struct stat* former, Flush flush) {
    if (former) {
        // Only the superuser may give a file away. The mode comes second, since changing the owner clears some of its
        // bits.
        if (::fchown(file.number(), former->st_uid, former->st_gid) != 0 && errno != EPERM) return false;
        if (::fchmod(file.number(), former->st_mode & 07777) != 0) return false;
    }
    if (!writeAll(file, bytes)) return false;
    return (flush == Flush::later || ::fsync(file.number()) == 0) && file.close();
}

}  // namespace

Ref<NSData> readFile(const std::string& path, std::string* error, uint64_t bytesMax) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.number(), &status) != 0) {
        fail(error, "cannot be opened", errno);
        return {};
    }
    if (S_ISDIR(status.st_mode)) {
        fail(error, "cannot be read", EISDIR);
        return {};
    }
    std::vector<uint8_t> bytes;
    size_t length = 0;
    // One byte more than the known size, so that the end of the file shows without growing the buffer.
    uint64_t room = S_ISREG(status.st_mode) ? static_cast<uint64_t>(status.st_size) + 1 : uint64_t{kChunkBytes};
    const uint64_t tooLarge = bytesMax == UINT64_MAX ? bytesMax : bytesMax + 1;
    while (length < tooLarge) {
        if (bytes.size() == length) bytes.resize(length + std::min(room, tooLarge - length));
        const ssize_t count = ::read(file.number(), bytes.data() + length, bytes.size() - length);
        if (count == 0) {
            bytes.resize(length);
            return NSData::dataWithBytes(std::move(bytes));
        }
        if (count < 0 && errno != EINTR) {
            fail(error, "cannot be read", errno);
            return {};
        }
        if (count > 0) length += static_cast<size_t>(count);
        room = std::max<uint64_t>(length, kChunkBytes);
    }
    if (error) *error = "is larger than the limit of " + std::to_string(bytesMax) + " bytes";
    return {};
}

bool writeFileAtomically(const std::string& path, std::span<const uint8_t> bytes, std::string* error, Flush flush) {
    struct stat former {};
    const bool exists = ::stat(path.c_str(), &former) == 0;
    if (!exists && errno != ENOENT) return fail(error, "cannot be written", errno);
    if (exists && S_ISDIR(former.st_mode)) return fail(error, "cannot be written", EISDIR);
    if (exists && !S_ISREG(former.st_mode)) return writeThrough(path, bytes, error);
    // The rename needs only the folder's permission, so it would replace a read-only file.
    if (exists && ::access(path.c_str(), W_OK) != 0) return fail(error, "cannot be written", errno);

    const std::string target = followedLinks(path);
    if (target.empty()) return fail(error, "cannot be written", ELOOP);
    const std::string folder = folderOf(target);
    std::string temporary;
    // Private until it has the former file's mode, so that nobody reads what they could not read before.
    Descriptor file(createBeside(folder, exists ? 0600 : 0666, temporary));
    if (!file) return fail(error, "cannot be written: no file can be created beside it", errno);
    if (!fill(file, bytes, exists ? &former : nullptr, flush) || ::rename(temporary.c_str(), target.c_str()) != 0) {
        const int code = errno;
        ::unlink(temporary.c_str());
        return fail(error, "cannot be written", code);
    }
    if (flush == Flush::later) return true;
    // Makes the rename survive a power failure where the file system can; the content is in place either way.
    const Descriptor folderDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folderDescriptor) ::fsync(folderDescriptor.number());
    return true;
}

}  // namespace qz
