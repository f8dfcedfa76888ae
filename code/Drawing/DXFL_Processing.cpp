// The DXF reader: lines from LineReader, judged one against the one before it, and the extents of the result.

#include "DXFL_Processing.h"

#include "LineReader.h"
#include "Number.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

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

constexpr Codes code_0 = Codes{1} << coordinate_groups.size(); // an entity's or a section's start, and its end
constexpr Codes code_2 = code_0 << 1;                          // a section's name
constexpr Codes code_5 = code_0 << 2;                          // an entity's handle
constexpr Codes code_8 = code_0 << 3;                          // an entity's layer name
constexpr Codes coordinate_codes = code_0 - 1;

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

constexpr std::string_view code_characters = "012358 \r\n\t";

bool contains(std::string_view line, std::string_view word)
{
    return line.find(word) != std::string_view::npos;
}

/// The line without its LF and a CR right before it.
std::string_view text_of(std::string_view line)
{
    line.remove_suffix(1);
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    return line;
}

/// Tells which group codes a line denotes, by a test that it is given. Lines of up to four characters, which nearly
/// all group codes are, are tested once and remembered.
class CodeReader
{
public:
    using Test = bool (*)(std::string presence_str, std::string model_str);

    explicit CodeReader(Test test) : denotes(test)
    {
        std::uint8_t last_symbol = 0;
        for (const char c : code_characters)
            symbols[static_cast<unsigned char>(c)] = ++last_symbol;
    }

    /// `line` ends with LF.
    Codes operator()(std::string_view line)
    {
        for (const char c : line)
            if (symbols[static_cast<unsigned char>(c)] == 0)
                return 0;

        // The line's end has no meaning, and of the blanks that it begins with only one has.
        std::string_view text = text_of(line);
        while (text.size() > 1 && text[0] == ' ' && text[1] == ' ')
            text.remove_prefix(1);
        if (text.size() > longest_known)
            return test_all(line);
        std::size_t key = 0;
        for (const char c : text)
            key = key * key_base + symbols[static_cast<unsigned char>(c)];
        if (known[key] == unknown)
            known[key] = test_all(line);
        return known[key];
    }

private:
    static constexpr std::size_t longest_known = 4;
    static constexpr std::size_t key_base = code_characters.size() + 1; // the code characters, and none
    static constexpr Codes unknown = ~Codes{0};

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
    std::array<std::uint8_t, 256> symbols{}; // a number from 1 for each code character
    std::vector<Codes> known = std::vector<Codes>(key_base * key_base * key_base * key_base, unknown);
};

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); } // NOLINT(cert-err33-c): nothing was written
};

using File = std::unique_ptr<std::FILE, CloseFile>;

/// Opens a regular file, and nothing else: opening a FIFO could wait for ever, and a device may have no end.
File open_regular(const std::string& file_name)
{
    int descriptor = ::open(file_name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0 && errno == EWOULDBLOCK) // another process has a lease on the file, and is asked to give it up
        descriptor = ::open(file_name.c_str(), O_RDONLY | O_CLOEXEC);
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
    else if (!S_ISREG(facts.st_mode) || !read_file(std::move(file_name), drentity_lst))
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
    Codes denoted = 0; // by the line that was read last

    for (std::string_view line; lines.next(line);) {
        const Codes code = denoted;
        denoted = codes_of(line);

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
            cur_drentity->set_str_id(std::string(text_of(line)));
        if ((code & code_8) != 0)
            cur_drentity->set_layer_str_id(std::string(text_of(line)));
        if ((code & coordinate_codes) != 0) {
            const double value = to_number(line);
            for (std::size_t i = 0; i < coordinate_groups.size(); ++i)
                if ((code & 1U << i) != 0)
                    cur_drentity->set_coordinate(value, coordinate_groups[i].coordinate, coordinate_groups[i].point);
            presence_banner |= code & coordinate_codes;
        }
        // A layer name or a handle may read 0 without ending its entity.
        const bool ends = (denoted & code_0) != 0 && (code & (code_8 | code_5)) == 0;
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
