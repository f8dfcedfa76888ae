// Reads strict pairs of group code and value, as other programs do, beside what the viewer makes of the same lines: it
// takes a value for a group code, too, so that a bare 0 ends an entity and a handle 31 announces a coordinate.

#include "Judge.h"

#include "Drawing/DXFL_Processing.h"
#include "Drawing/GroupCodes.h"
#include "Drawing/Number.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <future>
#include <set>
#include <string>
#include <string_view>

#include <endian.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

std::string_view without_line_end(std::string_view line)
{
    return line.substr(0, line.find_last_not_of("\r\n") + 1);
}

/// The pairs of a text, one after the other.
class Pairs
{
public:
    explicit Pairs(std::string_view text) : my_at(text.data()), my_end(text.data() + text.rfind('\n') + 1) {}

    /// False at the end of the text, or at a line that is no group code.
    bool next()
    {
        if (my_at == my_end)
            return false;
        const char* at = my_at;
        while (*at == ' ')
            ++at;
        const char* const digits = at;
        for (code = 0; *at >= '0' && *at <= '9' && code < 10000; ++at)
            code = code * 10 + (*at - '0');
        if (at == digits)
            return false;
        at += *at == '\r' ? 1 : 0;
        if (*at++ != '\n' || at == my_end)
            return false;
        codes = denoted_by({my_at, static_cast<std::size_t>(at - my_at)});
        const char* const value = at;
        while (*at++ != '\n')
            ;
        line = {value, static_cast<std::size_t>(at - value)};
        my_at = at;
        return true;
    }

    std::string_view value() const { return without_line_end(line); }

    /// What the value denotes to the viewer.
    Codes value_codes() { return denoted_by(line); }

    /// Where the next pair begins.
    const char* at() const { return my_at; }

    int code = 0;
    Codes codes = 0;       // what the code's line denotes to the viewer
    std::string_view line; // of the value, with its LF

private:
    Codes denoted_by(std::string_view text)
    {
        Line denoting{text};
        const std::size_t size = std::min(text.size(), sizeof denoting.head);
        if (text.data() + sizeof denoting.head <= my_end) { // copying a fixed size is much faster
            std::memcpy(&denoting.head, text.data(), sizeof denoting.head);
            denoting.head = le64toh(denoting.head) & ~std::uint64_t{0} >> (8 * (sizeof denoting.head - size));
        } else {
            std::memcpy(&denoting.head, text.data(), size);
            denoting.head = le64toh(denoting.head);
        }
        return my_group_codes.denoted_by(denoting);
    }

    const char* my_at;
    const char* my_end;
    GroupCodes my_group_codes = DXFL_Processing::group_codes();
};

using Layers = std::set<std::string>;

/// A layer's name as it is compared.
std::string folded(std::string_view name)
{
    std::string text(name);
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

struct Kind {
    std::string_view name;
    Codes coordinates; // when the viewer has seen these, it closes the entity
    Codes required;    // those whose default is not 0
};

constexpr std::array<Kind, 3> kinds{{{"POINT", 0x007, 0}, {"LINE", 0x03F, 0}, {"3DFACE", 0xFFF, 0x600}}};

const Kind* kind_of(std::string_view name)
{
    const auto* const found = std::find_if(kinds.begin(), kinds.end(), [&](const Kind& k) { return k.name == name; });
    return found == kinds.end() ? nullptr : found;
}

/// An entity of the file beside what the viewer makes of it.
class Entity
{
public:
    /// For no kind nothing is taken.
    explicit Entity(const Kind* kind) : my_kind(kind), my_is_open(kind != nullptr) {}

    /// Takes a pair, whose code stands for `coordinate` or, where that is 0, for a property.
    void take(Pairs& pair, Codes coordinate)
    {
        if (pair.code == 8)
            my_layer = pair.value();
        else if (pair.code == 60 || pair.code == 67 || pair.code == 39) // invisible, in paper space, thick
            my_is_plain &= to_number(pair.line) == 0;
        my_given |= coordinate;
        if (!my_is_open) {
            my_wrong |= coordinate;
            return;
        }
        my_wrong &= ~coordinate;
        see(pair.codes, coordinate);
        if (!my_is_open)
            return;
        my_mistaken = pair.value_codes();
        if ((my_mistaken & code_0) != 0 && (pair.codes & (code_5 | code_8)) == 0)
            my_is_open = false;
        else
            see(my_mistaken, 0); // for the line behind it is its value to the viewer
    }

    /// Whether the viewer shows it as it is meant, when all its pairs have been taken.
    bool is_as_meant(const Layers& hidden) const
    {
        // An open entity does not end where its last value makes the next group code 0 a handle or a layer.
        const bool ends = !my_is_open || (my_mistaken & (code_5 | code_8)) == 0;
        return my_kind == nullptr || (my_wrong == 0 && (~my_given & my_kind->required) == 0 && my_is_plain && ends &&
                                      (hidden.empty() || hidden.count(folded(my_layer)) == 0));
    }

private:
    /// The viewer takes a line for the value of what `codes` denote, where it is that of `coordinate`.
    void see(Codes codes, Codes coordinate)
    {
        my_wrong |= (codes & coordinate_codes) ^ coordinate;
        my_seen |= codes & coordinate_codes;
        my_is_open = my_seen != my_kind->coordinates;
    }

    const Kind* my_kind;
    std::string_view my_layer = "0";
    Codes my_given = 0;    // coordinates that the file gives
    Codes my_seen = 0;     // those that the viewer has seen
    Codes my_wrong = 0;    // those of which it has another value
    Codes my_mistaken = 0; // what the last value denotes
    bool my_is_open;       // to the viewer
    bool my_is_plain = true;
};

/// A part of the ENTITIES section.
struct Part {
    bool is_as_meant = true;
    bool has_end = false; // of the section
    // The largest -x, x, -y, y, -z and z. Of a large drawing some entities tell that.
    std::array<double, 6> reach{-HUGE_VAL, -HUGE_VAL, -HUGE_VAL, -HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
};

/// Reads the entities that begin before `end`, and before the section's end.
Part read_part(std::string_view text, const char* end, const Layers& hidden)
{
    Part part;
    Pairs pair(text);
    Entity entity(nullptr);
    std::size_t count = 0;
    for (const char* begin = pair.at(); pair.next(); begin = pair.at()) {
        const int axis = pair.code / 10 - 1;
        const int corner = pair.code % 10;
        if (pair.code == 0) {
            part.is_as_meant = entity.is_as_meant(hidden);
            part.has_end = pair.value() == "ENDSEC";
            if (!part.is_as_meant || part.has_end || begin >= end)
                break;
            const Kind* const kind = kind_of(pair.value());
            part.is_as_meant = kind != nullptr;
            if (!part.is_as_meant)
                break;
            entity = Entity(kind);
            ++count;
        } else if (axis >= 0 && axis < 3 && corner < 4) {
            entity.take(pair, Codes{1} << (3 * corner + axis));
            if (count < 1000 || count % 16 == 0) {
                const double value = to_number(pair.line);
                double* const reach = &part.reach[std::size_t{2} * static_cast<std::size_t>(axis)];
                reach[0] = std::max(reach[0], -value);
                reach[1] = std::max(reach[1], value);
            }
        } else {
            entity.take(pair, 0);
        }
    }
    return part;
}

/// Where an entity begins near the middle of a section, or else the section's end.
const char* middle_of(std::string_view text)
{
    const std::string_view rest = text.substr(text.size() / 2, 100000);
    std::size_t name = rest.size();
    for (const Kind& kind : kinds)
        name = std::min(name, rest.find('\n' + std::string(kind.name)));
    const std::size_t begin = rest.rfind('\n', name - 1) + 1;
    Pairs pair(rest.substr(begin));
    return name < rest.size() && pair.next() && pair.code == 0 ? &rest[begin] : text.data() + text.size();
}

/// Reads the ENTITIES section in two threads, for all drawings have to wait for it.
Part read_entities(std::string_view text, const Layers& hidden)
{
    const char* const middle = middle_of(text);
    const std::string_view behind = text.substr(static_cast<std::size_t>(middle - text.data()));
    auto second = std::async(std::launch::async, read_part, behind, behind.data() + behind.size(), std::cref(hidden));
    Part part = read_part(text, middle, hidden);
    if (!part.is_as_meant || part.has_end)
        return part;
    Part whole = second.get();
    for (std::size_t i = 0; i < part.reach.size(); ++i)
        whole.reach[i] = std::max(whole.reach[i], part.reach[i]);
    return whole;
}

/// The viewer scales by 1 / limit about the origin. Below 1 its near and far planes cut the drawing, above 1e6 its
/// depth buffer is too coarse.
bool fills_the_view(const std::array<double, 6>& reach)
{
    const double limit = *std::max_element(reach.begin(), reach.end());
    const double extent = std::max(reach[0] + reach[1], reach[2] + reach[3]);
    return limit <= 0 || (limit >= 1 && limit <= 1e6 && extent >= limit / 2);
}

Look look_of(std::string_view text)
{
    Pairs pair(text);
    Layers hidden;
    std::string_view entry; // the last value of group code 0
    std::string layer;
    while (pair.next()) {
        if (pair.code == 0)
            entry = pair.value();
        if ((pair.codes & code_2) != 0 && pair.line.find("ENTITIES") != std::string_view::npos) {
            if (entry != "SECTION" || pair.value() != "ENTITIES") // the viewer takes it for the section's name
                return Look::Wrong;
            const Part part = read_entities(text.substr(static_cast<std::size_t>(pair.at() - text.data())), hidden);
            if (!part.is_as_meant || !part.has_end)
                return Look::Wrong;
            return fills_the_view(part.reach) ? Look::AsMeant : Look::Misplaced;
        }
        if (entry == "LAYER" && pair.code == 2)
            layer = folded(pair.value());
        const bool is_off = pair.code == 62 && to_number(pair.line) < 0;
        const bool is_frozen = pair.code == 70 && std::fmod(to_number(pair.line), 2) == 1;
        if (entry == "LAYER" && (is_off || is_frozen))
            hidden.insert(layer);
    }
    return Look::Wrong;
}

} // namespace

Look look_of(const char* file)
{
    struct stat facts = {};
    const int descriptor =
        ::stat(file, &facts) == 0 && S_ISREG(facts.st_mode) ? ::open(file, O_RDONLY | O_CLOEXEC) : -1;
    if (descriptor < 0)
        return Look::AsMeant;
    const auto size = static_cast<std::size_t>(facts.st_size);
    void* const bytes = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    ::close(descriptor);
    if (bytes == MAP_FAILED) // it is empty
        return Look::AsMeant;
    const Look look = look_of({static_cast<const char*>(bytes), size});
    ::munmap(bytes, size);
    return look;
}
