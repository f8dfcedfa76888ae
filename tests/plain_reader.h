// The reader's rules in their plainest form, and where a reader's result differs from them.
#pragma once

#include "Drawing/DXFL_Processing.h"
#include "Drawing/OwnedEntities.h"

#include <array>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace plain
{

/// How many points the type has, and all twelve coordinates, x, y, z by point.
struct Entity {
    unsigned int points = 0;
    std::string handle;
    std::string layer;
    std::array<double, 12> coordinates{};
    std::array<bool, 12> seen{};
};

inline bool has(const std::string& line, const std::string& word)
{
    return line.find(word) != std::string::npos;
}

/// In the process's locale, which has to be C.
inline double number(const std::string& line)
{
    return std::strtod(line.c_str(), nullptr);
}

inline std::string text(const std::string& line)
{
    return line.substr(0, line.size() - (line.size() > 1 && line[line.size() - 2] == '\r' ? 2 : 1));
}

inline bool denotes(const std::string& line, const std::string& code)
{
    if (line.find_first_not_of("012358 \r\n\t") != std::string::npos)
        return false;
    return has(line, " " + code) || has(line, "\t" + code) || (has(line, code) && number(line) == number(code));
}

/// Gives an entity a line, with the line before it. False where that ends the entity.
inline bool fill(Entity& entity, const std::string& previous, const std::string& line)
{
    if (denotes(previous, "5"))
        entity.handle = text(line);
    if (denotes(previous, "8"))
        entity.layer = text(line);
    bool complete = true;
    for (unsigned int i = 0; i < 12; ++i) {
        const bool is_of_type = i < 3 * entity.points;
        if (denotes(previous, std::to_string(10 * (i % 3 + 1) + i / 3))) {
            if (is_of_type)
                entity.coordinates[i] = number(line);
            entity.seen[i] = true;
        }
        complete = complete && entity.seen[i] == is_of_type;
    }
    return !complete && (!denotes(line, "0") || denotes(previous, "8") || denotes(previous, "5"));
}

inline std::vector<Entity> read(std::string_view bytes)
{
    std::vector<Entity> entities;
    std::string previous;
    std::string line;
    bool in_section = false;
    bool is_open = false;
    for (auto end = bytes.find('\n'); end != bytes.npos; end = bytes.find('\n'), previous = line) {
        line = bytes.substr(0, end + 1);
        bytes.remove_prefix(end + 1);
        if (!in_section) {
            in_section = has(line, "ENTITIES") && denotes(previous, "2");
            continue;
        }
        if (has(line, "ENDSEC") && denotes(previous, "0"))
            break;
        const bool may_start = !is_open && denotes(previous, "0");
        for (const auto& [keyword, points] : {std::pair("POINT", 1U), std::pair("LINE", 2U), std::pair("3DFACE", 4U)})
            if (may_start && has(line, keyword)) {
                entities.emplace_back().points = points;
                is_open = true;
            }
        is_open = is_open && fill(entities.back(), previous, line);
    }
    return entities;
}

/// The first entity that was read otherwise than by the rules, such as "entity 3 from 0: y of point 1 is 2,
/// wanted 2.5"; empty where all is right. The process's locale has to be C.
inline std::string fault(const OwnedEntities& entities, std::string_view bytes)
{
    std::ostringstream text;
    text.precision(17);
    std::size_t number = 0;
    const auto check = [&](const auto& got, const auto& wanted, const std::string& what) {
        const bool are_alike = got == wanted || (got != got && wanted != wanted); // a NaN is like any other
        if (!are_alike && text.tellp() <= 0)
            text << "entity " << number << " from 0: " << what << " is " << got << ", wanted " << wanted;
    };
    const std::vector<Entity> wanted = read(bytes);
    for (const DraftEntity* entity : entities.list) {
        const Entity its = number < wanted.size() ? wanted[number] : Entity();
        check(entity->points(), its.points, "number of points");
        check(1U << entity->get_type(), its.points, "number of points by its type");
        check(entity->get_str_id(), its.handle, "handle");
        check(entity->get_layer_str_id(), its.layer, "layer");
        for (unsigned int i = 0; i < 3 * its.points; ++i) {
            double got = 0;
            entity->get_coordinate(got, static_cast<DraftEntity::Coordinate>(i % 3), i / 3);
            check(got, its.coordinates[i], "xyz"[i % 3] + (" of point " + std::to_string(i / 3 + 1)));
        }
        ++number;
    }
    check(number, wanted.size(), "number of entities");
    return text.str();
}

} // namespace plain
