#pragma once

#include <optional>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// A position in points. In text coordinates the origin is at the top left and y grows downward; in an image that is
/// not flipped it is at the bottom left and y grows upward.
struct NSPoint {
    float x = 0;  ///< grows to the right
    float y = 0;  ///< grows downward in text
    friend bool operator==(const NSPoint&, const NSPoint&) = default;
};

/// An extent in points. A rectangle is empty unless both are above 0.
struct NSSize {
    float width = 0;   ///< along x
    float height = 0;  ///< along y
    friend bool operator==(const NSSize&, const NSSize&) = default;
};

/// An axis-aligned rectangle, in points.
struct NSRect {
    NSPoint origin;  ///< the corner with the least x and y
    NSSize size;     ///< the extent from there
    /// The far edges, rounded to 32-bit floats: their distance to the origin may differ from the size.
    ///@{
    float maxX() const { return origin.x + size.width; }
    float maxY() const { return origin.y + size.height; }
    ///@}
    friend bool operator==(const NSRect&, const NSRect&) = default;
};

/// A rectangle of whole device pixels; the origin is the top left of the bitmap.
struct PixelRect {
    int32_t x = 0;       ///< leftmost column
    int32_t y = 0;       ///< topmost row
    int32_t width = 0;   ///< columns
    int32_t height = 0;  ///< rows

    /// Whether it holds no pixel: its width or height is not above 0.
    bool isEmpty() const { return width <= 0 || height <= 0; }
    /// One past the last column (row). 64 bits wide, since x + width may not fit in 32.
    ///@{
    int64_t right() const { return int64_t{x} + width; }
    int64_t bottom() const { return int64_t{y} + height; }
    ///@}

    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

/// Whether all numbers are exactly equal; NaN equals nothing.
///@{
inline bool NSEqualSizes(NSSize a, NSSize b) {
    return a == b;
}
inline bool NSEqualRects(const NSRect& a, const NSRect& b) {
    return a == b;
}
///@}
/// Whether the rectangle has no area: its width or height is not above 0.
inline bool NSIsEmptyRect(const NSRect& rect) {
    return !(rect.size.width > 0 && rect.size.height > 0);
}
/// The rectangle moved by (dx, dy), of the same size.
NSRect NSOffsetRect(const NSRect& rect, float dx, float dy);
/// The overlap, or the zero rectangle if they do not overlap.
NSRect NSIntersectionRect(const NSRect& a, const NSRect& b);
/// Whether minX <= x < maxX, and minY <= y < maxY if `flipped`, else minY < y <= maxY.
bool NSMouseInRect(NSPoint point, const NSRect& rect, bool flipped);

/// The text form, "{x, y}", "{width, height}" or "{{x, y}, {width, height}}", each number as the shortest decimal that
/// reads back as the same float.
///@{
Ref<NSString> NSStringFromPoint(NSPoint point);
Ref<NSString> NSStringFromSize(NSSize size);
Ref<NSString> NSStringFromRect(const NSRect& rect);
///@}

/// Reads the text form leniently: white space between tokens is skipped, exponents are accepted, and a number that is
/// missing or beyond the range of a float is 0.
///@{
NSPoint NSPointFromString(const NSString& text);
NSRect NSRectFromString(const NSString& text);
///@}
/// As `NSRectFromString`, but returns no value unless the text holds four finite numbers in exactly the form that is
/// written.
std::optional<NSRect> wellFormedRectFromString(const NSString& text);
/// As `NSPointFromString`, but returns no value unless the text holds two finite numbers in exactly the form that is
/// written.
std::optional<NSPoint> wellFormedPointFromString(const NSString& text);

}  // namespace qz
