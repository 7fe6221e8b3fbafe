#include "QzAnno/platform/foundation/NSGeometry.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/NSNumber.h"

namespace qz {
namespace {

// One axis of a rectangle. Double holds the end of a 32-bit stretch, and its length computed back, exactly: so the
// overlap of a rectangle with an enclosing one equals it to the last bit.
struct Stretch {
    double begin;
    double end;
};

Stretch horizontal(const NSRect& rect) {
    return {rect.origin.x, double{rect.origin.x} + double{rect.size.width}};
}

Stretch vertical(const NSRect& rect) {
    return {rect.origin.y, double{rect.origin.y} + double{rect.size.height}};
}

Stretch overlap(Stretch a, Stretch b) {
    return {std::max(a.begin, b.begin), std::min(a.end, b.end)};
}

NSRect rectOver(Stretch x, Stretch y) {
    return {{static_cast<float>(x.begin), static_cast<float>(y.begin)},
            {static_cast<float>(x.end - x.begin), static_cast<float>(y.end - y.begin)}};
}

bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Reads the text forms. Skips a missing token and clears `wellFormed`.
class GeometryReader {
public:
    explicit GeometryReader(const NSString& text) : text_(text.utf8()), rest_(text_) {}

    NSPoint pair() {
        token('{');
        NSPoint point;
        point.x = number();
        token(',');
        point.y = number();
        token('}');
        return point;
    }

    NSRect rect() {
        token('{');
        const NSPoint origin = pair();
        token(',');
        const NSPoint size = pair();
        token('}');
        return {origin, {size.x, size.y}};
    }

    bool endsWellFormed() {
        skipSpace();
        return wellFormed_ && rest_.empty();
    }

private:
    void skipSpace() {
        while (!rest_.empty() && isSpace(rest_.front())) rest_.remove_prefix(1);
    }

    void token(char expected) {
        skipSpace();
        if (!rest_.empty() && rest_.front() == expected)
            rest_.remove_prefix(1);
        else
            wellFormed_ = false;
    }

    float number() {
        skipSpace();
        if (rest_.size() > 1 && rest_[0] == '+' && rest_[1] != '-') rest_.remove_prefix(1);
        // from_chars accepts words such as "inf" and "nan", which these forms do not allow.
        const size_t firstDigit = rest_.starts_with('-') ? 1 : 0;
        const bool isNumber = firstDigit < rest_.size() &&
                              (rest_[firstDigit] == '.' || (rest_[firstDigit] >= '0' && rest_[firstDigit] <= '9'));
        float value = 0;
        std::from_chars_result result{rest_.data(), std::errc::invalid_argument};
        if (isNumber) result = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
        rest_.remove_prefix(static_cast<size_t>(result.ptr - rest_.data()));
        if (result.ec == std::errc()) return value;
        wellFormed_ = false;
        return 0;
    }

    const std::string text_;
    std::string_view rest_;
    bool wellFormed_ = true;
};

std::string pairForm(float a, float b) {
    return "{" + shortestDecimal(a) + ", " + shortestDecimal(b) + "}";
}

}  // namespace

NSRect NSOffsetRect(const NSRect& rect, float dx, float dy) {
    return {{rect.origin.x + dx, rect.origin.y + dy}, rect.size};
}

NSRect NSIntersectionRect(const NSRect& a, const NSRect& b) {
    const NSRect common = rectOver(overlap(horizontal(a), horizontal(b)), overlap(vertical(a), vertical(b)));
    return NSIsEmptyRect(common) ? NSRect{} : common;
}

bool NSMouseInRect(NSPoint point, const NSRect& rect, bool flipped) {
    if (point.x < rect.origin.x || point.x >= rect.maxX()) return false;
    return flipped ? point.y >= rect.origin.y && point.y < rect.maxY()
                   : point.y > rect.origin.y && point.y <= rect.maxY();
}

Ref<NSString> NSStringFromPoint(NSPoint point) {
    return NSString::stringWithUTF8String(pairForm(point.x, point.y));
}

Ref<NSString> NSStringFromSize(NSSize size) {
    return NSString::stringWithUTF8String(pairForm(size.width, size.height));
}

Ref<NSString> NSStringFromRect(const NSRect& rect) {
    return NSString::stringWithUTF8String("{" + pairForm(rect.origin.x, rect.origin.y) + ", " +
                                          pairForm(rect.size.width, rect.size.height) + "}");
}

NSPoint NSPointFromString(const NSString& text) {
    return GeometryReader(text).pair();
}

NSRect NSRectFromString(const NSString& text) {
    return GeometryReader(text).rect();
}

std::optional<NSRect> wellFormedRectFromString(const NSString& text) {
    GeometryReader reader(text);
    const NSRect rect = reader.rect();
    return reader.endsWellFormed() ? std::optional(rect) : std::nullopt;
}

std::optional<NSPoint> wellFormedPointFromString(const NSString& text) {
    GeometryReader reader(text);
    const NSPoint point = reader.pair();
    return reader.endsWellFormed() ? std::optional(point) : std::nullopt;
}

}  // namespace qz
