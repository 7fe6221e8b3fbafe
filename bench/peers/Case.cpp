#include "bench/peers/Case.h"

#include <algorithm>
#include <chrono>
#include <ctime>

namespace qz::peers {
namespace {

constexpr double kLongMs = 333;
constexpr size_t kRoundsOfLongWork = 3;

}  // namespace

double millisecondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

double processorMillisecondsOf(const std::function<void()>& work) {
    const auto now = [] {
        timespec time;
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
    };
    const double start = now();
    work();
    return now() - start;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::vector<double> interleavedMedians(const std::vector<std::function<void(int round)>>& works, int rounds) {
    std::vector<std::vector<double>> times(works.size());
    for (int round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < works.size(); ++i) {
            if (times[i].size() >= kRoundsOfLongWork && median(times[i]) > kLongMs) continue;
            times[i].push_back(millisecondsOf([&] { works[i](round); }));
        }
    }
    std::vector<double> medians;
    for (const std::vector<double>& t : times) medians.push_back(median(t));
    return medians;
}

}  // namespace qz::peers
