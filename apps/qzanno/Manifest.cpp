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

nlohmann::ordered_json json(Range range) {
    return {{"location", range.location}, {"length", range.length}};
}

nlohmann::ordered_json json(const std::vector<Range>& ranges) {
    auto list = nlohmann::ordered_json::array();
    for (const Range range : ranges) list.push_back(json(range));
    return list;
}

nlohmann::ordered_json json(const std::vector<RenderReport::Substitution>& substitutions) {
    auto list = nlohmann::ordered_json::array();
    for (const RenderReport::Substitution& substitution : substitutions) {
        list.push_back({{"fontAskedFor", substitution.fontAskedFor},
                        {"fontThatServed", substitution.fontThatServed},
                        {"characters", substitution.characters},
                        {"ranges", json(substitution.ranges)}});
    }
    return list;
}

nlohmann::ordered_json json(const std::vector<RenderReport::MissingGlyph>& missing) {
    auto list = nlohmann::ordered_json::array();
    for (const RenderReport::MissingGlyph& glyph : missing) {
        list.push_back({{"character", glyph.character}, {"font", glyph.font}, {"ranges", json(glyph.ranges)}});
    }
    return list;
}

nlohmann::ordered_json json(const std::vector<RenderReport::Clipping>& clipped) {
    auto list = nlohmann::ordered_json::array();
    for (const RenderReport::Clipping& clipping : clipped) {
        list.push_back({{"part", nameOfPart(clipping.part)}, {"range", json(clipping.characters)}});
    }
    return list;
}

}  // namespace

const char* nameOfPart(RenderReport::Clipping::Part part) {
    using Part = RenderReport::Clipping::Part;
    switch (part) {
        case Part::text:
            return "text";
        case Part::glyphs:
            return "glyphs";
        case Part::layer1:
            return "layer 1";
        case Part::layer2:
            break;
    }
    return "layer 2";
}

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
        {"substitutions", json(entry.report.substitutions)},
        {"missingGlyphs", json(entry.report.missingGlyphs)},
        {"clipped", json(entry.report.clipped)},
    };
    // A file name need not be UTF-8.
    return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace qz::tool
