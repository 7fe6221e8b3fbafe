#pragma once

#include <string>

namespace qz::tool {

/// Puts the file `from` at the place `to` as well, in one step: as a second name of it where the file system can, else
/// as a copy. False, with the reason in `error` and `to` untouched, when neither can be.
bool placeSameFile(const std::string& from, const std::string& to, std::string* error);

}  // namespace qz::tool
