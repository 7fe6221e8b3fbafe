#pragma once

#include "bench/peers/Titles.h"

namespace qz::peers {

inline constexpr int kWidth = 1920, kHeight = 1080;

inline Title twoLineTitle() {
    return {{"The quick brown fox jumps over", "the lazy dog and runs away 42!"}, 72, 8, 6};
}

inline Title pageOfLines() {
    Title page = {{}, 24, 3, 2};
    for (int i = 0; i < 36; ++i)
        page.lines.push_back("Line " + std::to_string(i) + " sphinx of black quartz judge my vow and pack box ok");
    return page;
}

}  // namespace qz::peers
