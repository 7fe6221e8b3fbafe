#pragma once

#include <chrono>
#include <cstddef>

#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// A bar on standard error while many titles or frames are rendered; nothing on what is no terminal, when quiet, or
/// when it would be gone before it could be read.
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
