#pragma once

#include <chrono>
#include <cstddef>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// A progress bar on standard error for many titles or frames; not shown if it is not a terminal, if quiet, or if it
/// would disappear at once.
class Progress {
public:
    Progress(size_t total, Diagnostics::Verbosity verbosity);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void advance(size_t count = 1);

private:
    void draw() const;

    const size_t total_;
    const bool isShown_;
    size_t done_ = 0;
    std::chrono::steady_clock::time_point drawn_;
};

}  // namespace qz::tool
