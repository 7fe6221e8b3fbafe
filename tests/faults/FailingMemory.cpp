#include "tests/faults/FailingMemory.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <new>

#include <dlfcn.h>
#include <execinfo.h>

namespace {

using qz::test::Failing;

constexpr uint64_t kNone = std::numeric_limits<uint64_t>::max();

std::atomic<int64_t> held = 0;
std::atomic<uint64_t> counted = 0;
std::atomic<Failing> kind = Failing::theNew;
std::atomic<uint64_t> firstToFail = kNone, lastToFail = 0;
std::string_view failedIn;

bool fails(bool isNew, const void* caller) {
    if (isNew != (kind == Failing::theNew)) return false;
    const uint64_t number = ++counted;
    if (number < firstToFail || number > lastToFail) return false;
    if (number == firstToFail) failedIn = qz::test::innermostModule(caller);
    errno = ENOMEM;
    return true;
}

void* take(size_t size) noexcept {
    if (fails(true, __builtin_return_address(0))) return nullptr;
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

#ifdef QZANNO_MALLOC_FAILS
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

void* malloc(size_t size) noexcept {
    return fails(false, __builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) noexcept {
    return fails(false, __builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, size_t size) noexcept {
    return fails(false, __builtin_return_address(0)) ? nullptr : __libc_realloc(memory, size);
}
void* aligned_alloc(size_t alignment, size_t size) noexcept {
    return fails(false, __builtin_return_address(0)) ? nullptr : __libc_memalign(alignment, size);
}
int posix_memalign(void** memory, size_t alignment, size_t size) noexcept {
    if (fails(false, __builtin_return_address(0))) return ENOMEM;
    *memory = __libc_memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}
}
#endif

namespace qz::test {

std::string_view innermostModule(const void* from) {
    void* frames[64];
    const int count = ::backtrace(frames, 64);
    bool isCounted = false;
    for (int frame = 0; frame < count; ++frame) {
        Dl_info info;
        if (::dladdr(frames[frame], &info) == 0 || !info.dli_fname) continue;
        const std::string_view path = info.dli_fname;
        const std::string_view name = path.substr(path.rfind('/') + 1);
        const bool isLibc = name.starts_with("libc.");
        // A signal's handler returns to the C library.
        isCounted |= from ? frames[frame] == from : isLibc;
        if (isCounted && !isLibc && !name.starts_with("libstdc++") && !name.starts_with("libgcc_s")) return name;
    }
    return "?";
}

std::string_view moduleOfFailure() {
    return failedIn;
}

FailingMemory::FailingMemory(uint64_t number, Failing failing) {
    kind = failing;
    lastToFail = failing == Failing::theMallocAndAllBehind ? kNone : number;
    failedIn = {};
    // The first call loads a library, which takes memory.
    innermostModule(nullptr);
    counted = 0;
    firstToFail = number == 0 ? kNone : number;
}

FailingMemory::~FailingMemory() {
    firstToFail = kNone;
    lastToFail = 0;
}

uint64_t FailingMemory::count() const {
    return counted;
}

int64_t blocksHeld() {
    return held;
}

}  // namespace qz::test
