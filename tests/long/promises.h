// What the reader promises of every drawing, its extents and its normals included: held against the rules in their
// plainest form. For the fuzz target and the tests; a promise that is broken ends the process.
#pragma once

#include "reference_reader.h"

#include "Drawing/DXFL_Processing.h"
#include "Drawing/OwnedEntities.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

inline void require(bool holds, const char* promise)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

inline bool same(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

inline void check_entity(DraftEntity& entity, const ReferenceEntity& wanted)
{
    require(entity.points() == wanted.points && entity.points() == 1U << entity.get_type(), "its type's points");
    require(entity.get_str_id() == wanted.handle, "the handle is the line without its end");
    require(entity.get_layer_str_id() == wanted.layer, "the layer is the line without its end");
    bool in_range = true; // else the squares of coordinates leave the range of doubles, and with them the unit
    for (unsigned int i = 0; i < 3 * wanted.points; ++i) {
        double value = 0;
        entity.get_coordinate(value, static_cast<DraftEntity::Coordinate>(i % 3), i / 3);
        require(same(value, wanted.coordinates[i]), "coordinates as the file gives them");
        in_range = in_range && (value == 0 || (std::fabs(value) < 1e70 && std::fabs(value) > 1e-70));
    }
    entity.compute_normal();
    const double length = entity.get_normal().length();
    require(!in_range || length == 0 || std::fabs(length - 1) < 1e-9, "a normal is a unit vector or none");
}

/// What is no number takes no part in the extents. Of several zeros the smallest is the first, the largest the last.
inline void check_extents(const DXFL_Processing& reader, OwnedEntities& entities,
                          const std::vector<ReferenceEntity>& wanted)
{
    DRVect3d least(1, 2, 3);
    DRVect3d most(4, 5, 6);
    double limit = 7;
    require(reader.get_boundary(entities.list, least, most, limit) == !wanted.empty(), "extents of what is not empty");
    if (wanted.empty()) {
        require(limit == 7 && least == DRVect3d(1, 2, 3) && most == DRVect3d(4, 5, 6), "no extents change nothing");
        return;
    }
    std::array<double, 3> smallest{NAN, NAN, NAN};
    std::array<double, 3> greatest = smallest;
    double wanted_limit = NAN;
    for (const ReferenceEntity& entity : wanted)
        for (unsigned int i = 0; i < 3 * entity.points; ++i) {
            const double value = entity.coordinates[i];
            if (std::isnan(value))
                continue;
            if (!(smallest[i % 3] <= value))
                smallest[i % 3] = value;
            if (!(greatest[i % 3] > value))
                greatest[i % 3] = value;
            wanted_limit = std::fmax(wanted_limit, std::fabs(value));
        }
    require(same(least.x(), smallest[0]) && same(least.y(), smallest[1]) && same(least.z(), smallest[2]), "the least");
    require(same(most.x(), greatest[0]) && same(most.y(), greatest[1]) && same(most.z(), greatest[2]), "the most");
    require(same(limit, wanted_limit), "the limit is the largest absolute coordinate");
}

/// Checks what `reader` made of a file's bytes. The process's locale has to be C.
inline void check_drawing(const DXFL_Processing& reader, OwnedEntities& entities, std::string_view bytes)
{
    require(reader.get_file_status() == 0, "a regular file is read");
    const std::vector<ReferenceEntity> wanted = reference::read(bytes);
    require(entities.list.size() == wanted.size(), "as many entities as the rules give");
    auto next = wanted.begin();
    for (DraftEntity* entity : entities.list)
        check_entity(*entity, *next++);
    check_extents(reader, entities, wanted);
}
