#pragma once

#include <cstddef>

namespace qz::test {

/// The most bytes that `new` had allocated at a time since this was made, beyond those of its beginning. Linking this
/// header's source replaces the `new` and `delete` of the program.
class AllocationPeak {
public:
    AllocationPeak();
    size_t bytes() const;

private:
    const size_t before_;
};

}  // namespace qz::test
