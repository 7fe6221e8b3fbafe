#include "fuzz/Fuzzing.h"
#include "fuzz/UndoCheck.h"

QZ_FUZZ([](const uint8_t* data, size_t size) {
    qz::fuzz::Input input(data, size);
    qz::fuzz::UndoCheck check(input);
    while (input.remaining_bytes() > 0) check.step();
    check.undoAll();
})
