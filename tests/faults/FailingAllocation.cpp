#include "tests/faults/FailingAllocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int64_t> held = 0;
std::atomic<uint64_t> counted = 0;
std::atomic<uint64_t> failing = 0;

void* take(size_t size) noexcept {
    if (++counted == failing) return nullptr;
    void* const memory = std::malloc(size ? size : 1);
    if (memory) ++held;
    return memory;
}

void* takeOrThrow(size_t size) {
    void* const memory = take(size);
    if (!memory) throw std::bad_alloc();
    return memory;
}

void give(void* memory) noexcept {
    if (memory) --held;
    std::free(memory);
}

}  // namespace

void* operator new(size_t size) {
    return takeOrThrow(size);
}
void* operator new[](size_t size) {
    return takeOrThrow(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return take(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return take(size);
}
void operator delete(void* memory) noexcept {
    give(memory);
}
void operator delete[](void* memory) noexcept {
    give(memory);
}
void operator delete(void* memory, size_t) noexcept {
    give(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    give(memory);
}

namespace qz::test {

FailingAllocation::FailingAllocation(uint64_t number) {
    counted = 0;
    failing = number;
}

FailingAllocation::~FailingAllocation() {
    failing = 0;
}

uint64_t FailingAllocation::count() const {
    return counted;
}

int64_t blocksHeld() {
    return held;
}

}  // namespace qz::test
