#include "apps/qzanno/StarterPalettes.h"

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <iostream>

#include "QzAnno/platform/foundation/Files.h"

namespace qz::tool {
namespace {

constexpr std::string_view kComment = "<!-- ";

int printPalettes() {
    size_t width = 0;
    for (const StarterPalette& palette : starterPalettes()) width = std::max(width, palette.name.size());
    for (const StarterPalette& palette : starterPalettes()) {
        std::cout << std::left << std::setw(static_cast<int>(width)) << palette.name << "  " << palette.description()
                  << "\n";
    }
    return std::cout.flush() ? 0 : 1;
}

}  // namespace

std::string_view StarterPalette::description() const {
    std::string_view text = propertyList;
    text.remove_prefix(text.find(kComment) + kComment.size());
    return text.substr(0, text.find(" -->"));
}

int newStarterPalette(const NewPaletteOptions& options, Diagnostics& diagnostics) {
    if (options.name.empty()) return printPalettes();
    const auto palettes = starterPalettes();
    const auto palette = std::ranges::find(palettes, options.name, &StarterPalette::name);
    if (palette == palettes.end()) {
        std::string known;
        for (const StarterPalette& each : palettes) known += (known.empty() ? "" : ", ") + std::string(each.name);
        diagnostics.error("", "there is no starter palette " + tool::quoted(options.name) + "; there are: " + known);
        return 1;
    }
    if (options.output == "-") return std::cout << palette->propertyList << std::flush ? 0 : 1;
    const std::string output = options.output.empty() ? options.name + ".plist" : options.output;
    std::error_code ignored;
    if (!options.overwrite && std::filesystem::is_regular_file(output, ignored)) {
        diagnostics.error(output, "exists already; name another file with -o, or give --overwrite");
        return 1;
    }
    std::string reason;
    const std::string_view list = palette->propertyList;
    if (!writeFileAtomically(output, {reinterpret_cast<const uint8_t*>(list.data()), list.size()}, &reason)) {
        diagnostics.error(output, reason);
        return 1;
    }
    diagnostics.note(output, "written");
    return 0;
}

}  // namespace qz::tool
