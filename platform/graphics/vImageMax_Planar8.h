#pragma once

#include <cstdint>

namespace qz {

/// Rows of 8-bit samples in the caller's memory: `height` rows of `width` samples, `rowBytes` apart.
struct vImage_Buffer {
    uint8_t* data = nullptr;
    uint32_t height = 0;
    uint32_t width = 0;
    uint32_t rowBytes = 0;
};

enum class vImage_Error : uint8_t { noError, invalidBuffer, invalidKernelSize, memoryAllocationError };

/// Sets each sample of `destination` to the maximum of the source samples in a rectangle of the kernel's size centred
/// on it, cut at the plane's edges.
///
/// The time hardly depends on the kernel's size. Requires separate planes of the same size, rows that hold their
/// samples, and odd positive kernel sides; otherwise, or if there is no memory for a few scratch rows, returns an error
/// and leaves the destination unchanged. Safe on any number of threads at once.
vImage_Error vImageMax_Planar8(const vImage_Buffer& source, const vImage_Buffer& destination, int64_t kernelHeight,
                               int64_t kernelWidth);

}  // namespace qz
