#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "fuzz/TypedStreamCheck.h"
#include "platform/foundation/NSLog.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    qz::setLogHook([](std::string_view) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string fault = qz::test::checkTypedStream({reinterpret_cast<const char*>(data), size});
    if (fault.empty()) return 0;
    std::fprintf(stderr, "%s\n", fault.c_str());
    std::abort();
}
