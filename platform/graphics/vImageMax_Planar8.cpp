#include "platform/graphics/vImageMax_Planar8.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

// The maximum over a rectangle is the maximum along columns, then along rows.
//
// Columns are done in blocks (M. van Herk, "A fast algorithm for local minimum and maximum filters on rectangular and
// octagonal kernels", 1992): with blocks of k rows, every window of k is the end of one block and the beginning of the
// next, so three maxima per sample suffice for any k. Rows are done by tripling: the maximum over a window of 3w
// samples is that of three windows of w, so a window of k takes log3 k passes over data in the first-level cache.
//
// The plane is filtered in strips of columns, so that the k rows kept by the first step stay in the second-level cache.
// The second step handles a few rows per pass: a load that spans two recent stores would stall.

namespace qz {
namespace {

constexpr size_t kStripWidthMin = 2048;
constexpr size_t kGroupBytes = 8192;
constexpr int kDirectReachMax = 4;

/// The kernel's extent from its centre.
struct Reach {
    size_t x, y;
    size_t width() const { return 2 * x + 1; }
    size_t height() const { return 2 * y + 1; }
};

/// Columns that are filtered together, and their source columns, extended by the kernel's reach within the plane.
struct Strip {
    size_t begin, end, sourceBegin, sourceEnd;
    size_t width() const { return end - begin; }
    size_t sourceWidth() const { return sourceEnd - sourceBegin; }
};

Strip stripFrom(size_t begin, size_t width, size_t planeWidth, Reach reach) {
    const size_t end = std::min(begin + width, planeWidth);
    return {begin, end, begin - std::min(begin, reach.x), std::min(end + reach.x, planeWidth)};
}

/// The memory for filtering, divided from one allocation.
class Scratch {
public:
    Scratch(size_t stripWidth, Reach reach)
        : rowBytes_(stripWidth + 2 * reach.x),
          groupRows_(std::max(size_t{1}, kGroupBytes / rowBytes_ / 2) * 2),
          groupBytes_(groupRows_ * rowBytes_ + reach.width()),
          storage_(new (std::nothrow) uint8_t[3 * groupBytes_ + (1 + reach.height()) * rowBytes_]) {}
    explicit operator bool() const { return storage_ != nullptr; }

    /// Even, since the first step may make two rows at a time.
    size_t groupRows() const { return groupRows_; }
    size_t groupBytes() const { return groupBytes_; }
    /// Group 0 holds rows after the first step, end to end, each with zeros where the kernel reaches beyond the plane;
    /// the passes of the second step alternate between groups 1 and 2.
    uint8_t* group(size_t i) { return storage_.get() + i * groupBytes_; }
    /// Column maxima from the first row of a block.
    uint8_t* prefix() { return group(3); }
    /// Column maxima from the i-th row of a block to its last.
    uint8_t* suffix(size_t i) { return prefix() + (1 + i) * rowBytes_; }

private:
    const size_t rowBytes_;
    const size_t groupRows_;
    const size_t groupBytes_;
    const std::unique_ptr<uint8_t[]> storage_;
};

// These are compiled once for each width of registers, inside the functions that choose it.
#define QZ_FOR_EACH_WIDTH [[gnu::always_inline]] inline

QZ_FOR_EACH_WIDTH uint8_t greater(uint8_t a, uint8_t b) {
    return a > b ? a : b;
}

QZ_FOR_EACH_WIDTH void maximum(const uint8_t* __restrict a, const uint8_t* __restrict b, uint8_t* __restrict out,
                               size_t count) {
    for (size_t i = 0; i < count; ++i) out[i] = greater(a[i], b[i]);
}

QZ_FOR_EACH_WIDTH void maximumOfThree(const uint8_t* __restrict in, size_t second, size_t third,
                                      uint8_t* __restrict out, size_t count) {
    for (size_t i = 0; i < count; ++i) out[i] = greater(greater(in[i], in[i + second]), in[i + third]);
}

/// The maximum of windows evenly spaced from the first to the last.
QZ_FOR_EACH_WIDTH void maximumOfFive(const uint8_t* __restrict in, size_t last, uint8_t* __restrict out, size_t count) {
    const size_t second = last / 4, third = last / 2, fourth = last - last / 4;
    for (size_t i = 0; i < count; ++i) {
        const uint8_t inner = greater(greater(in[i + second], in[i + third]), in[i + fourth]);
        out[i] = greater(greater(in[i], in[i + last]), inner);
    }
}

/// The first step: the maxima along the columns of a strip, row after row.
class ColumnMaxima {
public:
    QZ_FOR_EACH_WIDTH ColumnMaxima(const vImage_Buffer& plane, Strip strip, size_t reach, Scratch& scratch)
        : plane_(plane), strip_(strip), reach_(reach), scratch_(scratch) {}

    /// Writes `rows` more rows, `rowBytes` apart.
    QZ_FOR_EACH_WIDTH void writeNext(uint8_t* out, size_t rowBytes, size_t rows) {
        size_t i = 0;
        // Rereading a few rows is faster than keeping them.
        if (reach_ <= kDirectReachMax) {
            for (; i + 2 <= rows; i += 2, y_ += 2) writeTwoDirectly(out + i * rowBytes, out + (i + 1) * rowBytes);
            if (i < rows) writeTwoDirectly(out + i * rowBytes, scratch_.prefix());
        } else {
            for (; i < rows; ++i, ++y_) writeFromBlocks(out + i * rowBytes);
        }
    }

private:
    QZ_FOR_EACH_WIDTH size_t width() const { return strip_.sourceWidth(); }
    /// A row of the plane; beyond an edge, the row at that edge, which is in every window that reaches beyond.
    QZ_FOR_EACH_WIDTH const uint8_t* row(int64_t y) const {
        const size_t inside = static_cast<size_t>(std::clamp(y, int64_t{0}, int64_t{plane_.height} - 1));
        return plane_.data + inside * plane_.rowBytes + strip_.sourceBegin;
    }

    QZ_FOR_EACH_WIDTH void writeTwoDirectly(uint8_t* first, uint8_t* second) const {
        switch (reach_) {
            case 0:
                return writeTwoDirectly<0>(first, second);
            case 1:
                return writeTwoDirectly<1>(first, second);
            case 2:
                return writeTwoDirectly<2>(first, second);
            case 3:
                return writeTwoDirectly<3>(first, second);
            default:
                return writeTwoDirectly<kDirectReachMax>(first, second);
        }
    }

    /// Writes rows y_ and y_ + 1, whose windows share all but one row each.
    template <int reach>
    QZ_FOR_EACH_WIDTH void writeTwoDirectly(uint8_t* __restrict first, uint8_t* __restrict second) const {
        constexpr int last = 2 * reach + 1;
        const uint8_t* rows[last + 1];
        for (int i = 0; i <= last; ++i) rows[i] = row(y_ - reach + i);
        for (size_t x = 0; x < width(); ++x) {
            uint8_t shared = 0;
            for (int i = 1; i < last; ++i) shared = greater(shared, rows[i][x]);
            first[x] = greater(shared, rows[0][x]);
            second[x] = greater(shared, rows[last][x]);
        }
    }

    QZ_FOR_EACH_WIDTH void writeFromBlocks(uint8_t* __restrict out) {
        const size_t i = inBlock_;
        uint8_t* __restrict prefix = scratch_.prefix();
        const uint8_t* __restrict suffix = scratch_.suffix(i);
        const uint8_t* __restrict last = row(y_ + reach_);
        if (i == 0) {
            keepSuffixes();
            std::memcpy(out, suffix, width());
        } else if (i == 1) {
            std::memcpy(prefix, last, width());
            maximum(prefix, suffix, out, width());
        } else {
            for (size_t x = 0; x < width(); ++x) {
                prefix[x] = greater(prefix[x], last[x]);
                out[x] = greater(prefix[x], suffix[x]);
            }
        }
        inBlock_ = i == static_cast<size_t>(2 * reach_) ? 0 : i + 1;
    }

    /// Keeps the suffix maxima of the block that is the window of row y_.
    QZ_FOR_EACH_WIDTH void keepSuffixes() {
        const int64_t last = 2 * reach_;
        std::memcpy(scratch_.suffix(static_cast<size_t>(last)), row(y_ + reach_), width());
        for (int64_t i = last - 1; i >= 0; --i) {
            const size_t k = static_cast<size_t>(i);
            maximum(scratch_.suffix(k + 1), row(y_ - reach_ + i), scratch_.suffix(k), width());
        }
    }

    const vImage_Buffer& plane_;
    const Strip strip_;
    const int64_t reach_;
    Scratch& scratch_;
    int64_t y_ = 0;
    /// The position in a block where the window of row y_ begins.
    size_t inBlock_ = 0;
};

/// The second step: the maxima along rows of group 0.
QZ_FOR_EACH_WIDTH void writeRowMaxima(Scratch& scratch, size_t rows, size_t width, size_t reach, uint8_t* out,
                                      size_t outRowBytes) {
    const size_t rowBytes = width + 2 * reach, windowWidth = 2 * reach + 1;
    const uint8_t* in = scratch.group(0);
    size_t window = 1, next = 1;
    for (; 5 * window < windowWidth; window *= 3, next = 3 - next) {
        maximumOfThree(in, window, 2 * window, scratch.group(next), rows * rowBytes);
        in = scratch.group(next);
    }
    // Three or five windows, overlapping as necessary.
    const size_t last = windowWidth - window;
    for (size_t i = 0; i < rows; ++i) {
        if (windowWidth <= 3 * window)
            maximumOfThree(in + i * rowBytes, last / 2, last, out + i * outRowBytes, width);
        else
            maximumOfFive(in + i * rowBytes, last, out + i * outRowBytes, width);
    }
}

QZ_FOR_EACH_WIDTH void filterStrip(const vImage_Buffer& source, const vImage_Buffer& destination, Strip strip,
                                   Reach reach, Scratch& scratch) {
    const size_t rowBytes = strip.width() + 2 * reach.x;
    const size_t zerosLeft = strip.sourceBegin + reach.x - strip.begin;
    std::memset(scratch.group(0), 0, scratch.groupBytes());
    ColumnMaxima columns(source, strip, reach.y, scratch);
    for (size_t y = 0; y < source.height; y += scratch.groupRows()) {
        const size_t rows = std::min(scratch.groupRows(), source.height - y);
        columns.writeNext(scratch.group(0) + zerosLeft, rowBytes, rows);
        writeRowMaxima(scratch, rows, strip.width(), reach.x, destination.data + y * destination.rowBytes + strip.begin,
                       destination.rowBytes);
    }
}

using StripFilter = void(const vImage_Buffer&, const vImage_Buffer&, Strip, Reach, Scratch&);

void filterStripPlainly(const vImage_Buffer& source, const vImage_Buffer& destination, Strip strip, Reach reach,
                        Scratch& scratch) {
    filterStrip(source, destination, strip, reach, scratch);
}

#if defined(__x86_64__)
[[gnu::target("avx2")]] void filterStripAVX2(const vImage_Buffer& source, const vImage_Buffer& destination, Strip strip,
                                             Reach reach, Scratch& scratch) {
    filterStrip(source, destination, strip, reach, scratch);
}

[[gnu::target("avx512bw,avx512vl")]] void filterStripAVX512(const vImage_Buffer& source,
                                                            const vImage_Buffer& destination, Strip strip, Reach reach,
                                                            Scratch& scratch) {
    filterStrip(source, destination, strip, reach, scratch);
}

StripFilter& widestStripFilter() {
    if (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl")) return filterStripAVX512;
    return __builtin_cpu_supports("avx2") ? filterStripAVX2 : filterStripPlainly;
}
#else
StripFilter& widestStripFilter() {
    return filterStripPlainly;
}
#endif

bool holdsItsRows(const vImage_Buffer& plane) {
    return plane.data && plane.rowBytes >= plane.width;
}

}  // namespace

vImage_Error vImageMax_Planar8(const vImage_Buffer& source, const vImage_Buffer& destination, int64_t kernelHeight,
                               int64_t kernelWidth) {
    if (kernelHeight < 1 || kernelHeight % 2 == 0 || kernelWidth < 1 || kernelWidth % 2 == 0)
        return vImage_Error::invalidKernelSize;
    if (source.width != destination.width || source.height != destination.height) return vImage_Error::invalidBuffer;
    const size_t width = source.width, height = source.height;
    if (width == 0 || height == 0) return vImage_Error::noError;
    if (!holdsItsRows(source) || !holdsItsRows(destination)) return vImage_Error::invalidBuffer;
    // A kernel that covers the whole plane finds nothing more beyond.
    const Reach reach = {std::min(static_cast<size_t>(kernelWidth / 2), width - 1),
                         std::min(static_cast<size_t>(kernelHeight / 2), height - 1)};
    // A strip reads the kernel's width beside it, so it should be at least twice as wide.
    const size_t strips = std::max(size_t{1}, width / std::max(kStripWidthMin, 2 * reach.width()));
    const size_t stripWidth = (width + strips - 1) / strips;
    Scratch scratch(stripWidth, reach);
    if (!scratch) return vImage_Error::memoryAllocationError;
    StripFilter& filterWidely = widestStripFilter();
    for (size_t begin = 0; begin < width; begin += stripWidth)
        filterWidely(source, destination, stripFrom(begin, stripWidth, width, reach), reach, scratch);
    return vImage_Error::noError;
}

}  // namespace qz
