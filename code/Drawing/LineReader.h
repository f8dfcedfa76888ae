// LineReader: the complete lines of an open file, one after the other, without a copy of each.
// What a line means is left to DXFL_Processing.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>
#include <vector>

/// Reads a file in blocks and hands out its lines. A line is every character up to and including its LF; the rest of
/// a file behind its last LF is no line. Lines may be as long as memory allows and hold any bytes.
class LineReader
{
public:
    /// `file` is open for reading, and stays its caller's.
    explicit LineReader(std::FILE* file);

    /// True with the next line, which is valid until the next call; false at the end of the file or at an error of
    /// reading it, with `line` as it was.
    bool next(std::string_view& line);

private:
    bool read_more();

    std::FILE* my_file;
    std::vector<char> my_block;
    std::size_t my_begin = 0; // of the next line in the block
    std::size_t my_end = 0;   // of what the block holds
};
