#pragma once

#include <string>
#include <vector>

#include "QzAnno_AnnotatedTextFramework/render/RenderReport.h"
#include "apps/qzanno/TitleReader.h"
#include "platform/foundation/NSGeometry.h"

namespace qz::tool {

/// What is known of a rendered title.
struct ManifestEntry {
    /// As it was asked for; "-" for standard output.
    std::string file;
    int32_t width = 0;   ///< pixels
    int32_t height = 0;  ///< pixels
    int32_t bytesPerRow = 0;
    NSRect bbox;  ///< screen points
    std::vector<std::string> missingFonts;
    RenderReport report;
};

/// "text", "glyphs", "layer 1" or "layer 2".
const char* nameOfPart(RenderReport::Clipping::Part part);

/// One line of JSON, its line feed included.
std::string manifestLine(const Title& title, const ManifestEntry& entry);

}  // namespace qz::tool
