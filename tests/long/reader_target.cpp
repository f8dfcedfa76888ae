// libFuzzer target: the reader, the extents and the normals, held against what they promise.

#include "promises.h"

#include <string>

#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size)
{
    const int file = ::memfd_create("drawing", MFD_CLOEXEC);
    if (file < 0 || ::write(file, bytes, size) != static_cast<ssize_t>(size))
        std::abort();
    OwnedEntities entities;
    const DXFL_Processing reader("/proc/self/fd/" + std::to_string(file), entities.list);
    check_drawing(reader, entities, {reinterpret_cast<const char*>(bytes), size});
    ::close(file);
    return 0;
}
