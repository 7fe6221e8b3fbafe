#pragma once

#include <cstddef>
#include <cstdint>

// The program's `new` and `delete`, which count and may fail: linking this header's source replaces them.
namespace qz::test {

/// The most bytes that `new` had allocated at a time since this was made, beyond those of its beginning.
class AllocationPeak {
public:
    AllocationPeak();
    size_t bytes() const;

private:
    const size_t before_;
};

/// Counts the calls of `new` since it was made, those of other threads included, and fails the call of this number,
/// counted from 1; with 0, no call fails. Only one may exist at a time.
class FailingMemory {
public:
    explicit FailingMemory(uint64_t number);
    ~FailingMemory();
    static uint64_t count();
};

/// Blocks that `new` gave and that were not given back, since the start of the program.
int64_t blocksHeld();

}  // namespace qz::test
