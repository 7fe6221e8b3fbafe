#pragma once

#include <optional>

#include "platform/foundation/NSString.h"

namespace qz {

// Points of the screen in 32-bit floats. Text coordinates have their origin at the top left, y growing downward.

struct NSPoint {
    float x = 0;
    float y = 0;
    friend bool operator==(const NSPoint&, const NSPoint&) = default;
};

struct NSSize {
    float width = 0;
    float height = 0;
    friend bool operator==(const NSSize&, const NSSize&) = default;
};

struct NSRect {
    NSPoint origin;
    NSSize size;
    float maxX() const { return origin.x + size.width; }
    float maxY() const { return origin.y + size.height; }
    friend bool operator==(const NSRect&, const NSRect&) = default;
};

inline bool NSEqualSizes(NSSize a, NSSize b) {
    return a == b;
}
inline bool NSEqualRects(const NSRect& a, const NSRect& b) {
    return a == b;
}
/// Whether the rectangle has no area: a width or height that is not above 0.
inline bool NSIsEmptyRect(const NSRect& rect) {
    return !(rect.size.width > 0 && rect.size.height > 0);
}
NSRect NSOffsetRect(const NSRect& rect, float dx, float dy);
/// The overlap; the zero rectangle when there is none.
NSRect NSIntersectionRect(const NSRect& a, const NSRect& b);
/// The smallest rectangle around both; an empty one counts as nothing.
NSRect NSUnionRect(const NSRect& a, const NSRect& b);
/// minX <= x < maxX, and minY <= y < maxY when `flipped`, minY < y <= maxY when not.
bool NSMouseInRect(NSPoint point, const NSRect& rect, bool flipped);

// Text forms: "{x, y}", "{width, height}", "{{x, y}, {width, height}}", each number in the shortest decimal that reads
// back as the same float.
Ref<NSString> NSStringFromPoint(NSPoint point);
Ref<NSString> NSStringFromSize(NSSize size);
Ref<NSString> NSStringFromRect(const NSRect& rect);

// Reading skips white space between tokens, takes exponents, and takes a missing number, or one beyond 32-bit floats,
// as 0.
NSPoint NSPointFromString(const NSString& text);
NSSize NSSizeFromString(const NSString& text);
NSRect NSRectFromString(const NSString& text);
/// As `NSRectFromString`, but none for a text that does not hold four finite numbers in the written form.
std::optional<NSRect> wellFormedRectFromString(const NSString& text);
/// As `NSPointFromString`, but none for a text that does not hold two finite numbers in the written form.
std::optional<NSPoint> wellFormedPointFromString(const NSString& text);

}  // namespace qz
