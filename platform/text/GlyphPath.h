#pragma once

#include "QzAnno/platform/text/NSFont.h"
#include "platform/graphics/NSBezierPath.h"

namespace qz {

/// Appends a glyph's unhinted outline with its origin at the path's current point and y growing upward, and moves the
/// current point to the start of the next glyph. A glyph without an outline only advances.
void appendBezierPathWithGlyph(NSBezierPath& path, NSGlyph glyph, const NSFont& font);

}  // namespace qz
