#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "platform/graphics/vImageMax_Planar8.h"

namespace qz {
namespace {

/// A plane with bytes beside its rows and after them that no filter may touch.
struct Plane {
    static constexpr uint8_t kBeside = 0xA5;
    uint32_t width, height, rowBytes;
    std::vector<uint8_t> bytes;

    Plane(uint32_t w, uint32_t h, uint32_t beside)
        : width(w), height(h), rowBytes(w + beside), bytes(size_t{h} * rowBytes, kBeside) {
        // Without bytes beside the last row, a read or write past it is past the storage.
        bytes.resize(size_t{h} * rowBytes - beside);
    }
    uint8_t& at(size_t x, size_t y) { return bytes[y * rowBytes + x]; }
    vImage_Buffer buffer() { return {bytes.data(), height, width, rowBytes}; }
};

/// The filter as it is defined, sample by sample.
void maximumSlowly(Plane& source, Plane& destination, int64_t reachX, int64_t reachY) {
    const auto clipped = [](int64_t v, uint32_t end) { return static_cast<size_t>(std::clamp<int64_t>(v, 0, end)); };
    for (uint32_t y = 0; y < source.height; ++y) {
        for (uint32_t x = 0; x < source.width; ++x) {
            uint8_t greatest = 0;
            for (size_t v = clipped(y - reachY, source.height); v < clipped(y + reachY + 1, source.height); ++v) {
                for (size_t u = clipped(x - reachX, source.width); u < clipped(x + reachX + 1, source.width); ++u)
                    greatest = std::max(greatest, source.at(u, v));
            }
            destination.at(x, y) = greatest;
        }
    }
}

TEST(vImageMax, IsTheGreatestSampleUnderTheKernel) {
    struct Case {
        uint32_t width, height;
        int64_t reachX, reachY;
        const char* why;
    };
    const Case cases[] = {
        {1, 1, 0, 0, "the smallest plane"},
        {1, 1, 7, 7, "the kernel reaches beyond a plane of one sample"},
        {61, 1, 3, 9, "one row"},
        {1, 40, 9, 3, "one column"},
        {67, 23, 0, 0, "no stroke"},
        {67, 23, 1, 1, "three rows, read directly"},
        {67, 23, 2, 2, "five rows, read directly"},
        {67, 23, 3, 3, "blocks of seven rows, the last one cut"},
        {130, 49, 4, 24, "one block of rows, less than the plane"},
        {130, 49, 13, 0, "windows of 27, three times 9"},
        {130, 49, 14, 5, "windows of 29, one more pass"},
        {130, 49, 129, 48, "from edge to edge"},
        {130, 49, INT64_MAX / 2, INT64_MAX / 2, "the largest kernel"},
        {4100, 9, 2, 2, "two strips"},
        {4099, 9, 40, 3, "strips of unequal width"},
        {9000, 3, 600, 1, "strips widened for a wide kernel"},
    };
    const uint32_t seed = std::random_device()();
    std::mt19937 random(seed);
    for (const Case& c : cases) {
        for (const unsigned density : {2u, 200u}) {
            SCOPED_TRACE(testing::Message() << c.why << ", one sample in " << density << ", seed " << seed);
            Plane source(c.width, c.height, 13), expected(c.width, c.height, 5), actual(c.width, c.height, 5);
            for (uint32_t y = 0; y < c.height; ++y) {
                for (uint32_t x = 0; x < c.width; ++x)
                    source.at(x, y) = random() % density == 0 ? static_cast<uint8_t>(random()) : 0;
            }
            maximumSlowly(source, expected, std::min<int64_t>(c.reachX, c.width),
                          std::min<int64_t>(c.reachY, c.height));
            ASSERT_EQ(vImageMax_Planar8(source.buffer(), actual.buffer(), 2 * c.reachY + 1, 2 * c.reachX + 1),
                      vImage_Error::noError);
            ASSERT_EQ(actual.bytes, expected.bytes);
        }
    }
}

TEST(vImageMax, RefusesWhatHasNoCentreOrNoRoom) {
    Plane source(20, 10, 0), destination(20, 10, 0), smaller(20, 9, 0);
    const std::vector<uint8_t> before = destination.bytes;
    for (const int64_t side : {int64_t{0}, int64_t{2}, int64_t{-1}, int64_t{-3}, INT64_MIN}) {
        EXPECT_EQ(vImageMax_Planar8(source.buffer(), destination.buffer(), side, 3), vImage_Error::invalidKernelSize);
        EXPECT_EQ(vImageMax_Planar8(source.buffer(), destination.buffer(), 3, side), vImage_Error::invalidKernelSize);
    }
    EXPECT_EQ(vImageMax_Planar8(smaller.buffer(), destination.buffer(), 3, 3), vImage_Error::invalidBuffer);
    vImage_Buffer narrow = source.buffer();
    narrow.rowBytes = 19;
    EXPECT_EQ(vImageMax_Planar8(narrow, destination.buffer(), 3, 3), vImage_Error::invalidBuffer);
    EXPECT_EQ(destination.bytes, before);
}

}  // namespace
}  // namespace qz
