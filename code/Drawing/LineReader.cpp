// The block that lines are cut from: refilled when it holds no complete line, doubled when it is one line's start.

#include "LineReader.h"

#include <cstring>

namespace
{

constexpr std::size_t first_block_size = std::size_t{64} * 1024;

} // namespace

LineReader::LineReader(std::FILE* file) : my_file(file), my_block(first_block_size) {}

bool LineReader::next(std::string_view& line)
{
    std::size_t searched = my_begin;
    for (;;) {
        const void* found = std::memchr(my_block.data() + searched, '\n', my_end - searched);
        if (found != nullptr) {
            const char* begin = my_block.data() + my_begin;
            line = {begin, static_cast<std::size_t>(static_cast<const char*>(found) + 1 - begin)};
            my_begin += line.size();
            return true;
        }
        searched = my_end - my_begin;
        if (!read_more())
            return false;
    }
}

/// Moves the unfinished line to the front of the block and fills up what is behind it.
bool LineReader::read_more()
{
    const std::size_t unfinished = my_end - my_begin;
    if (unfinished == my_block.size())
        my_block.resize(2 * my_block.size());
    if (my_begin > 0)
        std::memmove(my_block.data(), my_block.data() + my_begin, unfinished);
    my_begin = 0;
    const std::size_t count = std::fread(my_block.data() + unfinished, 1, my_block.size() - unfinished, my_file);
    my_end = unfinished + count;
    return count > 0;
}
