#pragma once

#include <array>
#include <memory_resource>

namespace qz {

/// Memory for the nodes of one container, contiguous in the order of creation. Freed blocks are reused for the same
/// size; the memory is freed with the pool. Replaces the standard library's pool, which in GCC 12 ignores a failed
/// allocation.
class SmallBlockPool final : public std::pmr::memory_resource {
private:
    static constexpr size_t kUnit = alignof(std::max_align_t);
    static constexpr size_t kBytesMax = 512;

    struct Block {
        Block* next;
    };

    static bool isPooled(size_t bytes, size_t alignment) { return bytes <= kBytesMax && alignment <= kUnit; }
    static size_t unitsOf(size_t bytes) { return bytes == 0 ? 1 : (bytes + kUnit - 1) / kUnit; }

    void* do_allocate(size_t bytes, size_t alignment) override {
        if (!isPooled(bytes, alignment)) return large_->allocate(bytes, alignment);
        Block*& first = free_[unitsOf(bytes)];
        if (!first) return memory_.allocate(unitsOf(bytes) * kUnit, kUnit);
        Block* const block = first;
        first = block->next;
        return block;
    }
    void do_deallocate(void* memory, size_t bytes, size_t alignment) override {
        if (!isPooled(bytes, alignment)) return large_->deallocate(memory, bytes, alignment);
        Block*& first = free_[unitsOf(bytes)];
        first = new (memory) Block{first};
    }
    bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override { return this == &other; }

    std::pmr::memory_resource* const large_ = std::pmr::new_delete_resource();
    std::pmr::monotonic_buffer_resource memory_;
    std::array<Block*, kBytesMax / kUnit + 1> free_ = {};
};

}  // namespace qz
