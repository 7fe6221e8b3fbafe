#pragma once

#include <set>
#include <string>

namespace qz::tool {

// While a run goes on, FILE.run beside its manifest holds the number of its process, by which files are called that are
// being written (".qz-PID-N"). So what a killed run left half-written can be told from what others are writing.

/// False, with the reason in `error`, when the mark cannot be written.
bool placeRunMark(const std::string& manifest, std::string* error);
void removeRunMark(const std::string& manifest);

/// Removes what the run before this one left half-written in the folders, if it was killed.
void removeLeftOvers(const std::string& manifest, const std::set<std::string>& folders);

}  // namespace qz::tool
