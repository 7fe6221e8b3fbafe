#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include "platform/graphics/NSBezierPath.h"

namespace qz {

/// The path of an outline as FreeType holds it, in its units, y growing upward; quadratic curves raised to cubics. A
/// contour of a single point, which some fonts use as an anchor, is left out: stroked with round caps it would be a
/// dot.
[[gnu::visibility("hidden")]] NSBezierPath pathOfOutline(FT_Outline& outline);

/// Whether a call of FreeType went well. Memory that ran out is no fault of the font: `std::bad_alloc`.
bool succeeded(FT_Error error);

}  // namespace qz
