#include "platform/text/LinePen.h"

#include <algorithm>
#include <cmath>

namespace qz {
namespace {

// In points. A tab stop reached up to rounding counts as passed.
constexpr double kTolerance = 0.01;

}  // namespace

void LinePen::tab() {
    start_ = position();
    behind_ = beforePoint_ = 0;
    isPastPoint_ = false;
    const auto isBehind = [this](const NSTextTab& tab) { return tab.location > start_ + kTolerance; };
    const auto next = std::ranges::find_if(style_->tabStops, isBehind);
    if (next != style_->tabStops.end()) {
        stop_ = next->location;
        alignment_ = next->alignment;
        return;
    }
    const double interval = style_->defaultTabInterval;
    stop_ = interval > 0 ? (std::floor((start_ + kTolerance) / interval) + 1) * interval : start_;
    alignment_ = NSTextTab::Alignment::left;
}

double LinePen::tabWidth() const {
    double before = 0;
    if (alignment_ == NSTextTab::Alignment::right) before = behind_;
    if (alignment_ == NSTextTab::Alignment::center) before = behind_ / 2;
    if (alignment_ == NSTextTab::Alignment::decimal) before = beforePoint_;
    return std::max(0.0, stop_ - start_ - before);
}

}  // namespace qz
