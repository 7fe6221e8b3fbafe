#pragma once

#include <cstdint>

namespace qz {

/// Rows of 8-bit samples in memory that the caller keeps: `height` rows of `width` samples, each row `rowBytes` after
/// the one before.
struct vImage_Buffer {
    uint8_t* data = nullptr;
    uint32_t height = 0;
    uint32_t width = 0;
    uint32_t rowBytes = 0;
};

enum class vImage_Error : uint8_t { noError, invalidBuffer, invalidKernelSize, memoryAllocationError };

/// Gives each sample of `destination` the maximum of the source samples in a rectangle of the kernel's size centred on
/// it, cut at the plane's edges.
///
/// The time hardly depends on the kernel's size. Needs both planes of one size and apart from each other, rows that
/// hold their samples, and odd positive kernel sides; otherwise, and when there is no memory for a few rows of scratch,
/// it says so and leaves the destination unchanged. Works on any number of threads at a time.
vImage_Error vImageMax_Planar8(const vImage_Buffer& source, const vImage_Buffer& destination, int64_t kernelHeight,
                               int64_t kernelWidth);

}  // namespace qz
