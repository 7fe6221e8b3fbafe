#pragma once

#include <optional>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// A place in points of the screen, in 32-bit floats. Text coordinates have their origin at the top left, y growing
/// downward; an image that is not flipped has it at the bottom left, y growing upward.
struct NSPoint {
    float x = 0;  ///< grows to the right
    float y = 0;  ///< grows downward in text
    friend bool operator==(const NSPoint&, const NSPoint&) = default;
};

/// An extent in points. One that is not above 0 both ways makes a rectangle empty.
struct NSSize {
    float width = 0;   ///< along x
    float height = 0;  ///< along y
    friend bool operator==(const NSSize&, const NSSize&) = default;
};

/// A rectangle along the axes, in points.
struct NSRect {
    NSPoint origin;  ///< the corner with the least x and y
    NSSize size;     ///< from there on
    /// The far edges, rounded to 32-bit floats: a width asked back as the difference of two edges may have changed.
    ///@{
    float maxX() const { return origin.x + size.width; }
    float maxY() const { return origin.y + size.height; }
    ///@}
    friend bool operator==(const NSRect&, const NSRect&) = default;
};

/// A rectangle of whole device pixels, origin at the top left of the bitmap.
struct PixelRect {
    int32_t x = 0;       ///< of the leftmost column
    int32_t y = 0;       ///< of the topmost row
    int32_t width = 0;   ///< columns
    int32_t height = 0;  ///< rows

    /// Whether it holds no pixel: a width or height that is not above 0.
    bool isEmpty() const { return width <= 0 || height <= 0; }
    /// The first column (row) behind it. In 64 bits: x near the end of its range plus a width does not fit in 32.
    ///@{
    int64_t right() const { return int64_t{x} + width; }
    int64_t bottom() const { return int64_t{y} + height; }
    ///@}

    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

/// Whether all numbers are equal, without tolerance; not-a-number equals nothing.
///@{
inline bool NSEqualSizes(NSSize a, NSSize b) {
    return a == b;
}
inline bool NSEqualRects(const NSRect& a, const NSRect& b) {
    return a == b;
}
///@}
/// Whether the rectangle has no area: a width or height that is not above 0.
inline bool NSIsEmptyRect(const NSRect& rect) {
    return !(rect.size.width > 0 && rect.size.height > 0);
}
/// The rectangle moved by (dx, dy), of the same size.
NSRect NSOffsetRect(const NSRect& rect, float dx, float dy);
/// The overlap; the zero rectangle when there is none.
NSRect NSIntersectionRect(const NSRect& a, const NSRect& b);
/// The smallest rectangle around both; an empty one counts as nothing.
NSRect NSUnionRect(const NSRect& a, const NSRect& b);
/// minX <= x < maxX, and minY <= y < maxY when `flipped`, minY < y <= maxY when not.
bool NSMouseInRect(NSPoint point, const NSRect& rect, bool flipped);

/// The text form, "{x, y}", "{width, height}" or "{{x, y}, {width, height}}", each number in the shortest decimal that
/// reads back as the same float.
///@{
Ref<NSString> NSStringFromPoint(NSPoint point);
Ref<NSString> NSStringFromSize(NSSize size);
Ref<NSString> NSStringFromRect(const NSRect& rect);
///@}

/// Reads the text form, whatever stands there: white space between tokens is skipped, exponents are taken, and a number
/// that is missing or beyond 32-bit floats is 0.
///@{
NSPoint NSPointFromString(const NSString& text);
NSSize NSSizeFromString(const NSString& text);
NSRect NSRectFromString(const NSString& text);
///@}
/// As `NSRectFromString`, but none for a text that does not hold four finite numbers in the written form.
std::optional<NSRect> wellFormedRectFromString(const NSString& text);
/// As `NSPointFromString`, but none for a text that does not hold two finite numbers in the written form.
std::optional<NSPoint> wellFormedPointFromString(const NSString& text);

}  // namespace qz
