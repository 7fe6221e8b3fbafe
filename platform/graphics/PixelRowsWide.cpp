#include "platform/graphics/PixelRows.h"

namespace qz {
namespace {

constexpr size_t kVectorBytes = 32;

}  // namespace

extern const PixelRows kWideRows;

}  // namespace qz

#include "platform/graphics/PixelLoops.h"

namespace qz {

const PixelRows kWideRows = {
    .name = "wide", .blendCoverage = blendCoverage, .blendPixels = blendPixels, .uniteCoverage = uniteCoverage};

}  // namespace qz
