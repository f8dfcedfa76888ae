// The reader's rules in their plainest form, and where the reader departs from them.
#pragma once

#include "Drawing/DXFL_Processing.h"
#include "Drawing/OwnedEntities.h"

#include <algorithm>
#include <array>
#include <locale.h>
#include <sstream>
#include <stdlib.h>
#include <string_view>
#include <vector>

namespace plain
{

struct Entity {
    unsigned int points = 0;
    std::string handle;
    std::string layer;
    std::array<double, 12> coordinates{}; // x, y, z by point; a type may use fewer
    unsigned int seen = 0;                // a bit for each coordinate
};

inline bool has(const std::string& line, const std::string& word)
{
    return line.find(word) != std::string::npos;
}

inline double number(const std::string& line)
{
    static const locale_t c_locale = newlocale(LC_NUMERIC_MASK, "C", nullptr);
    return strtod_l(line.c_str(), nullptr, c_locale);
}

inline bool denotes(const std::string& line, const std::string& code)
{
    if (line.find_first_not_of("012358 \r\t") != std::string::npos)
        return false;
    return has(line, " " + code) || has(line, "\t" + code) || (has(line, code) && number(line) == number(code));
}

/// Feeds a line to an entity. Returns false if it ends the entity.
inline bool fill(Entity& entity, const std::string& previous, const std::string& line)
{
    const std::string text = line.substr(0, line.size() - (!line.empty() && line.back() == '\r' ? 1 : 0));
    if (denotes(previous, "5"))
        entity.handle = text;
    if (denotes(previous, "8"))
        entity.layer = text;
    for (unsigned int i = 0; i < 12; ++i)
        if (denotes(previous, std::to_string(10 * (i % 3 + 1) + i / 3))) {
            entity.coordinates[i] = number(line);
            entity.seen |= 1U << i;
        }
    const bool is_complete = entity.seen == (1U << 3 * entity.points) - 1;
    return !is_complete && (!denotes(line, "0") || denotes(previous, "8") || denotes(previous, "5"));
}

inline std::vector<Entity> read(const std::string& bytes)
{
    std::vector<Entity> entities;
    std::istringstream file(bytes);
    std::string previous;
    bool in_section = false;
    bool is_open = false;
    for (std::string line; std::getline(file, line) && !file.eof(); previous = line) {
        if (!in_section) {
            in_section = has(line, "ENTITIES") && denotes(previous, "2");
            continue;
        }
        const bool follows_0 = denotes(previous, "0");
        if (has(line, "ENDSEC") && follows_0)
            break;
        const bool may_start = !is_open && follows_0;
        for (const auto& [keyword, points] : {std::pair("POINT", 1U), {"LINE", 2U}, {"3DFACE", 4U}})
            if (may_start && has(line, keyword)) {
                entities.emplace_back().points = points;
                is_open = true;
            }
        is_open = is_open && fill(entities.back(), previous, line);
    }
    return entities;
}

inline std::string text_of(const Entity& entity)
{
    std::ostringstream text;
    text.precision(17);
    text << entity.points << " points, handle " << entity.handle << ", layer " << entity.layer << ", at";
    for (unsigned int i = 0; i < 3 * entity.points; ++i)
        text << ' ' << entity.coordinates[i];
    return text.str();
}

/// Describes the first entity, counted from 0, that breaks the rules; empty if none does.
inline std::string fault(const std::string& path, const std::string& bytes)
{
    OwnedEntities entities;
    const DXFL_Processing reader(path, entities.list);
    std::vector<Entity> got;
    for (const DraftEntity* entity : entities.list) {
        got.push_back({entity->points(), entity->get_str_id(), entity->get_layer_str_id()});
        double* at = got.back().coordinates.data();
        for (unsigned int i = 0; i < entity->points(); ++i, at += 3)
            entity->get_coordinates(at[0], at[1], at[2], i);
    }
    std::vector<Entity> wanted = read(bytes);
    const auto size = std::max(got.size(), wanted.size());
    got.resize(size);
    wanted.resize(size);
    for (std::size_t i = 0; i < size; ++i)
        if (text_of(got[i]) != text_of(wanted[i]))
            return "entity " + std::to_string(i) + " is " + text_of(got[i]) + ", wanted " + text_of(wanted[i]);
    return {};
}

} // namespace plain
