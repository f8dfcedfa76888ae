// The blocks that memory is cut from: each is aligned to its size, so that a piece tells its block.

#include "BlockMemory.h"

#include <cstdint>

#ifdef TOLMERA_WATCHED_MEMORY // by a sanitizer, piece by piece

void* BlockMemory::take(std::size_t size)
{
    return ::operator new(size);
}

void BlockMemory::release(void* piece) noexcept
{
    ::operator delete(piece);
}

#else

namespace
{

constexpr std::size_t block_size = std::size_t{1024} * 1024;

struct alignas(block_size) Block {
    std::size_t pieces = 0; // handed out and not taken back
    std::size_t used = 0;   // bytes of the memory
    unsigned char memory[block_size - 2 * sizeof(std::size_t)];
};

Block* current = nullptr;

} // namespace

void* BlockMemory::take(std::size_t size)
{
    size = (size + alignof(double) - 1) / alignof(double) * alignof(double);
    if (current == nullptr || current->used + size > sizeof current->memory)
        current = new Block;
    void* piece = current->memory + current->used;
    current->used += size;
    ++current->pieces;
    return piece;
}

void BlockMemory::release(void* piece) noexcept
{
    // The address is a piece's own, rounded down within its block.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    auto* block = reinterpret_cast<Block*>(reinterpret_cast<std::uintptr_t>(piece) / block_size * block_size);
    if (--block->pieces > 0)
        return;
    if (block == current)
        block->used = 0;
    else
        delete block;
}

#endif
