#include "fuzz/EditsCheck.h"
#include "fuzz/Fuzzing.h"

QZ_FUZZ([](const uint8_t* data, size_t size) {
    qz::fuzz::Input input(data, size);
    qz::fuzz::EditsCheck check(input);
    while (input.remaining_bytes() > 0 && check.edit()) check.compare();
})
