#include "tests/faults/FailingMalloc.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <limits>

#include <dlfcn.h>
#include <execinfo.h>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
}

namespace {

constexpr uint64_t kNone = std::numeric_limits<uint64_t>::max();

std::atomic<uint64_t> counted = 0;
std::string_view failedIn;
std::atomic<uint64_t> firstToFail = kNone, lastToFail = 0;

bool fails(const void* caller) {
    const uint64_t number = ++counted;
    if (number < firstToFail || number > lastToFail) return false;
    if (number == firstToFail) failedIn = qz::test::innermostModule(caller);
    errno = ENOMEM;
    return true;
}

}  // namespace

extern "C" {
void* malloc(size_t size) noexcept {
    return fails(__builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) noexcept {
    return fails(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, size_t size) noexcept {
    return fails(__builtin_return_address(0)) ? nullptr : __libc_realloc(memory, size);
}
void* aligned_alloc(size_t alignment, size_t size) noexcept {
    return fails(__builtin_return_address(0)) ? nullptr : __libc_memalign(alignment, size);
}
int posix_memalign(void** memory, size_t alignment, size_t size) noexcept {
    if (fails(__builtin_return_address(0))) return ENOMEM;
    *memory = __libc_memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}
}

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

FailingMalloc::FailingMalloc(uint64_t number, Failing failing) {
    counted = 0;
    lastToFail = failing == Failing::theOne ? number : kNone;
    failedIn = {};
    // The first call loads a library, which takes memory.
    innermostModule(nullptr);
    counted = 0;
    firstToFail = number == 0 ? kNone : number;
}

FailingMalloc::~FailingMalloc() {
    firstToFail = kNone;
    lastToFail = 0;
}

uint64_t FailingMalloc::count() const {
    return counted;
}

}  // namespace qz::test
