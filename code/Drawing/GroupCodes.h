// GroupCodes: the group codes that the reader knows, and which of them a line denotes.
// DXFL_Processing decides what a code means.
#pragma once

#include "LineReader.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

/// A set of group codes of the DXF reference. The low bits are coordinates, in the order 10, 20, 30, 11, 21, 31 and so
/// on: bit 3 * i + j is coordinate j of point i.
using Codes = std::uint32_t;

inline constexpr Codes coordinate_codes = 0xFFF;
inline constexpr Codes code_0 = 0x1000; // start or end of an entity or a section
inline constexpr Codes code_2 = 0x2000; // a section's name
inline constexpr Codes code_5 = 0x4000; // an entity's handle
inline constexpr Codes code_8 = 0x8000; // an entity's layer name

/// A line that denotes a group code consists only of these characters.
inline constexpr std::string_view code_characters = "012358 \r\n\t";

/// Finds the group codes that a line denotes, with a given test. Caches the results for lines of up to eight bytes;
/// hardly any line with a group code is longer.
class GroupCodes
{
public:
    /// Whether the line `presence_str` denotes the group code `model_str`. Only called if the line contains the code
    /// and consists of code characters.
    using Test = bool (*)(std::string presence_str, std::string model_str);

    explicit GroupCodes(Test denotes) : my_denotes(denotes) {}

    /// The codes that a complete line denotes; none for most lines.
    Codes denoted_by(const Line& line);

private:
    Codes test(std::string_view line) const;

    struct Tested {
        std::uint64_t line = 0;
        Codes codes = 0;
    };

    Test my_denotes;
    std::array<Tested, 1024> my_tested{};
};
