// LineReader: the complete lines of an open file, one after the other, without copying them.
// What a line means is left to GroupCodes and DXFL_Processing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); } // NOLINT(cert-err33-c): nothing was written
};

using File = std::unique_ptr<std::FILE, CloseFile>;

/// A line with its LF.
struct Line {
    std::string_view text;
    std::uint64_t head = 0; // its first eight bytes, little-endian, with zeros after the LF of a shorter line
};

/// Reads a file in blocks and returns its lines. Bytes after the last LF are not a line. Lines may contain any bytes
/// and be as long as memory allows.
class LineReader
{
public:
    /// `file` must be open for reading, and nothing may have been read from it.
    explicit LineReader(File file);

    /// Sets `line` to the next line, which is valid until the next call. Returns false at the end of the file or on a
    /// read error, and leaves `line` as it was.
    bool next(Line& line);

private:
    bool read_more();

    File my_file;
    std::vector<char> my_block;
    std::size_t my_begin = 0; // of the next line in the block
    std::size_t my_end = 0;   // of the data in the block
};
