#pragma once

#include <memory>

#include <cairo.h>

#include "platform/graphics/NSBezierPath.h"

namespace qz {

struct CairoDestroy {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
    void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
using CairoSurfaceRef = std::unique_ptr<cairo_surface_t, CairoDestroy>;
using CairoRef = std::unique_ptr<cairo_t, CairoDestroy>;
using CairoPatternRef = std::unique_ptr<cairo_pattern_t, CairoDestroy>;

/// Appends the path to Cairo's current path, moved so that `origin` becomes (0, 0).
void appendToCairo(cairo_t* cairo, const NSBezierPath& path, NSBezierPath::Point origin = {0, 0});

}  // namespace qz
