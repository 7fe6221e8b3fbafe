#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSData.h"

namespace qz {

// Reasons are predicates in one line that go behind the path and ": ", as in "cannot be opened: No such file or
// directory".

/// A whole file, a pipe or device up to its end; none, with the reason in `error`, when it cannot be read
/// or is larger than `bytesMax`.
Ref<NSData> readFile(const std::string& path, std::string* error, uint64_t bytesMax = Limits::kFileBytesMax);

/// When the bytes of a written file reach the disk.
enum class Flush {
    /// Before it takes its name: it outlasts a power failure.
    atOnce,
    /// When the system likes: after a power failure it may be empty. For what can be made again, by the thousand.
    later,
};

/// Writes beside the target, flushes to the disk and renames over it, so that at any moment the path holds the old
/// content or the new one, whole. The target keeps its mode; through a symbolic link, what it points to is replaced.
/// False, with the reason in `error` and the target untouched, when any step fails. A pipe or a device is written to as
/// it is.
bool writeFileAtomically(const std::string& path, std::span<const uint8_t> bytes, std::string* error,
                         Flush flush = Flush::atOnce);

}  // namespace qz
