// Room for OpenGL's own memory, while a drawing is given its own.
#pragma once

#include <cstddef>

#include <sys/mman.h>

/// Address space that is kept back while a drawing is read, as much as there is up to a bound. OpenGL drivers crash
/// where they run out of memory; so a drawing that is too large runs out of it sooner, where that has a clean end.
class MemoryForOpenGL
{
public:
    MemoryForOpenGL()
    {
        for (my_size = whole; my_size > 0; my_size /= 2) {
            my_memory = ::mmap(nullptr, my_size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
            if (my_memory != MAP_FAILED)
                break;
        }
    }
    ~MemoryForOpenGL()
    {
        if (my_memory != MAP_FAILED)
            ::munmap(my_memory, my_size);
    }
    MemoryForOpenGL(const MemoryForOpenGL&) = delete;
    MemoryForOpenGL& operator=(const MemoryForOpenGL&) = delete;

    bool is_whole() const { return my_size == whole; }

private:
    static constexpr std::size_t whole = std::size_t{512} * 1024 * 1024; // Mesa's software renderer takes 480 MB

    void* my_memory = MAP_FAILED;
    std::size_t my_size = 0;
};
