// What a line denotes: nothing at its first character that no group code has, else what the table or the test says.

#include "GroupCodes.h"

namespace
{

struct NamedCode {
    const char* code;
    Codes bit;
};

constexpr std::array<NamedCode, 4> named_codes{{{"0", code_0}, {"2", code_2}, {"5", code_5}, {"8", code_8}}};

/// Whether a letter, a sign or a point, as nearly all values have, is among eight characters.
bool has_letter_or_point(std::uint64_t characters)
{
    constexpr std::uint64_t ones = 0x0101010101010101;
    const std::uint64_t from_64_on = characters & ones * 0xC0;
    const std::uint64_t from_40_to_47 = characters & ~characters << 1 & characters << 2 & ones * 0x20;
    return (from_64_on | from_40_to_47) != 0;
}

} // namespace

Codes GroupCodes::denoted_by(const Line& line)
{
    if (has_letter_or_point(line.head))
        return 0;
    if (line.text.size() > sizeof line.head)
        return test(line.text);
    // The high bits of the product depend on all characters; the factor is the golden ratio's.
    Tested& tested = my_tested[line.head * 0x9E3779B97F4A7C15 >> 54];
    if (tested.line != line.head)
        tested = {line.head, test(line.text)};
    return tested.codes;
}

Codes GroupCodes::test(std::string_view line) const
{
    if (line.find_first_not_of(code_characters) != std::string_view::npos)
        return 0;
    const auto denotes = [&](const char* code) {
        return line.find(code) != std::string_view::npos && my_denotes(std::string(line), code);
    };
    Codes codes = 0;
    for (std::size_t i = 0; i < coordinate_groups.size(); ++i)
        if (denotes(coordinate_groups[i].code))
            codes |= 1U << i;
    for (const NamedCode& named : named_codes)
        if (denotes(named.code))
            codes |= named.bit;
    return codes;
}
