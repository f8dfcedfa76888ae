// The DXF reader, which interprets each line together with the one before it, and the extents of the result.

#include "DXFL_Processing.h"

#include "LineReader.h"
#include "Number.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <limits>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace
{

struct EntityStart {
    std::string_view keyword;
    DraftEntity::EntityType type;
    Codes model_banner; // the group codes of a complete entity
};

constexpr std::array<EntityStart, 3> entity_starts{{
    {"POINT", DraftEntity::Point, 0x007},
    {"LINE", DraftEntity::Line, 0x03F},
    {"3DFACE", DraftEntity::Face, 0xFFF},
}};

/// Opens a regular file, or a FIFO or device whose first read returns end of file, such as /dev/null or a FIFO without
/// a writer. Returns null for anything else, because reading it might never end.
File open_file(const std::string& file_name)
{
    struct stat facts = {};
    const bool is_regular = ::stat(file_name.c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
    // Regular files are opened non-blocking, too: some in /proc, such as kmsg, would block.
    int descriptor = ::open(file_name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0 && errno == EWOULDBLOCK && is_regular) // a lease: this waits until its holder releases it
        descriptor = ::open(file_name.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    char character = 0;
    if (is_regular || ::read(descriptor, &character, 1) == 0)
        if (std::FILE* file = ::fdopen(descriptor, "rt"))
            return File(file);
    ::close(descriptor);
    return nullptr;
}

/// Searches by hand: on short lines this is faster than find(), which calls memchr.
bool contains(std::string_view line, std::string_view word)
{
    for (; line.size() >= word.size(); line.remove_prefix(1))
        if (line[0] == word[0] && line.substr(0, word.size()) == word)
            return true;
    return false;
}

/// The line without its LF or CR LF.
std::string text_of(std::string_view line)
{
    line.remove_suffix(1);
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    return std::string(line);
}

/// The entity that is being read, or none.
class OpenEntity
{
public:
    explicit operator bool() const { return my_entity != nullptr; }

    /// Appends an entity for each keyword in `line`, a value of group code 0. The last of them becomes the open one.
    void start(std::string_view line, std::list<DraftEntity*>& drentity_lst)
    {
        for (const EntityStart& start : entity_starts) {
            if (!contains(line, start.keyword))
                continue;
            my_entity = new DraftEntity(start.type);
            drentity_lst.push_back(my_entity);
            my_model_banner = start.model_banner;
            my_presence_banner = 0;
        }
    }

    /// Stores `line` as the value of `previous_codes`, and ends the entity if that completes it. A line that itself
    /// denotes code 0 also ends it, unless it is a handle or a layer name.
    void fill(Codes previous_codes, std::string_view line, Codes line_codes)
    {
        if ((previous_codes & code_5) != 0)
            my_entity->set_str_id(text_of(line));
        if ((previous_codes & code_8) != 0)
            my_entity->set_layer_str_id(text_of(line));
        if ((previous_codes & coordinate_codes) != 0)
            set_coordinates(previous_codes & coordinate_codes, to_number(line));
        if (my_presence_banner == my_model_banner ||
            ((line_codes & code_0) != 0 && (previous_codes & (code_8 | code_5)) == 0))
            my_entity = nullptr;
    }

private:
    void set_coordinates(Codes codes, double value)
    {
        my_presence_banner |= codes;
        for (; codes != 0; codes &= codes - 1) {
            const auto index = static_cast<unsigned int>(__builtin_ctz(codes));
            my_entity->set_coordinate(value, static_cast<DraftEntity::Coordinate>(index % 3), index / 3);
        }
    }

    DraftEntity* my_entity = nullptr;
    Codes my_model_banner = 0;
    Codes my_presence_banner = 0;
};

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
    File a_file = open_file(file_name);
    if (!a_file)
        return false;

    LineReader lines(std::move(a_file));
    GroupCodes codes = group_codes();
    bool is_entity_section = false;
    OpenEntity entity;
    Codes line_codes = 0;

    for (Line line; lines.next(line);) {
        const Codes previous_codes = std::exchange(line_codes, codes.denoted_by(line));
        if (!is_entity_section) {
            is_entity_section = (previous_codes & code_2) != 0 && contains(line.text, "ENTITIES");
            continue;
        }
        if ((previous_codes & code_0) != 0 && contains(line.text, "ENDSEC"))
            break;
        if ((previous_codes & code_0) != 0 && !entity)
            entity.start(line.text, drentity_lst);
        if (entity)
            entity.fill(previous_codes, line.text, line_codes);
    }
    return true;
}

bool DXFL_Processing::get_boundary(std::list<DraftEntity*>& drentity_lst, DRVect3d& min_pnt, DRVect3d& max_pnt,
                                   double& dlimit) const
{
    if (drentity_lst.empty())
        return false;

    // Of equal values (0 and -0), the first becomes the minimum and the last the maximum, as in a stable sort.
    struct Range {
        double min = std::numeric_limits<double>::infinity();
        double max = -std::numeric_limits<double>::infinity();
    };
    const auto widen = [](Range& range, double value) {
        range.min = value < range.min ? value : range.min;
        range.max = value >= range.max ? value : range.max;
    };
    std::array<Range, 3> ranges;
    DRVect3d point;
    for (const DraftEntity* entity : drentity_lst) {
        for (unsigned int i = 0; entity->get_point(point, i); ++i) {
            widen(ranges[0], point.x());
            widen(ranges[1], point.y());
            widen(ranges[2], point.z());
        }
    }

    double limit = -1.0;
    for (Range& range : ranges) {
        if (range.min > range.max)
            range.min = range.max = std::numeric_limits<double>::quiet_NaN();
        else
            limit = std::max({limit, std::fabs(range.min), std::fabs(range.max)});
    }
    min_pnt = {ranges[0].min, ranges[1].min, ranges[2].min};
    max_pnt = {ranges[0].max, ranges[1].max, ranges[2].max};
    dlimit = limit < 0 ? std::numeric_limits<double>::quiet_NaN() : limit;
    return true;
}
