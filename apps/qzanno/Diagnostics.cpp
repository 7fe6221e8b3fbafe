#include "apps/qzanno/Diagnostics.h"

#include <cstdint>
#include <iostream>

namespace qz::tool {

void Diagnostics::error(std::string_view where, std::string_view what) {
    hasErrors_ = true;
    write(where, what);
}

void Diagnostics::warning(std::string_view where, std::string_view what) {
    if (verbosity_ != Verbosity::quiet) write(where, what);
}

void Diagnostics::note(std::string_view where, std::string_view what) {
    if (verbosity_ == Verbosity::verbose) write(where, what);
}

void Diagnostics::write(std::string_view where, std::string_view what) {
    std::cerr << "qzanno: " << where << (where.empty() ? "" : ": ") << what << std::endl;
}

std::string placeInFile(const std::string& file, uint32_t line) {
    return file + ":" + std::to_string(line);
}

std::string quoted(std::string_view name) {
    return "\"" + std::string(name) + "\"";
}

}  // namespace qz::tool
