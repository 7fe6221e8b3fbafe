#pragma once

#include <cstdint>
#include <string_view>

// The program's memory, which fails when told to.
namespace qz::test {

enum class Failing : uint8_t {
    theNew,                 // one call of `operator new`
    theMalloc,              // one call of malloc, calloc or realloc, those of every library included
    theMallocAndAllBehind,  // and all that follow
};

/// Whether malloc can fail: the sanitizers replace it as well, and other C libraries have other entries.
#if defined(__GLIBC__) && !defined(QZANNO_SANITIZED)
#define QZANNO_MALLOC_FAILS 1
#endif

/// Counts allocations of the kind from its making, and fails that of the number, from 1; 0 fails none. One at a time,
/// and those of other threads count as well.
class FailingMemory {
public:
    explicit FailingMemory(uint64_t number, Failing failing = Failing::theNew);
    ~FailingMemory();
    uint64_t count() const;
};

/// Blocks that `operator new` gave and that were not given back, since the start of the program.
int64_t blocksHeld();

/// The file name of the innermost program or library on the stack that is no part of the language's runtime, from the
/// function on that returns to `from`; for a signal handler, which gives none, from the function that the signal came
/// to.
std::string_view innermostModule(const void* from);
/// The same of the first allocation that failed since the last `FailingMemory` was made; empty when none did.
std::string_view moduleOfFailure();

}  // namespace qz::test
