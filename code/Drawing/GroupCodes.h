// GroupCodes: the group codes that the reader knows, and which of them a line denotes.
// What the reader does at a code is left to DXFL_Processing.
#pragma once

#include "DraftEntity.h"
#include "LineReader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// A set of group codes, which the DXF reference lists. The coordinate groups have the low bits, so that what a line
/// denotes is also what the current entity has seen; the other codes stand above them.
using Codes = std::uint32_t;

struct CoordinateGroup {
    const char* code;
    DraftEntity::Coordinate coordinate;
    unsigned int point;
};

/// The group at index i has the bit 1 << i.
inline constexpr std::array<CoordinateGroup, 12> coordinate_groups{{
    {"10", DraftEntity::X, 0},
    {"20", DraftEntity::Y, 0},
    {"30", DraftEntity::Z, 0},
    {"11", DraftEntity::X, 1},
    {"21", DraftEntity::Y, 1},
    {"31", DraftEntity::Z, 1},
    {"12", DraftEntity::X, 2},
    {"22", DraftEntity::Y, 2},
    {"32", DraftEntity::Z, 2},
    {"13", DraftEntity::X, 3},
    {"23", DraftEntity::Y, 3},
    {"33", DraftEntity::Z, 3},
}};

inline constexpr Codes code_0 = Codes{1} << coordinate_groups.size(); // an entity's or a section's start, and its end
inline constexpr Codes code_2 = code_0 << 1;                          // a section's name
inline constexpr Codes code_5 = code_0 << 2;                          // an entity's handle
inline constexpr Codes code_8 = code_0 << 3;                          // an entity's layer name
inline constexpr Codes coordinate_codes = code_0 - 1;

/// The only characters of a line that denotes a group code.
inline constexpr std::string_view code_characters = "012358 \r\n\t";

/// Tells which group codes a line denotes, by a test that it is given. Lines of up to eight characters, which nearly
/// all group codes are, are looked up in a table of what has been tested.
class GroupCodes
{
public:
    /// Whether the line `presence_str` denotes the group code `model_str`; never where the one does not contain the
    /// other, or holds anything but code characters.
    using Test = bool (*)(std::string presence_str, std::string model_str);

    explicit GroupCodes(Test denotes) : my_denotes(denotes) {}

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
