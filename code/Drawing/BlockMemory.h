// BlockMemory: an arena for the many small objects of a drawing, without the general allocator's overhead for each.
// The classes of these objects decide whether to use it.
#pragma once

#include <cstddef>

/// A bump allocator: cuts consecutive pieces off large blocks, aligned for pointers and doubles. A block is freed or
/// reused when all of its pieces are released, which suits the objects of a drawing: they come and go together. Not
/// thread-safe. A piece must be smaller than 2 MB.
namespace BlockMemory
{

/// Throws std::bad_alloc when memory runs out.
void* take(std::size_t size);

/// Releases a piece from take(); ignores null.
void release(void* piece) noexcept;

} // namespace BlockMemory

/// Lets a standard container use BlockMemory.
template <typename T> struct BlockAllocator {
    using value_type = T;

    BlockAllocator() = default;
    template <typename Other> BlockAllocator(const BlockAllocator<Other>& /*other*/) noexcept {}

    // NOLINTNEXTLINE(bugprone-sizeof-expression): T may be a pointer
    T* allocate(std::size_t count) { return static_cast<T*>(BlockMemory::take(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t /*count*/) noexcept { BlockMemory::release(memory); }

    bool operator==(const BlockAllocator& /*other*/) const { return true; }
    bool operator!=(const BlockAllocator& /*other*/) const { return false; }
};
