// The blocks that memory is cut from: each is aligned to its size, so that a piece tells its block.

#include "BlockMemory.h"

#include <cassert>
#include <cstdint>
#include <new>

#include <sys/mman.h>

namespace
{

constexpr std::size_t block_size = std::size_t{1024} * 1024;

struct alignas(block_size) Block {
    std::size_t pieces = 0; // handed out and not taken back
    std::size_t used = 0;   // bytes of the memory
    unsigned char memory[block_size - 2 * sizeof(std::size_t)];
};

Block* current = nullptr;

std::uintptr_t block_start(std::uintptr_t address)
{
    return address / block_size * block_size;
}

/// A block from the system: the last one that is aligned in an area of twice its size, so that the next one comes to
/// lie right before it. The general allocator would keep the rest of the area.
Block* new_block()
{
    constexpr std::size_t area_size = 2 * block_size;
    void* area = ::mmap(nullptr, area_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED)
        throw std::bad_alloc();
    auto* const begin = static_cast<unsigned char*>(area);
    const auto address = reinterpret_cast<std::uintptr_t>(area);
    const std::size_t before = block_start(address + block_size) - address;
    const std::size_t behind = area_size - before - block_size;
    if (before > 0)
        ::munmap(begin, before);
    if (behind > 0)
        ::munmap(begin + before + block_size, behind);
    return new (begin + before) Block;
}

} // namespace

void* BlockMemory::take(std::size_t size)
{
    size = (size + alignof(double) - 1) / alignof(double) * alignof(double);
    assert(size <= sizeof current->memory);
    if (current == nullptr || current->used + size > sizeof current->memory)
        current = new_block();
    void* piece = current->memory + current->used;
    current->used += size;
    ++current->pieces;
    return piece;
}

void BlockMemory::release(void* piece) noexcept
{
    // The address is a piece's own, rounded down within its block.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    auto* block = reinterpret_cast<Block*>(block_start(reinterpret_cast<std::uintptr_t>(piece)));
    if (--block->pieces > 0)
        return;
    if (block == current)
        block->used = 0;
    else
        ::munmap(block, block_size);
}
