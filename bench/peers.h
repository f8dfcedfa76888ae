// The other readers of DXF files that the benchmark compares with.
#pragma once

#include <vector>

/// A reader by its name, and the most of its time that Tolmera's reader may take. `read` reads a whole file and
/// returns the number of faces that it found; it is null where the reader was not installed when the benchmark was
/// built.
struct Peer {
    const char* name;
    double most;
    unsigned long (*read)(const char* file_name);
};

const std::vector<Peer>& peers();
