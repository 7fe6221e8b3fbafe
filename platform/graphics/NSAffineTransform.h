#pragma once

#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz {

/// x' = m11 x + m21 y + tX, y' = m12 x + m22 y + tY. Starts as the identity; each operation is applied before the
/// existing ones, as drawing operations nest.
struct NSAffineTransform {
    /// The factors of the formula above; `tX` and `tY` are in units of the result.
    ///@{
    double m11 = 1, m12 = 0, m21 = 0, m22 = 1, tX = 0, tY = 0;
    ///@}

    /// Prepends the step, in the units of the input points, not the output points.
    ///@{
    void translateXBy(double dx, double dy);
    void scaleXBy(double sx, double sy);
    ///@}
    /// Prepends a rotation from the x axis toward the y axis, which is clockwise if y grows downward. Quarter turns are
    /// exact.
    void rotateByDegrees(double degrees);
    /// Applies `transform` first, then this.
    void prependTransform(const NSAffineTransform& transform);

    /// Computed in double precision and rounded once.
    NSPoint transformPoint(NSPoint point) const;
    /// Whether there is no rotation and no shear.
    bool isScaleAndTranslation() const { return m12 == 0 && m21 == 0; }

    /// Prepends this to the transform of the current graphics context, if there is one.
    void concat() const;

    friend bool operator==(const NSAffineTransform&, const NSAffineTransform&) = default;
};

}  // namespace qz
