// Reads a file as pairs of group code and value, as other programs do, and compares that with how the viewer reads the
// same lines. The viewer may read a value as a group code: a coordinate of 0 ends the entity, and the line after a
// handle of 31 becomes a coordinate.

#include "Judge.h"

#include "Drawing/DXFL_Processing.h"
#include "Drawing/GroupCodes.h"
#include "Drawing/LineReader.h"
#include "Drawing/Number.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include <sys/stat.h>

namespace
{

std::string_view without_line_end(std::string_view line)
{
    return line.substr(0, line.find_last_not_of("\r\n") + 1);
}

/// Reads the pairs of a file one by one.
class Pairs
{
public:
    explicit Pairs(File file) : my_lines(std::move(file)) {}

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
        return my_lines.next(my_value);
    }

    std::string_view value() const { return without_line_end(my_value.text); }
    double number() const { return to_number(my_value.text); }

    /// The group codes that the viewer sees in the value.
    Codes value_codes() { return my_group_codes.denoted_by(my_value); }

    int code = 0;
    Codes codes = 0; // those that the viewer sees in the code's line

private:
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
    /// Records a line that the viewer reads as the value of `codes` and that is the value of `coordinate`, or of none.
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
    Codes my_value_codes = 0; // group codes that the viewer sees in the last value
    bool my_is_open = true;   // until the viewer closes the entity
};

/// The largest -x, x, -y, y, -z and z.
using Reach = std::array<double, 6>;

/// Reads the ENTITIES section. Returns how far its entities reach, or nothing if one looks wrong or the section has no
/// end.
std::optional<Reach> read_entities(Pairs& pair, const Layers& hidden)
{
    Reach reach;
    reach.fill(-HUGE_VAL);
    Entity entity({}); // of no kind, for the pairs before the first one
    while (pair.next()) {
        const int axis = pair.code / 10 - 1;
        const int corner = pair.code % 10;
        if (pair.code == 0) {
            const Kind* const kind = kind_of(pair.value());
            if (!entity.is_correct() || (kind == nullptr && pair.value() != "ENDSEC"))
                return std::nullopt;
            if (kind == nullptr)
                return reach;
            entity = Entity(*kind);
        } else if (axis >= 0 && axis < 3 && corner < 4) {
            entity.add(pair, Codes{1} << (3 * corner + axis));
            double* const range = &reach[std::size_t{2} * static_cast<std::size_t>(axis)];
            const double value = pair.number();
            range[0] = std::max(range[0], -value);
            range[1] = std::max(range[1], value);
        } else {
            entity.add(pair, 0);
            const bool must_be_0 = pair.code == 60 || pair.code == 67 || pair.code == 39;
            if (must_be_0 && pair.number() != 0) // invisible, in paper space or thick
                return std::nullopt;
            if (pair.code == 8 && !hidden.empty() && hidden.count(folded(pair.value())) != 0)
                return std::nullopt;
        }
    }
    return std::nullopt;
}

/// The viewer scales by 1 / limit about the origin. If the limit is below 1, the near and far planes cut the drawing;
/// above 1e6 the depth buffer is too coarse.
bool fills_the_view(const Reach& reach)
{
    const double limit = *std::max_element(reach.begin(), reach.end());
    const double extent = std::max({reach[0] + reach[1], reach[2] + reach[3], reach[4] + reach[5]});
    return limit <= 0 || (limit >= 1 && limit <= 1e6 && extent >= limit / 2);
}

} // namespace

Look look_of(const char* file_name)
{
    struct stat facts = {};
    if (::stat(file_name, &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_size == 0)
        return Look::Correct;
    File file(std::fopen(file_name, "re"));
    if (!file)
        return Look::Correct;
    Pairs pair(std::move(file));
    Layers hidden;
    std::string entry; // the last value of group code 0
    std::string layer;
    while (pair.next()) {
        if (pair.code == 0)
            entry = pair.value();
        if ((pair.codes & code_2) != 0 && pair.value().find("ENTITIES") != std::string_view::npos) {
            if (entry != "SECTION" || pair.value() != "ENTITIES") // the viewer reads it as the section's name
                return Look::Wrong;
            const std::optional<Reach> reach = read_entities(pair, hidden);
            if (!reach)
                return Look::Wrong;
            return fills_the_view(*reach) ? Look::Correct : Look::Misplaced;
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
