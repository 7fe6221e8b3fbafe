#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSData.h"

namespace qz {

// `error` receives one line to append to the path and ": ", such as "cannot be opened: No such file or directory".

/// Reads a whole file, or a pipe or device up to its end. Returns null, with the reason in `error`, if it cannot be
/// read or is larger than `bytesMax`.
Ref<NSData> readFile(const std::string& path, std::string* error, uint64_t bytesMax = Limits::kFileBytesMax);

/// When the bytes written to a file reach the disk.
enum class Flush {
    /// Before the file takes its name: it survives a power failure.
    atOnce,
    /// Whenever the system chooses: after a power failure the file may be empty. For large numbers of files that can be
    /// made again.
    later,
};

/// Writes a temporary file beside the target, flushes it to disk and renames it over the target, so the path always
/// holds either the whole old content or the whole new one. The target keeps its mode; a symbolic link is followed and
/// its target replaced. Pipes and devices are written to directly. Returns false, with the reason in `error` and the
/// target untouched, if any step fails.
bool writeFileAtomically(const std::string& path, std::span<const uint8_t> bytes, std::string* error,
                         Flush flush = Flush::atOnce);

}  // namespace qz
