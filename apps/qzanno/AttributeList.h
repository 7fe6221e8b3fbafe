#pragma once

namespace qz::tool {

/// Prints the attributes that annotations may hold, as a table or as a JSON array. Returns the exit code.
int listAttributes(bool asJson);

}  // namespace qz::tool
