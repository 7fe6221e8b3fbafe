#include "fuzz/Fuzzing.h"
#include "fuzz/PixelsCheck.h"

QZ_FUZZ([](const uint8_t* data, size_t size) {
    qz::fuzz::Input input(data, size);
    qz::fuzz::PixelsCheck check(input);
    const auto upTo = [&](uint32_t least, uint32_t most) { return input.ConsumeIntegralInRange(least, most); };
    if (input.ConsumeBool()) {
        check.checkRows(upTo(0, 80));
    } else {
        const uint32_t width = upTo(1, 70), height = upTo(1, 40), reachX = upTo(0, 80);
        check.checkMaximum(width, height, reachX, upTo(0, 50));
    }
})
