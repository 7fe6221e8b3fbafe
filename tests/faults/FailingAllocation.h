#pragma once

#include <cstddef>
#include <cstdint>

// The program's `operator new`, which fails when told to. What the C libraries take by malloc is none of its business.
namespace qz::test {

/// Counts allocations from its making, and fails the one of that number, from 1; 0 fails none. One at a time.
class FailingAllocation {
public:
    explicit FailingAllocation(uint64_t number);
    ~FailingAllocation();
    /// How many there have been.
    uint64_t count() const;
};

/// Blocks taken and not given back, since the start of the program.
int64_t blocksHeld();

}  // namespace qz::test
