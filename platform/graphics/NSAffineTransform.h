#pragma once

#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz {

/// x' = m11 x + m21 y + tX, y' = m12 x + m22 y + tY. Starts as the identity; each operation applies before what is
/// there, as drawing operations nest.
struct NSAffineTransform {
    /// The factors of the formula above; `tX` and `tY` are in units of the result.
    ///@{
    double m11 = 1, m12 = 0, m21 = 0, m22 = 1, tX = 0, tY = 0;
    ///@}

    /// Prepends the step, which is in the units of the points that go in, not of those that come out.
    ///@{
    void translateXBy(double dx, double dy);
    void scaleXBy(double sx, double sy);
    ///@}
    /// Prepends a turn from the x axis toward the y axis, clockwise as seen where y grows downward. Quarter turns are
    /// exact.
    void rotateByDegrees(double degrees);
    /// This, after `transform` has been applied first.
    void prependTransform(const NSAffineTransform& transform);
    /// This, and then `transform`.
    void appendTransform(const NSAffineTransform& transform);

    /// Computed in double precision, rounded once.
    NSPoint transformPoint(NSPoint point) const;
    /// Whether axes stay axes: no rotation, no shear.
    bool isScaleAndTranslation() const { return m12 == 0 && m21 == 0; }

    /// Prepends it to the transform of the current graphics context; nothing without one.
    void concat() const;

    friend bool operator==(const NSAffineTransform&, const NSAffineTransform&) = default;
};

}  // namespace qz
