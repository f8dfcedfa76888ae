// MemoryFile: bytes as a file in memory, for code that reads from a path.
// What the bytes mean is left to the fuzz targets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

/// A regular file without a directory entry, removed with the object. Ends the process where there is no memory.
class MemoryFile
{
public:
    MemoryFile(const std::uint8_t* bytes, std::size_t size) : descriptor(::memfd_create("drawing", MFD_CLOEXEC))
    {
        if (descriptor < 0 || ::write(descriptor, bytes, size) != static_cast<ssize_t>(size))
            std::abort();
    }
    ~MemoryFile() { ::close(descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

private:
    int descriptor;
};
