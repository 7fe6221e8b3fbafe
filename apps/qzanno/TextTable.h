#pragma once

#include <string>
#include <vector>

namespace qz::tool {

using TableRow = std::vector<std::string>;

/// Prints rows of UTF-8 with aligned columns; all rows must have as many columns as the first.
void printTable(const std::vector<TableRow>& rows);

}  // namespace qz::tool
