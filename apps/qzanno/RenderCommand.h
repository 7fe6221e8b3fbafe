#pragma once

#include <optional>
#include <string>
#include <vector>

#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "apps/qzanno/Diagnostics.h"
#include "apps/qzanno/Shard.h"
#include "captions/CaptionLooks.h"

namespace qz::tool {

struct PixelSize {
    int32_t width = 0;
    int32_t height = 0;
};

/// The options for layout and drawing.
struct DrawingOptions {
    std::string palette;
    std::vector<std::string> annotations;
    PixelSize screen = {1920, 1080};
    std::optional<PixelSize> data;
    bool box = false;
    NSWritingDirection direction = NSWritingDirection::natural;
    std::string over;
    std::vector<std::string> fontDirectories;
    std::string language;
    bool antialias = true;
    float quality = 1.0f;
    bool mergeLayers = false;
    Looks looks = Looks::both;
    bool strict = false;
};

/// The options of `qzanno render`.
struct RenderOptions {
    /// Files and folders.
    std::vector<std::string> inputs;
    std::optional<std::string> text;
    DrawingOptions drawing;
    std::string output;
    std::string manifest;
    uint32_t jobs = 1;
    Shard shard;
    bool resume = false;
};

/// Renders titles. Returns the exit code: 0, or 1 if something failed.
int render(const RenderOptions& options, Diagnostics& diagnostics);

}  // namespace qz::tool
