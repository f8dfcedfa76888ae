// Reads a file as pairs of group code and value, as other programs do, and compares that with how the viewer reads the
// same lines. The viewer may read a value as a group code: a coordinate 0 ends the entity, and the line after a handle
// 31 becomes a coordinate.

#include "Judge.h"

#include "Drawing/DXFL_Processing.h"
#include "Drawing/GroupCodes.h"
#include "Drawing/LineReader.h"
#include "Drawing/Number.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <future>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include <sys/stat.h>
#include <unistd.h>

namespace
{

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); } // NOLINT(cert-err33-c): nothing was written
};

using File = std::unique_ptr<std::FILE, CloseFile>;

std::string_view without_line_end(std::string_view line)
{
    return line.substr(0, line.find_last_not_of("\r\n") + 1);
}

File open_at(const char* name, off_t at)
{
    File file(std::fopen(name, "re"));
    if (file) {
        (void)std::setvbuf(file.get(), nullptr, _IONBF, 0); // LineReader has its own buffer
        ::fseeko(file.get(), at, SEEK_SET);
    }
    return file;
}

/// Reads the pairs of a file one by one, starting at a byte offset.
class Pairs
{
public:
    Pairs(const char* file, off_t begin) : at(begin), my_file(open_at(file, begin)), my_lines(my_file.get()) {}

    bool is_open() const { return my_file != nullptr; }

    /// Reads the next pair. Returns false at the end of the file, or if the line is not a group code.
    bool next()
    {
        Line line;
        if (!my_lines.next(line))
            return false;
        const char* end = line.text.data();
        while (*end == ' ')
            ++end;
        const char* const digits = end;
        for (code = 0; *end >= '0' && *end <= '9' && code < 10000; ++end)
            code = code * 10 + (*end - '0');
        if (end == digits || (*end != '\n' && *end != '\r'))
            return false;
        codes = my_group_codes.denoted_by(line);
        at += static_cast<off_t>(line.text.size());
        if (!my_lines.next(my_value))
            return false;
        at += static_cast<off_t>(my_value.text.size());
        return true;
    }

    std::string_view value() const { return without_line_end(my_value.text); }
    double number() const { return to_number(my_value.text); }

    /// The group codes that the viewer sees in the value.
    Codes value_codes() { return my_group_codes.denoted_by(my_value); }

    off_t at; // the offset of the next pair
    int code = 0;
    Codes codes = 0; // those that the viewer sees in the code's line

private:
    File my_file;
    LineReader my_lines;
    Line my_value;
    GroupCodes my_group_codes = DXFL_Processing::group_codes();
};

using Layers = std::set<std::string>;

/// A layer's name in lower case, because these names are case-insensitive.
std::string folded(std::string_view name)
{
    std::string text(name);
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

struct Kind {
    std::string_view name;
    Codes coordinates; // the viewer closes the entity once it has read all of these
    Codes required;    // must be given, because the viewer's default of 0 is wrong
};

constexpr std::array<Kind, 3> kinds{{{"POINT", 0x007, 0}, {"LINE", 0x03F, 0}, {"3DFACE", 0xFFF, 0x600}}};

const Kind* kind_of(std::string_view name)
{
    const auto* const found = std::find_if(kinds.begin(), kinds.end(), [&](const Kind& k) { return k.name == name; });
    return found == kinds.end() ? nullptr : found;
}

/// Compares an entity with how the viewer reads it.
class Entity
{
public:
    explicit Entity(const Kind& kind) : my_kind(kind) {}

    /// Adds a pair. `coordinate` is the one that it gives, or 0 if it gives another property.
    void add(Pairs& pair, Codes coordinate)
    {
        my_given |= coordinate;
        if (!my_is_open) {
            my_wrong |= coordinate;
            return;
        }
        my_wrong &= ~coordinate;
        record(pair.codes, coordinate);
        if (!my_is_open)
            return;
        my_value_codes = pair.value_codes();
        if ((my_value_codes & code_0) != 0 && (pair.codes & (code_5 | code_8)) == 0)
            my_is_open = false;
        else
            record(my_value_codes, 0); // the viewer reads the next line as their value
    }

    /// Whether the viewer reads all coordinates correctly, and then closes the entity. Call it after the last pair.
    bool is_correct() const
    {
        // After a value that looks like code 5 or 8, the viewer reads the next group code 0 as a handle or a layer.
        const bool ends = !my_is_open || (my_value_codes & (code_5 | code_8)) == 0;
        return my_wrong == 0 && (~my_given & my_kind.required) == 0 && ends;
    }

private:
    /// Records that the viewer reads a line as the value of `codes`, though it is the value of `coordinate`.
    void record(Codes codes, Codes coordinate)
    {
        my_wrong |= (codes & coordinate_codes) ^ coordinate;
        my_seen |= codes & coordinate_codes;
        my_is_open = my_seen != my_kind.coordinates;
    }

    Kind my_kind;
    Codes my_given = 0;       // coordinates that the file gives
    Codes my_seen = 0;        // coordinates that the viewer has read
    Codes my_wrong = 0;       // coordinates that the viewer has wrong
    Codes my_value_codes = 0; // those that the viewer sees in the last value
    bool my_is_open = true;   // until the viewer closes the entity
};

/// The result for a part of the ENTITIES section.
struct Part {
    bool is_correct = true;
    bool has_end = false; // whether the section ends in it
    // The largest -x, x, -y, y, -z and z.
    std::array<double, 6> reach{-HUGE_VAL, -HUGE_VAL, -HUGE_VAL, -HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
};

/// Reads the entities that begin before the offset `end`. Stops at the end of the section or when one is wrong.
Part read_part(Pairs& pair, off_t end, const Layers& hidden)
{
    Part part;
    Entity entity({}); // of no kind, for the pairs before the first one
    for (off_t begin = pair.at; part.is_correct && pair.next(); begin = pair.at) {
        const int axis = pair.code / 10 - 1;
        const int corner = pair.code % 10;
        if (pair.code == 0) {
            const Kind* const kind = kind_of(pair.value());
            part.has_end = pair.value() == "ENDSEC";
            part.is_correct = entity.is_correct() && (kind != nullptr || part.has_end || begin >= end);
            if (kind == nullptr || begin >= end)
                break;
            entity = Entity(*kind);
        } else if (axis >= 0 && axis < 3 && corner < 4) {
            entity.add(pair, Codes{1} << (3 * corner + axis));
            double* const reach = &part.reach[std::size_t{2} * static_cast<std::size_t>(axis)];
            const double value = pair.number();
            reach[0] = std::max(reach[0], -value);
            reach[1] = std::max(reach[1], value);
        } else {
            entity.add(pair, 0);
            if (pair.code == 60 || pair.code == 67 || pair.code == 39) // invisible, in paper space, thick
                part.is_correct = pair.number() == 0;
            else if (pair.code == 8 && !hidden.empty())
                part.is_correct = hidden.count(folded(pair.value())) == 0;
        }
    }
    return part;
}

/// The offset of the first entity after `at`, or of the end of the file.
off_t entity_after(const char* file_name, off_t at)
{
    const File file = open_at(file_name, at);
    LineReader lines(file.get());
    GroupCodes codes = DXFL_Processing::group_codes();
    off_t zero = -1;
    for (Line line; file && lines.next(line); at += static_cast<off_t>(line.text.size())) {
        if (zero >= 0 && kind_of(without_line_end(line.text)) != nullptr)
            return zero;
        zero = (codes.denoted_by(line) & code_0) != 0 ? at : -1;
    }
    return at;
}

/// Reads the ENTITIES section in two threads, because this delays the opening of every drawing.
Part read_entities(Pairs& pair, const char* file, off_t size, const Layers& hidden)
{
    const off_t middle = entity_after(file, pair.at + (size - pair.at) / 2);
    Pairs second_half(file, middle);
    auto second = std::async(std::launch::async, read_part, std::ref(second_half), size, std::cref(hidden));
    Part part = read_part(pair, middle, hidden);
    if (!part.is_correct || part.has_end)
        return part;
    Part whole = second.get();
    for (std::size_t i = 0; i < part.reach.size(); ++i)
        whole.reach[i] = std::max(whole.reach[i], part.reach[i]);
    return whole;
}

/// The viewer scales by 1 / limit about the origin. If the limit is below 1, the near and far planes cut the drawing;
/// above 1e6 the depth buffer is too coarse.
bool fills_the_view(const std::array<double, 6>& reach)
{
    const double limit = *std::max_element(reach.begin(), reach.end());
    const double extent = std::max({reach[0] + reach[1], reach[2] + reach[3], reach[4] + reach[5]});
    return limit <= 0 || (limit >= 1 && limit <= 1e6 && extent >= limit / 2);
}

} // namespace

Look look_of(const char* file)
{
    struct stat facts = {};
    if (::stat(file, &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_size == 0)
        return Look::Correct;
    Pairs pair(file, 0);
    if (!pair.is_open())
        return Look::Correct;
    Layers hidden;
    std::string entry; // the last value of group code 0
    std::string layer;
    while (pair.next()) {
        if (pair.code == 0)
            entry = pair.value();
        if ((pair.codes & code_2) != 0 && pair.value().find("ENTITIES") != std::string_view::npos) {
            if (entry != "SECTION" || pair.value() != "ENTITIES") // the viewer reads it as the section's name
                return Look::Wrong;
            const Part part = read_entities(pair, file, facts.st_size, hidden);
            if (!part.is_correct || !part.has_end)
                return Look::Wrong;
            return fills_the_view(part.reach) ? Look::Correct : Look::Misplaced;
        }
        if (entry == "LAYER" && pair.code == 2)
            layer = folded(pair.value());
        const bool is_off = pair.code == 62 && pair.number() < 0;
        const bool is_frozen = pair.code == 70 && std::fmod(pair.number(), 2) == 1;
        if (entry == "LAYER" && (is_off || is_frozen))
            hidden.insert(layer);
    }
    return Look::Wrong;
}
