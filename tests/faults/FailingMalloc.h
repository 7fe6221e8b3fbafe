#pragma once

#include <cstdint>
#include <string_view>

// The program's malloc, calloc and realloc, those of every library in it included, which fail when told to. Needs the
// GNU C library, and no sanitizer.
namespace qz::test {

enum class Failing : uint8_t { theOne, theOneAndAllThatFollow };

/// Counts allocations from its making, and fails that of the number, from 1, or those from there on; 0 fails none. One
/// at a time, and those of other threads count as well.
class FailingMalloc {
public:
    FailingMalloc(uint64_t number, Failing failing);
    ~FailingMalloc();
    uint64_t count() const;
};

/// The file name of the innermost program or library on the stack that is no part of the language's runtime, from the
/// function on that returns to `from`; for a signal handler, which gives none, from the function that the signal came
/// to.
std::string_view innermostModule(const void* from);
/// The same of the first allocation that failed since the last `FailingMalloc` was made; empty when none did.
std::string_view moduleOfFailure();

}  // namespace qz::test
