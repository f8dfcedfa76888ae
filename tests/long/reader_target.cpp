// libFuzzer target: the reader, the extents and the normals, held against what they promise.

#include "memory_file.h"
#include "promises.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const MemoryFile file(bytes, size);
    OwnedEntities entities;
    const DXFL_Processing reader(file.path(), entities.list);
    check_drawing(reader, entities, {reinterpret_cast<const char*>(bytes), size});
    return 0;
}
