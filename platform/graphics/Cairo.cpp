#include "platform/graphics/Cairo.h"

namespace qz {

void appendToCairo(cairo_t* cairo, const NSBezierPath& path, NSBezierPath::Point origin) {
    using Point = NSBezierPath::Point;
    struct Appender {
        cairo_t* const cairo;
        const double x, y;

        void moveTo(Point p) { cairo_move_to(cairo, p.x - x, p.y - y); }
        void lineTo(Point p) { cairo_line_to(cairo, p.x - x, p.y - y); }
        void curveTo(Point a, Point b, Point end) {
            cairo_curve_to(cairo, a.x - x, a.y - y, b.x - x, b.y - y, end.x - x, end.y - y);
        }
        void close() { cairo_close_path(cairo); }
    };
    path.visit(Appender{cairo, origin.x, origin.y});
}

}  // namespace qz
