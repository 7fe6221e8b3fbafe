#pragma once

#include "platform/graphics/NSBezierPath.h"
#include "QzAnno/platform/text/NSFont.h"

namespace qz {

/// Appends a glyph's outline, unhinted, with its origin at the path's current point and y growing upward; afterwards
/// the current point is where the next glyph begins. A glyph without an outline only advances.
void appendBezierPathWithGlyph(NSBezierPath& path, NSGlyph glyph, const NSFont& font);

}  // namespace qz
