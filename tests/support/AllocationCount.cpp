#include "tests/support/AllocationCount.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

#include <malloc.h>

namespace {

constexpr uint64_t kNever = std::numeric_limits<uint64_t>::max();

std::atomic<size_t> live = 0, peak = 0;
std::atomic<int64_t> blocks = 0;
std::atomic<uint64_t> calls = 0, failingCall = kNever;

void* take(size_t size) noexcept {
    void* const memory = ++calls == failingCall ? nullptr : std::malloc(size ? size : 1);
    if (!memory) return nullptr;
    ++blocks;
    peak = std::max<size_t>(peak, live += malloc_usable_size(memory));
    return memory;
}

void* takeOrThrow(size_t size) {
    void* const memory = take(size);
    if (!memory) throw std::bad_alloc();
    return memory;
}

void give(void* memory) noexcept {
    if (!memory) return;
    --blocks;
    live -= malloc_usable_size(memory);
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

AllocationPeak::AllocationPeak() : before_(live) {
    peak = before_;
}

size_t AllocationPeak::bytes() const {
    return peak - before_;
}

FailingMemory::FailingMemory(uint64_t number) {
    calls = 0;
    failingCall = number == 0 ? kNever : number;
}

FailingMemory::~FailingMemory() {
    failingCall = kNever;
}

uint64_t FailingMemory::count() {
    return calls;
}

int64_t blocksHeld() {
    return blocks;
}

}  // namespace qz::test
