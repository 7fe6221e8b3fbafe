#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/render/RenderReport.h"
#include "apps/qzanno/Shard.h"

namespace qz::tool {

// A manifest is JSON Lines, one object per title; a share's begins with an object for the run. See docs/batch.md.

/// Identifies a title and the path of its picture.
struct TitleEntry {
    /// The file of titles; empty for a text on the command line.
    std::string source;
    uint32_t index = 0;
    std::optional<double> start;  ///< seconds
    std::optional<double> end;
    std::string text;
    /// As given; "-" for standard output.
    std::string file;
    /// The file of the run's first title with the same picture; empty for that title itself.
    std::string sameAs;
    /// Identifies everything that determines the picture.
    std::string key;
};

/// The results for a rendered title.
struct PictureEntry {
    uint64_t bytes = 0;  ///< size of the file
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
/// The name in reports and manifests.
const char* nameOfTrait(RenderReport::MissingTrait::Trait trait);

// Each returns one line of JSON, including the line feed.

std::string manifestLine(const TitleEntry& title, const PictureEntry& picture);
/// The line of a title with the same picture as another line's title.
std::string manifestLineLike(const std::string& line, const TitleEntry& title);

/// The file of a line's picture.
std::string fileOfLine(const std::string& line);

/// A file of titles and their number.
struct SourceEntry {
    std::string source;
    /// The index of the last title.
    uint32_t titles = 0;
    /// The indices without a title, in ascending order.
    std::vector<uint32_t> leftOut;
};

/// The first line of a share's manifest, which describes the whole run.
std::string manifestHeading(const Shard& shard, const std::vector<SourceEntry>& sources);

/// "titles.2-of-8.jsonl" for a share of "titles.jsonl"; the path itself for the whole run.
std::string manifestPath(const std::string& path, const Shard& shard);

}  // namespace qz::tool
