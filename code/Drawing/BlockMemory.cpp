// The blocks that memory is cut from. A block is an array of pages aligned to their size: rounding down a piece's
// address gives its page, which points to its block.

#include "BlockMemory.h"

#include <cassert>
#include <cstdint>
#include <sys/mman.h>

namespace
{

constexpr std::size_t page_size = std::size_t{2} * 1024 * 1024; // a huge page of x86-64, and of ARM with pages of 4 KiB
constexpr std::size_t pages_of_block = 4;

struct alignas(page_size) Page {
    Page* block;        // the first page of its block
    std::size_t pieces; // in use in the whole block; only valid in its first page
    unsigned char memory[page_size - sizeof(void*) - sizeof(std::size_t)];
};

Page* current = nullptr;
std::size_t used = sizeof(Page::memory); // bytes of the current page

/// Moves to the next page of the block, or to a new block. Huge pages, which must be requested before the first write,
/// make first writes five times as fast. With one page per block, alignment would double the address space.
void begin_page()
{
    if (current != nullptr && current + 1 < current->block + pages_of_block) {
        current[1].block = current->block;
        ++current;
    } else {
        current = new Page[pages_of_block];
        ::madvise(current, pages_of_block * sizeof(Page), MADV_HUGEPAGE);
        current->block = current;
        current->pieces = 0;
    }
    used = 0;
}

} // namespace

void* BlockMemory::take(std::size_t size)
{
    size = (size + alignof(double) - 1) / alignof(double) * alignof(double);
    assert(size <= sizeof(Page::memory));
    if (used + size > sizeof(Page::memory))
        begin_page();
    void* piece = current->memory + used;
    used += size;
    ++current->block->pieces;
    return piece;
}

void BlockMemory::release(void* piece) noexcept
{
    if (piece == nullptr)
        return;
    const std::uintptr_t page = reinterpret_cast<std::uintptr_t>(piece) / page_size * page_size;
    Page* const block = reinterpret_cast<Page*>(page)->block; // NOLINT(performance-no-int-to-ptr): it is piece's page
    if (--block->pieces > 0)
        return;
    if (block == current->block) {
        current = block;
        used = 0;
    } else {
        delete[] block;
    }
}
