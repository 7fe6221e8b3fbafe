#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/render/RenderReport.h"
#include "apps/qzanno/Shard.h"

namespace qz::tool {

// A manifest is JSON Lines, one object a title; that of a share begins with one of the run. docs/batch.md describes it.

/// Which title it is, and where its picture goes.
struct TitleEntry {
    /// The file of titles; empty for a text of the command line.
    std::string source;
    uint32_t index = 0;
    std::optional<double> start;  ///< seconds
    std::optional<double> end;
    std::string text;
    /// As it was asked for; "-" for standard output.
    std::string file;
    /// The file of the run's first title with the same picture; empty for that one.
    std::string sameAs;
    /// Stands for all that makes the picture.
    std::string key;
};

/// What is known of a rendered title.
struct PictureEntry {
    uint64_t bytes = 0;  ///< of the file
    std::string sha256;  ///< of the file
    int32_t width = 0;   ///< pixels
    int32_t height = 0;  ///< pixels
    int32_t bytesPerRow = 0;
    NSRect bbox;  ///< screen points
    std::vector<std::string> missingFonts;
    RenderReport report;
};

/// "text", "glyphs" or "layer 1" and so on.
std::string nameOfPart(const RenderReport::Clipping& clipping);
/// As reports and manifests name it.
const char* nameOfTrait(RenderReport::MissingTrait::Trait trait);

// One line of JSON each, the line feed included.

std::string manifestLine(const TitleEntry& title, const PictureEntry& picture);
/// The line of a title whose picture is that of the title of another line.
std::string manifestLineLike(const std::string& line, const TitleEntry& title);

/// The file of a line's picture.
std::string fileOfLine(const std::string& line);

/// A file of titles and how many it holds.
struct SourceEntry {
    std::string source;
    /// The index of the last one.
    uint32_t titles = 0;
    /// The indices that are no titles, in rising order.
    std::vector<uint32_t> leftOut;
};

/// The first line of a share's manifest: what the whole run is.
std::string manifestHeading(const Shard& shard, const std::vector<SourceEntry>& sources);

/// "titles.2-of-8.jsonl" for a share of "titles.jsonl"; the path itself for the whole run.
std::string manifestPath(const std::string& path, const Shard& shard);

}  // namespace qz::tool
