// BlockMemory: memory for the many small objects of a drawing, without the general allocator's own cost of each.
// Which objects live in it is left to their classes.
#pragma once

#include <cstddef>

/// Hands out pieces of large blocks, one behind the other, aligned for pointers and doubles. Released pieces
/// are not reused one by one: when all pieces of a block are released, the block is freed or reused. That suits the
/// objects of a drawing, which come and go together. For one thread, and for pieces of up to some kilobytes.
namespace BlockMemory
{

/// Throws bad_alloc where memory ends.
void* take(std::size_t size);

/// Takes back what take() gave.
void release(void* piece) noexcept;

} // namespace BlockMemory

/// Gives a standard container its memory from BlockMemory.
template <typename T> struct BlockAllocator {
    using value_type = T;

    BlockAllocator() = default;
    template <typename Other> BlockAllocator(const BlockAllocator<Other>& /*other*/) noexcept {}

    // NOLINTNEXTLINE(bugprone-sizeof-expression): a T that is a pointer is meant, too
    T* allocate(std::size_t quantity) { return static_cast<T*>(BlockMemory::take(quantity * sizeof(T))); }
    void deallocate(T* memory, std::size_t /*quantity*/) noexcept { BlockMemory::release(memory); }

    bool operator==(const BlockAllocator& /*other*/) const { return true; }
    bool operator!=(const BlockAllocator& /*other*/) const { return false; }
};
