// The blocks that memory is cut from: each is aligned to its size, so that a piece tells its block.

#include "BlockMemory.h"

#include <cassert>
#include <cstdint>

#include <sys/mman.h>

namespace
{

constexpr std::size_t block_size = std::size_t{2} << 20; // a huge page

struct alignas(block_size) Block {
    std::size_t pieces; // handed out and not taken back
    std::size_t used;   // bytes of the memory
    unsigned char memory[block_size - 2 * sizeof(std::size_t)];
};

Block* current = nullptr;

void begin_block()
{
    current = new Block;
    ::madvise(current, sizeof *current, MADV_HUGEPAGE); // before its first byte is written
    current->pieces = 0;
    current->used = 0;
}

} // namespace

void* BlockMemory::take(std::size_t size)
{
    size = (size + alignof(double) - 1) / alignof(double) * alignof(double);
    assert(size <= sizeof current->memory);
    if (current == nullptr || current->used + size > sizeof current->memory)
        begin_block();
    void* piece = current->memory + current->used;
    current->used += size;
    ++current->pieces;
    return piece;
}

void BlockMemory::release(void* piece) noexcept
{
    const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(piece) / block_size * block_size;
    auto* const block = reinterpret_cast<Block*>(start); // NOLINT(performance-no-int-to-ptr): it is piece, rounded down
    if (--block->pieces > 0)
        return;
    if (block == current)
        current = nullptr;
    delete block;
}
