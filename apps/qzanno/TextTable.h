#pragma once

#include <string>
#include <vector>

namespace qz::tool {

using TableRow = std::vector<std::string>;

/// Prints rows of UTF-8 with their columns aligned; all rows have as many as the first.
void printTable(const std::vector<TableRow>& rows);

}  // namespace qz::tool
