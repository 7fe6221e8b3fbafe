#include "platform/graphics/NSAffineTransform.h"

#include <cmath>
#include <numbers>

#include "platform/graphics/NSGraphicsContext.h"

namespace qz {
namespace {

NSAffineTransform composed(const NSAffineTransform& first, const NSAffineTransform& second) {
    return {.m11 = second.m11 * first.m11 + second.m21 * first.m12,
            .m12 = second.m12 * first.m11 + second.m22 * first.m12,
            .m21 = second.m11 * first.m21 + second.m21 * first.m22,
            .m22 = second.m12 * first.m21 + second.m22 * first.m22,
            .tX = second.m11 * first.tX + second.m21 * first.tY + second.tX,
            .tY = second.m12 * first.tX + second.m22 * first.tY + second.tY};
}

// Exact for quarter turns, which therefore map axes to axes.
double cosineOfDegrees(double degrees) {
    const double turn = std::fabs(std::remainder(degrees, 360));
    if (turn == 90) return 0;
    return turn == 180 ? -1 : std::cos(turn * std::numbers::pi / 180);
}

}  // namespace

void NSAffineTransform::translateXBy(double dx, double dy) {
    prependTransform({.tX = dx, .tY = dy});
}

void NSAffineTransform::scaleXBy(double sx, double sy) {
    prependTransform({.m11 = sx, .m22 = sy});
}

void NSAffineTransform::rotateByDegrees(double degrees) {
    const double cosine = cosineOfDegrees(degrees);
    const double sine = cosineOfDegrees(degrees - 90);
    prependTransform({.m11 = cosine, .m12 = sine, .m21 = -sine, .m22 = cosine});
}

void NSAffineTransform::prependTransform(const NSAffineTransform& transform) {
    *this = composed(transform, *this);
}

NSPoint NSAffineTransform::transformPoint(NSPoint point) const {
    return {static_cast<float>(m11 * point.x + m21 * point.y + tX),
            static_cast<float>(m12 * point.x + m22 * point.y + tY)};
}

void NSAffineTransform::concat() const {
    if (const auto context = NSGraphicsContext::currentContext()) context->concatTransform(*this);
}

}  // namespace qz
