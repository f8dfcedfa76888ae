// The DXF reader: lines from LineReader, judged one against the one before it, and the extents of the result.

#include "DXFL_Processing.h"

#include "LineReader.h"
#include "Number.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// A set of group codes. The coordinate groups have the low bits, so that what a line denotes is also what the
/// current entity has seen; the other codes stand above them.
using Codes = std::uint32_t;

struct CoordinateGroup {
    const char* code;
    DraftEntity::Coordinate coordinate;
    unsigned int point;
};

/// The group at index i has the bit 1 << i.
constexpr std::array<CoordinateGroup, 12> coordinate_groups{{
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

constexpr Codes coordinate_codes = 0xFFF;
constexpr Codes code_0 = 0x1000; // an entity's or a section's start, and its end
constexpr Codes code_2 = 0x2000; // a section's name
constexpr Codes code_5 = 0x4000; // an entity's handle
constexpr Codes code_8 = 0x8000; // an entity's layer name

struct NamedCode {
    const char* code;
    Codes bit;
};

constexpr std::array<NamedCode, 4> named_codes{{{"0", code_0}, {"2", code_2}, {"5", code_5}, {"8", code_8}}};

struct EntityStart {
    std::string_view keyword;
    DraftEntity::EntityType type;
    Codes model_banner; // the groups that complete the entity
};

constexpr std::array<EntityStart, 3> entity_starts{{
    {"POINT", DraftEntity::Point, 0x007},
    {"LINE", DraftEntity::Line, 0x03F},
    {"3DFACE", DraftEntity::Face, 0xFFF},
}};

constexpr const char* code_characters = "012358 \r\n\t";

bool contains(std::string_view line, std::string_view word)
{
    return line.find(word) != std::string_view::npos;
}

/// The line without its LF and a CR right before it.
std::string text_of(std::string_view line)
{
    line.remove_suffix(1);
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    return std::string(line);
}

/// Tells which group codes a line denotes, by a test that it is given. The few short lines that make up most of a
/// file's group codes are tested once and remembered.
template <typename Test> class CodeReader
{
public:
    explicit CodeReader(Test test) : denotes(test)
    {
        for (const char* c = code_characters; *c != '\0'; ++c)
            in_a_code[static_cast<unsigned char>(*c)] = true;
    }

    /// `line` ends with LF.
    Codes operator()(std::string_view line)
    {
        for (const char c : line)
            if (!in_a_code[static_cast<unsigned char>(c)])
                return 0;

        std::uint64_t key = 0;
        if (line.size() > sizeof key)
            return test_all(line);
        for (const char c : line)
            key = key << 8 | static_cast<unsigned char>(c);
        Known& known = cache[key * 0x9E3779B97F4A7C15U >> 56]; // Fibonacci hashing, the top eight bits
        if (known.key != key)
            known = {key, test_all(line)};
        return known.codes;
    }

private:
    struct Known {
        std::uint64_t key = 0; // no line has this one, for a line holds at least its LF
        Codes codes = 0;
    };

    Codes test_all(std::string_view line) const
    {
        const std::string text(line);
        Codes codes = 0;
        for (std::size_t i = 0; i < coordinate_groups.size(); ++i)
            if (denotes(text, coordinate_groups[i].code))
                codes |= 1U << i;
        for (const NamedCode& named : named_codes)
            if (denotes(text, named.code))
                codes |= named.bit;
        return codes;
    }

    Test denotes;
    std::array<bool, 256> in_a_code{};
    std::array<Known, 256> cache{};
};

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); } // NOLINT(cert-err33-c): nothing was written
};

using File = std::unique_ptr<std::FILE, CloseFile>;

/// Opens a regular file, and nothing else: opening a FIFO could wait for ever, and a device may have no end.
File open_regular(const std::string& file_name)
{
    const int descriptor = ::open(file_name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    struct stat facts = {};
    if (descriptor >= 0 && ::fstat(descriptor, &facts) == 0 && S_ISREG(facts.st_mode))
        if (std::FILE* file = ::fdopen(descriptor, "rt"))
            return File(file);
    if (descriptor >= 0)
        ::close(descriptor);
    return nullptr;
}

} // namespace

DXFL_Processing::DXFL_Processing(std::string file_name, std::list<DraftEntity*>& drentity_lst)
{
    struct stat facts = {};
    if (::stat(file_name.c_str(), &facts) != 0)
        file_status = -1;
    else if ((facts.st_mode & S_IFDIR) != 0)
        file_status = 1;
    else if (!read_file(std::move(file_name), drentity_lst))
        file_status = 2;
}

bool DXFL_Processing::is_tag_string(std::string presence_str, std::string model_str)
{
    if (presence_str.find_first_not_of(code_characters) != std::string::npos)
        return false;
    if (contains(presence_str, ' ' + model_str) || contains(presence_str, '\t' + model_str))
        return true;
    return contains(presence_str, model_str) && to_number(presence_str) == to_number(model_str);
}

bool DXFL_Processing::read_file(std::string file_name, std::list<DraftEntity*>& drentity_lst)
{
    const File a_file = open_regular(file_name);
    if (!a_file)
        return false;

    LineReader lines(a_file.get());
    CodeReader codes_of(&DXFL_Processing::is_tag_string);
    bool is_entity_section = false;
    DraftEntity* cur_drentity = nullptr;
    Codes model_banner = 0;
    Codes presence_banner = 0;
    Codes previous = 0; // what the line before the current one denotes

    for (std::string_view line; lines.next(line);) {
        const Codes code = previous;
        previous = codes_of(line);

        if (!is_entity_section) {
            is_entity_section = (code & code_2) != 0 && contains(line, "ENTITIES");
            continue;
        }

        if ((code & code_0) != 0) {
            if (contains(line, "ENDSEC"))
                break;
            if (cur_drentity == nullptr) {
                for (const EntityStart& start : entity_starts) {
                    if (!contains(line, start.keyword))
                        continue;
                    cur_drentity = new DraftEntity(start.type);
                    drentity_lst.push_back(cur_drentity);
                    model_banner = start.model_banner;
                    presence_banner = 0;
                }
            }
        }

        if (cur_drentity == nullptr)
            continue;
        if ((code & code_5) != 0)
            cur_drentity->set_str_id(text_of(line));
        if ((code & code_8) != 0)
            cur_drentity->set_layer_str_id(text_of(line));
        if ((code & coordinate_codes) != 0) {
            const double value = to_number(line);
            for (std::size_t i = 0; i < coordinate_groups.size(); ++i)
                if ((code & 1U << i) != 0)
                    cur_drentity->set_coordinate(value, coordinate_groups[i].coordinate, coordinate_groups[i].point);
            presence_banner |= code & coordinate_codes;
        }
        // A layer name or a handle may read 0 without ending its entity.
        const bool ends = (previous & code_0) != 0 && (code & (code_8 | code_5)) == 0;
        if (presence_banner == model_banner || ends)
            cur_drentity = nullptr;
    }
    return true;
}

bool DXFL_Processing::get_boundary(std::list<DraftEntity*>& drentity_lst, DRVect3d& min_pnt, DRVect3d& max_pnt,
                                   double& dlimit) const
{
    if (drentity_lst.empty())
        return false;

    // Of equal values, 0 and -0, the first is the smallest and the last the largest, as in a stable sort.
    struct Range {
        double min = std::numeric_limits<double>::infinity();
        double max = -std::numeric_limits<double>::infinity();

        void add(double value)
        {
            if (value < min)
                min = value;
            if (value >= max)
                max = value;
        }
    };
    Range x_range;
    Range y_range;
    Range z_range;

    for (const DraftEntity* entity : drentity_lst) {
        const unsigned int quantity = entity->points();
        for (unsigned int i = 0; i < quantity; ++i) {
            double x = 0.0;
            double y = 0.0;
            double z = 0.0;
            entity->get_coordinates(x, y, z, i);
            x_range.add(x);
            y_range.add(y);
            z_range.add(z);
        }
    }

    double limit = -1.0;
    for (Range* range : {&x_range, &y_range, &z_range}) {
        if (range->min > range->max)
            range->min = range->max = std::numeric_limits<double>::quiet_NaN();
        else
            limit = std::max({limit, std::fabs(range->min), std::fabs(range->max)});
    }
    min_pnt.x(x_range.min);
    min_pnt.y(y_range.min);
    min_pnt.z(z_range.min);
    max_pnt.x(x_range.max);
    max_pnt.y(y_range.max);
    max_pnt.z(z_range.max);
    dlimit = limit < 0 ? std::numeric_limits<double>::quiet_NaN() : limit;
    return true;
}
