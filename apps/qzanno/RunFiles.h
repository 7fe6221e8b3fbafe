#pragma once

#include <set>
#include <string>

namespace qz::tool {

/// Makes the file `from` also available as `to`, atomically: as a hard link if the file system supports it, else as a
/// copy. Returns false, with the reason in `error` and `to` untouched, if neither is possible.
bool placeSameFile(const std::string& from, const std::string& to, std::string* error);

// During a run, FILE.run beside its manifest holds its process id, which also names files being written (".qz-PID-N").
// So the half-written files of a killed run can be distinguished from those of other processes.

/// Returns false, with the reason in `error`, if the mark cannot be written.
bool placeRunMark(const std::string& manifest, std::string* error);
void removeRunMark(const std::string& manifest);

/// Removes half-written files that the previous run left in the folders, if it was killed.
void removeLeftOvers(const std::string& manifest, const std::set<std::string>& folders);

}  // namespace qz::tool
