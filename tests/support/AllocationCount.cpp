#include "tests/support/AllocationCount.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

size_t live = 0;
size_t peak = 0;

void* counted(void* memory) {
    if (!memory) throw std::bad_alloc();
    live += malloc_usable_size(memory);
    peak = std::max(peak, live);
    return memory;
}

void release(void* memory) {
    if (memory) live -= malloc_usable_size(memory);
    std::free(memory);
}

}  // namespace

void* operator new(size_t size) {
    return counted(std::malloc(size));
}
void* operator new[](size_t size) {
    return counted(std::malloc(size));
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete[](void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, size_t) noexcept {
    release(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    release(memory);
}

namespace qz::test {

AllocationPeak::AllocationPeak() : before_(live) {
    peak = live;
}

size_t AllocationPeak::bytes() const {
    return peak - before_;
}

}  // namespace qz::test
