#pragma once

#include <set>
#include <string>

namespace qz::tool {

/// Puts the file `from` at the place `to` as well, in one step: as a second name of it where the file system can, else
/// as a copy. False, with the reason in `error` and `to` untouched, when neither can be.
bool placeSameFile(const std::string& from, const std::string& to, std::string* error);

// While a run goes on, FILE.run beside its manifest holds the number of its process, by which files are called that are
// being written (".qz-PID-N"). So what a killed run left half-written can be told from what others are writing.

/// False, with the reason in `error`, when the mark cannot be written.
bool placeRunMark(const std::string& manifest, std::string* error);
void removeRunMark(const std::string& manifest);

/// Removes what the run before this one left half-written in the folders, if it was killed.
void removeLeftOvers(const std::string& manifest, const std::set<std::string>& folders);

}  // namespace qz::tool
