#include "platform/graphics/PixelRows.h"

namespace qz {
namespace {

constexpr size_t kVectorBytes = 16;

}  // namespace

extern const PixelRows kBaselineRows;

}  // namespace qz

#include "platform/graphics/PixelLoops.h"

namespace qz {

const PixelRows kBaselineRows = {
    .name = "baseline", .blendCoverage = blendCoverage, .blendPixels = blendPixels, .uniteCoverage = uniteCoverage};

}  // namespace qz
