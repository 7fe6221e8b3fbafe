#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/qzanno/Diagnostics.h"
#include "platform/text/NSParagraphStyle.h"

namespace qz::tool {

struct PixelSize {
    int32_t width = 0;
    int32_t height = 0;
};

/// What `qzanno render` was asked for.
struct RenderOptions {
    std::string input;
    std::optional<std::string> text;
    std::string palette;
    std::vector<std::string> annotations;
    PixelSize screen = {1920, 1080};
    std::optional<PixelSize> data;
    bool box = false;
    NSWritingDirection direction = NSWritingDirection::natural;
    std::string output;
    std::string over;
    std::string manifest;
    std::vector<std::string> fontDirectories;
    std::string language;
    bool antialias = true;
    float quality = 1.0f;
    bool mergeLayers = false;
    bool strict = false;
};

/// Renders titles. The exit code: 0, or 1 when something failed.
int render(const RenderOptions& options, Diagnostics& diagnostics);

}  // namespace qz::tool
