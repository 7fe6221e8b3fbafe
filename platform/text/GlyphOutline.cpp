#include "platform/text/GlyphOutline.h"

#include <new>
#include <utility>

namespace qz {
namespace {

// Builds the path as FreeType decomposes an outline.
class ContourSink {
public:
    void move(const FT_Vector& to) {
        close();
        start_ = last_ = pointOf(to);
    }
    void line(const FT_Vector& to) {
        const NSBezierPath::Point end = pointOf(to);
        if (end == last_) return;
        begin();
        path_.lineToPoint(end);
        last_ = end;
    }
    // The cubic with controls two thirds of the way to the quadratic's control is the same curve.
    void quadratic(const FT_Vector& control, const FT_Vector& to) {
        const NSBezierPath::Point q = pointOf(control);
        const NSBezierPath::Point end = pointOf(to);
        const auto raised = [q](NSBezierPath::Point p) {
            return NSBezierPath::Point{(p.x + 2 * q.x) / 3, (p.y + 2 * q.y) / 3};
        };
        begin();
        path_.curveToPoint(end, raised(last_), raised(end));
        last_ = end;
    }
    void cubic(const FT_Vector& control1, const FT_Vector& control2, const FT_Vector& to) {
        begin();
        last_ = pointOf(to);
        path_.curveToPoint(last_, pointOf(control1), pointOf(control2));
    }
    NSBezierPath finish() {
        close();
        return std::move(path_);
    }

private:
    static NSBezierPath::Point pointOf(const FT_Vector& vector) {
        return {static_cast<double>(vector.x), static_cast<double>(vector.y)};
    }
    void begin() {
        if (!isOpen_) path_.moveToPoint(start_);
        isOpen_ = true;
    }
    void close() {
        if (isOpen_) path_.closePath();
        isOpen_ = false;
    }

    NSBezierPath path_;
    NSBezierPath::Point start_ = {0, 0};
    NSBezierPath::Point last_ = {0, 0};
    bool isOpen_ = false;
};

}  // namespace

NSBezierPath pathOfOutline(FT_Outline& outline) {
    FT_Outline_Funcs funcs = {};
    funcs.move_to = [](const FT_Vector* to, void* sink) {
        static_cast<ContourSink*>(sink)->move(*to);
        return 0;
    };
    funcs.line_to = [](const FT_Vector* to, void* sink) {
        static_cast<ContourSink*>(sink)->line(*to);
        return 0;
    };
    funcs.conic_to = [](const FT_Vector* control, const FT_Vector* to, void* sink) {
        static_cast<ContourSink*>(sink)->quadratic(*control, *to);
        return 0;
    };
    funcs.cubic_to = [](const FT_Vector* control1, const FT_Vector* control2, const FT_Vector* to, void* sink) {
        static_cast<ContourSink*>(sink)->cubic(*control1, *control2, *to);
        return 0;
    };
    ContourSink sink;
    if (FT_Outline_Decompose(&outline, &funcs, &sink) != 0) return {};
    return sink.finish();
}

bool succeeded(FT_Error error) {
    if (FT_ERROR_BASE(error) == FT_Err_Out_Of_Memory) throw std::bad_alloc();
    return error == FT_Err_Ok;
}

}  // namespace qz
