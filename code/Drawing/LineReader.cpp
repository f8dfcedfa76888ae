// The block that lines are cut from. It is refilled when it holds no complete line, and doubled when one line fills it.

#include "LineReader.h"

#include <cstring>
#include <endian.h>
#include <utility>

namespace
{

constexpr std::size_t first_block_size = std::size_t{64} * 1024;
constexpr std::size_t word_size = sizeof Line::head;

std::uint64_t word_at(const char* text)
{
    std::uint64_t word = 0;
    std::memcpy(&word, text, word_size);
    return le64toh(word);
}

/// The lowest set bit is the top bit of the first LF in `word`; higher bits may be wrong. 0 if there is no LF.
std::uint64_t line_feeds(std::uint64_t word)
{
    constexpr std::uint64_t ones = 0x0101010101010101;
    const std::uint64_t differences = word ^ ones * '\n';
    return (differences - ones) & ~differences & ones << 7;
}

} // namespace

/// Lines are scanned in words, so the block has a spare word at its end.
LineReader::LineReader(File file) : my_file(std::move(file)), my_block(first_block_size + word_size)
{
    (void)std::setvbuf(my_file.get(), nullptr, _IONBF, 0); // the block is the buffer
}

bool LineReader::next(Line& line)
{
    do {
        for (std::size_t at = my_begin; at < my_end; at += word_size) {
            const std::uint64_t feeds = line_feeds(word_at(my_block.data() + at));
            if (feeds == 0)
                continue;
            const char* const begin = my_block.data() + my_begin;
            line.head = word_at(begin);
            if (at == my_begin)
                line.head &= feeds ^ (feeds - 1); // clears what follows the LF
            my_begin = at + static_cast<std::size_t>(__builtin_ctzll(feeds)) / 8 + 1;
            line.text = {begin, static_cast<std::size_t>(my_block.data() + my_begin - begin)};
            return true;
        }
    } while (read_more());
    return false;
}

/// Moves the unfinished line to the front of the block and fills the rest.
bool LineReader::read_more()
{
    const std::size_t unfinished = my_end - my_begin;
    if (unfinished + word_size == my_block.size())
        my_block.resize(2 * my_block.size());
    std::memmove(my_block.data(), my_block.data() + my_begin, unfinished);
    my_begin = 0;
    const std::size_t room = my_block.size() - word_size - unfinished;
    const std::size_t count = std::fread(my_block.data() + unfinished, 1, room, my_file.get());
    my_end = unfinished + count;
    std::memset(my_block.data() + my_end, 0, word_size); // otherwise next() could find an old LF
    return count > 0;
}
