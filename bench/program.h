// A viewer as its user meets it: a process that is started with a file and shows a picture some time later.
#pragma once

#include <string>
#include <vector>

struct FirstPicture {
    double seconds = 0.0;    // from the start of the process to its first swap of buffers
    double peak_bytes = 0.0; // of resident memory, to a second after the first picture
};

/// Runs `command` until a second after its first picture, and ends it. `first_swap` is the path of the library that
/// tells of the swap. Stops the benchmark where the program ends without a picture.
FirstPicture show_first_picture(std::vector<std::string> command, const std::string& first_swap);
