#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include "platform/graphics/NSBezierPath.h"

namespace qz {

/// The path of a FreeType outline, in its units, y growing upward, with quadratic curves raised to cubics. Omits
/// contours of a single point, which some fonts use as anchors: stroked with round caps they would be dots.
[[gnu::visibility("hidden")]] NSBezierPath pathOfOutline(FT_Outline& outline);

/// Whether a FreeType call succeeded. Throws `std::bad_alloc` if memory ran out, since that is not the font's fault.
bool succeeded(FT_Error error);

}  // namespace qz
