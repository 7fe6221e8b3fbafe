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

/// A fuzzer would log the same thing a million times.
inline void silenceLogs() {
    setLogHook([](std::string_view) {});
    setStandardErrorHook([](std::string_view) {});
}

/// Aborts if `holds` is false, so that the fuzzer keeps the input.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// Input for the checks shared with tests.
class Input : public FuzzedDataProvider {
public:
    using FuzzedDataProvider::FuzzedDataProvider;
    static void require(bool holds, const char* what) { fuzz::require(holds, what); }
};

}  // namespace qz::fuzz

/// Defines the entry points of a fuzzer that calls the function with the data and their size.
#define QZ_FUZZ(...)                                                          \
    extern "C" int LLVMFuzzerInitialize(int*, char***) {                      \
        qz::fuzz::silenceLogs();                                              \
        return 0;                                                             \
    }                                                                         \
    extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) { \
        (__VA_ARGS__)(data, size);                                            \
        return 0;                                                             \
    }
