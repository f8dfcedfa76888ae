// Looks up which group codes a line denotes. Most lines have a character that no group code has, and denote none.

#include "GroupCodes.h"

#include <cstddef>

namespace
{

/// The code at index i has the bit 1 << i.
constexpr std::array<const char*, 16> all_codes = {"10", "20", "30", "11", "21", "31", "12", "22",
                                                   "32", "13", "23", "33", "0",  "2",  "5",  "8"};

/// Whether one of eight bytes is a letter, a sign, a point or not ASCII. Nearly every value has one; no group code
/// does. All eight are tested at once, because a loop would make reading a file a tenth slower. Bytes from 64 on have
/// bit 7 or 6, those from 40 to 47 have bits 5 and 3 but not 4, and the shifts move bits 4 and 3 to bit 5.
bool has_letter_or_point(std::uint64_t characters)
{
    constexpr std::uint64_t ones = 0x0101010101010101;
    const std::uint64_t from_64_on = characters & (ones * 0xC0);
    const std::uint64_t from_40_to_47 = characters & (~characters << 1) & (characters << 2) & (ones * 0x20);
    return (from_64_on | from_40_to_47) != 0;
}

} // namespace

Codes GroupCodes::denoted_by(const Line& line)
{
    if (has_letter_or_point(line.head))
        return 0;
    if (line.text.size() > sizeof line.head)
        return test(line.text);
    // The key is the head, which LineReader has already packed; packing the characters here would take 2.8 times as
    // long. Multiplicative hashing: the top 10 bits of the product, for 1024 slots, depend on all characters. The
    // factor is 2^64 / golden ratio.
    Tested& tested = my_tested[line.head * 0x9E3779B97F4A7C15 >> 54];
    if (tested.line != line.head)
        tested = {line.head, test(line.text)};
    return tested.codes;
}

Codes GroupCodes::test(std::string_view line) const
{
    Codes codes = 0;
    if (line.find_first_not_of(code_characters) == std::string_view::npos)
        for (std::size_t i = 0; i < all_codes.size(); ++i)
            if (line.find(all_codes[i]) != std::string_view::npos && my_denotes(std::string(line), all_codes[i]))
                codes |= Codes{1} << i;
    return codes;
}
