#include "apps/qzanno/TextTable.h"

#include <algorithm>
#include <iostream>

namespace qz::tool {
namespace {

/// The number of characters in a UTF-8 text, which are a terminal's columns for plain text.
size_t columnsOf(const std::string& text) {
    size_t columns = 0;
    for (const char c : text) columns += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return columns;
}

}  // namespace

void printTable(const std::vector<TableRow>& rows) {
    std::vector<size_t> widths(rows.front().size());
    for (const TableRow& row : rows) {
        for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], columnsOf(row[i]));
    }
    for (const TableRow& row : rows) {
        std::string line;
        for (size_t i = 0; i < row.size(); ++i) line += row[i] + std::string(widths[i] - columnsOf(row[i]) + 2, ' ');
        std::cout << line.substr(0, line.find_last_not_of(' ') + 1) << "\n";
    }
}

}  // namespace qz::tool
