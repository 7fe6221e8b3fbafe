#include "apps/qzanno/Progress.h"

#include <iostream>
#include <string>

#include <unistd.h>

namespace qz::tool {
namespace {

constexpr size_t kTitlesMin = 20;
constexpr size_t kBarWidth = 40;
constexpr std::chrono::milliseconds kRedraw{100};

}  // namespace

Progress::Progress(size_t total, Diagnostics::Verbosity verbosity)
    : total_(total),
      isShown_(total >= kTitlesMin && verbosity == Diagnostics::Verbosity::normal && isatty(STDERR_FILENO)),
      drawn_(std::chrono::steady_clock::now()) {}

Progress::~Progress() {
    // Clears the line for the next output.
    if (isShown_) std::cerr << "\r\033[K" << std::flush;
}

void Progress::advance(size_t count) {
    done_ += count;
    const auto now = std::chrono::steady_clock::now();
    if (!isShown_ || now - drawn_ < kRedraw) return;
    drawn_ = now;
    draw();
}

void Progress::draw() const {
    const size_t filled = kBarWidth * done_ / total_;
    std::cerr << "\r[" << std::string(filled, '#') << std::string(kBarWidth - filled, ' ') << "] " << done_ << " of "
              << total_ << std::flush;
}

}  // namespace qz::tool
