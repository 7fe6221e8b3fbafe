#include "apps/qzanno/Manifest.h"

#include <filesystem>
#include <string>

#include <nlohmann/json.hpp>

#include "QzAnno/platform/foundation/NSNumber.h"

namespace qz::tool {
namespace {

nlohmann::ordered_json textOrNull(const std::string& text) {
    return text.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(text);
}

std::string written(const nlohmann::ordered_json& line) {
    // A file name need not be UTF-8.
    return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

nlohmann::ordered_json secondsOrNull(const std::optional<double>& seconds) {
    return seconds ? nlohmann::ordered_json(*seconds) : nlohmann::ordered_json();
}

// The digits of the float, not of the nearest double.
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

nlohmann::ordered_json json(const std::vector<RenderReport::MissingTrait>& missing) {
    auto list = nlohmann::ordered_json::array();
    for (const RenderReport::MissingTrait& trait : missing) {
        list.push_back({{"trait", nameOfTrait(trait.trait)}, {"font", trait.font}, {"ranges", json(trait.ranges)}});
    }
    return list;
}

nlohmann::ordered_json json(const std::vector<RenderReport::Clipping>& clipped) {
    auto list = nlohmann::ordered_json::array();
    for (const RenderReport::Clipping& clipping : clipped) {
        list.push_back({{"part", nameOfPart(clipping)}, {"range", json(clipping.characters)}});
    }
    return list;
}

}  // namespace

std::string nameOfPart(const RenderReport::Clipping& clipping) {
    using Part = RenderReport::Clipping::Part;
    switch (clipping.part) {
        case Part::text:
            return "text";
        case Part::glyphs:
            return "glyphs";
        case Part::layer:
            break;
    }
    return "layer " + std::to_string(clipping.layer);
}

const char* nameOfTrait(RenderReport::MissingTrait::Trait trait) {
    using Trait = RenderReport::MissingTrait::Trait;
    switch (trait) {
        case Trait::bold:
            return "bold";
        case Trait::italic:
            return "italic";
        case Trait::regular:
            return "regular";
        case Trait::upright:
            break;
    }
    return "upright";
}

std::string manifestLine(const TitleEntry& title, const PictureEntry& picture) {
    return written({
        {"source", textOrNull(title.source)},
        {"index", title.index},
        {"start", secondsOrNull(title.start)},
        {"end", secondsOrNull(title.end)},
        {"text", title.text},
        {"file", title.file},
        {"sameAs", textOrNull(title.sameAs)},
        {"key", title.key},
        {"bytes", picture.bytes},
        {"sha256", picture.sha256},
        {"width", picture.width},
        {"height", picture.height},
        {"bytesPerRow", picture.bytesPerRow},
        {"bbox",
         {{"x", asWritten(picture.bbox.origin.x)},
          {"y", asWritten(picture.bbox.origin.y)},
          {"width", asWritten(picture.bbox.size.width)},
          {"height", asWritten(picture.bbox.size.height)}}},
        {"missingFonts", picture.missingFonts},
        {"substitutions", json(picture.report.substitutions)},
        {"missingGlyphs", json(picture.report.missingGlyphs)},
        {"missingTraits", json(picture.report.missingTraits)},
        {"clipped", json(picture.report.clipped)},
    });
}

std::string manifestLineLike(const std::string& line, const TitleEntry& title) {
    auto entry = nlohmann::ordered_json::parse(line);
    entry["source"] = textOrNull(title.source);
    entry["index"] = title.index;
    entry["start"] = secondsOrNull(title.start);
    entry["end"] = secondsOrNull(title.end);
    entry["file"] = title.file;
    entry["sameAs"] = textOrNull(title.sameAs);
    return written(entry);
}

std::string fileOfLine(const std::string& line) {
    return nlohmann::json::parse(line).at("file");
}

std::string manifestHeading(const Shard& shard, const std::vector<SourceEntry>& sources) {
    auto list = nlohmann::ordered_json::array();
    for (const SourceEntry& source : sources) {
        list.push_back({{"source", textOrNull(source.source)}, {"titles", source.titles}});
        if (!source.leftOut.empty()) list.back()["leftOut"] = source.leftOut;
    }
    return written({{"shard", shard.number}, {"of", shard.count}, {"sources", std::move(list)}});
}

std::string manifestPath(const std::string& path, const Shard& shard) {
    if (path.empty() || shard.isWhole()) return path;
    const std::filesystem::path whole(path);
    const std::string share = "." + std::to_string(shard.number) + "-of-" + std::to_string(shard.count);
    return (whole.parent_path() / (whole.stem().string() + share + whole.extension().string())).string();
}

}  // namespace qz::tool
