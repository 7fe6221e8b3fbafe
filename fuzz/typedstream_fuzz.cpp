#include "fuzz/Fuzzing.h"
#include "fuzz/TypedStreamCheck.h"

namespace {

void check(const uint8_t* data, size_t size) {
    const std::string fault = qz::test::checkTypedStream(qz::fuzz::textOf(data, size));
    qz::fuzz::require(fault.empty(), fault.c_str());
}

}  // namespace

QZ_FUZZ(check)
