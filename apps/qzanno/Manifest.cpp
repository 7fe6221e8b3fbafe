#include "apps/qzanno/Manifest.h"

#include <string>

#include <nlohmann/json.hpp>

#include "platform/foundation/NSNumber.h"

namespace qz::tool {
namespace {

nlohmann::ordered_json secondsOrNull(const std::optional<double>& seconds) {
    return seconds ? nlohmann::ordered_json(*seconds) : nlohmann::ordered_json();
}

// The digits of the float, not those of the double nearest to it.
double asWritten(float value) {
    return std::stod(shortestDecimal(value));
}

}  // namespace

std::string manifestLine(const Title& title, const ManifestEntry& entry) {
    const nlohmann::ordered_json line = {
        {"index", title.index},
        {"start", secondsOrNull(title.start)},
        {"end", secondsOrNull(title.end)},
        {"text", title.text->string()->utf8()},
        {"file", entry.file},
        {"width", entry.width},
        {"height", entry.height},
        {"bytesPerRow", entry.bytesPerRow},
        {"bbox",
         {{"x", asWritten(entry.bbox.origin.x)},
          {"y", asWritten(entry.bbox.origin.y)},
          {"width", asWritten(entry.bbox.size.width)},
          {"height", asWritten(entry.bbox.size.height)}}},
        {"missingFonts", entry.missingFonts},
    };
    // A file name need not be UTF-8.
    return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace qz::tool
