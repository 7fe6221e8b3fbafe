#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <fuzzer/FuzzedDataProvider.h>

#include "QzAnno/platform/foundation/NSLog.h"

namespace qz::fuzz {

inline std::string_view textOf(const uint8_t* data, size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// The logs of a fuzzer say the same thing a million times.
inline void silenceLogs() {
    setLogHook([](std::string_view) {});
    setStandardErrorHook([](std::string_view) {});
}

/// Ends the run with the input kept when `holds` is false.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// Choices for the checks that tests make as well.
class Input : public FuzzedDataProvider {
public:
    using FuzzedDataProvider::FuzzedDataProvider;
    static void require(bool holds, const char* what) { fuzz::require(holds, what); }
};

}  // namespace qz::fuzz

/// Defines the entry points of a fuzzer that calls `check(data, size)`.
#define QZ_FUZZ(check)                                                        \
    extern "C" int LLVMFuzzerInitialize(int*, char***) {                      \
        qz::fuzz::silenceLogs();                                              \
        return 0;                                                             \
    }                                                                         \
    extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) { \
        check(data, size);                                                    \
        return 0;                                                             \
    }
