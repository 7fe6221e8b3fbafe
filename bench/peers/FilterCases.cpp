#include <cstring>
#include <stdexcept>

#include <opencv2/imgproc.hpp>

#include "QzAnno_AnnotatedTextFramework/render/QzRasterStrokeFilter.h"
#include "bench/peers/Case.h"
#include "bench/peers/SampleTitles.h"
#include "platform/graphics/vImageMax_Planar8.h"

namespace qz::peers {
namespace {

constexpr uint32_t kRowBytes = kWidth + 16;
constexpr int kRounds = 41;

struct Planes {
    std::vector<uint8_t> source = std::vector<uint8_t>(size_t{kRowBytes} * kHeight), ours = source;
    cv::Mat theirs;

    Planes() {
        for (size_t i = 0; i < source.size(); i += 97) source[i] = static_cast<uint8_t>(i);
    }
    cv::Mat asMat() { return cv::Mat(kHeight, kWidth, CV_8U, source.data(), kRowBytes); }
    void dilateOurs(int size) {
        vImageMax_Planar8({source.data(), kHeight, kWidth, kRowBytes}, {ours.data(), kHeight, kWidth, kRowBytes},
                          2 * size + 1, 2 * size + 1);
    }
    void check() const {
        for (int y = 0; y < kHeight; ++y) {
            if (std::memcmp(theirs.ptr(y), ours.data() + size_t{kRowBytes} * static_cast<size_t>(y), kWidth) != 0)
                throw std::runtime_error("OpenCV's dilation and the maximum filter differ");
        }
    }
};

/// The whole stroke filter as an OpenCV user would write it.
void strokeByOpenCV(cv::Mat& bitmap, const cv::Mat& kernel) {
    cv::Mat channel, dilated;
    cv::extractChannel(bitmap, channel, 0);
    cv::dilate(channel, dilated, kernel);
    cv::bitwise_or(channel, dilated, dilated);
    bitmap.setTo(0);
    cv::insertChannel(dilated, bitmap, 0);
}

}  // namespace

void filterCases(std::vector<Ratio>& ratios) {
    const int defaultThreads = cv::getNumThreads();
    Planes planes;
    cv::Mat source = planes.asMat();
    const auto bitmap =
        NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = kWidth, .pixelsHigh = kHeight});
    std::memset(bitmap->bitmapData(), 1, size_t{kWidth} * kHeight * 4);
    cv::Mat theirBitmap(kHeight, kWidth, CV_8UC4, cv::Scalar(1, 1, 1, 1));
    double strokeOf1 = 0;
    for (const int size : {1, 2, 4, 8, 16, 32}) {
        const cv::Mat kernel = cv::getStructuringElement(cv::MORPH_RECT, {2 * size + 1, 2 * size + 1});
        const auto times = interleavedMedians({
                                                  [&](int) { planes.dilateOurs(size); },
                                                  [&](int) {
                                                      cv::setNumThreads(1);
                                                      cv::dilate(source, planes.theirs, kernel);
                                                  },
                                                  [&](int) {
                                                      cv::setNumThreads(defaultThreads);
                                                      cv::dilate(source, planes.theirs, kernel);
                                                      cv::setNumThreads(1);
                                                  },
                                                  [&](int) { rasterStrokeWithSize(*bitmap, size); },
                                                  [&](int) { strokeByOpenCV(theirBitmap, kernel); },
                                              },
                                              kRounds);
        planes.check();
        const std::string pixels = std::to_string(size) + " px";
        ratios.push_back({"maximum of a plane, " + pixels, "QzAnno", "OpenCV", times[0], times[1], 1.0});
        ratios.push_back({"maximum of a plane, " + pixels,
                          "QzAnno",
                          "OpenCV, " + std::to_string(defaultThreads) + " threads",
                          times[0],
                          times[2],
                          {}});
        ratios.push_back({"stroke of a bitmap, " + pixels, "QzAnno", "OpenCV", times[3], times[4], 1.0});
        ratios.push_back({"stroke of a bitmap, " + pixels, "QzAnno", "OpenCV, plane only", times[3], times[1], {}});
        if (size == 1) strokeOf1 = times[3];
        if (size == 32) ratios.push_back({"stroke of a bitmap", "32 px", "1 px", times[3], strokeOf1, 2.0});
    }
}

}  // namespace qz::peers
