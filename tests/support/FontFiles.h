#pragma once

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "QzAnno/platform/text/FontLibrary.h"

namespace qz::test {

/// The bytes of an installed font's file.
inline std::string fontFile(std::string_view name) {
    const InstalledFont* const font = FontLibrary::shared()->fontWithName(name);
    if (!font) return {};
    std::ifstream file(font->path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The same font under another name: "DejaVu" becomes "Quokka" in all its names, so that it differs from all installed
/// fonts.
inline std::string quokka(std::string file) {
    const auto replaceAll = [&file](const std::string& from, const std::string& to) {
        for (size_t at = file.find(from); at != std::string::npos; at = file.find(from, at)) {
            file.replace(at, from.size(), to);
        }
    };
    const auto wide = [](std::string_view text) {
        std::string units;
        for (const char c : text) units += {'\0', c};
        return units;
    };
    replaceAll("DejaVu", "Quokka");
    replaceAll(wide("DejaVu"), wide("Quokka"));
    return file;
}

/// The offset and length of a table in an SFNT file.
inline std::pair<size_t, size_t> tableOf(const std::string& file, std::string_view tag) {
    const auto number = [&file](size_t at) {
        uint32_t value = 0;
        for (size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<uint8_t>(file[at + i]);
        return size_t{value};
    };
    size_t entry = 12;
    while (file.compare(entry, 4, tag) != 0) entry += 16;
    return {number(entry + 8), number(entry + 12)};
}

}  // namespace qz::test
