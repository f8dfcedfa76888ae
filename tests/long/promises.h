// What the reader promises of every drawing, its extents and its normals included: held against the rules in their
// plainest form. For the fuzz target and the tests; a promise that is broken ends the process.
#pragma once

#include "reference_reader.h"

#include "Drawing/DXFL_Processing.h"
#include "Drawing/OwnedEntities.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
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

inline void check_entity(const DraftEntity& entity, const ReferenceEntity& wanted)
{
    require(entity.points() == wanted.points && entity.points() == 1U << entity.get_type(), "its type's points");
    require(entity.get_str_id() == wanted.handle, "the handle is the line without its end");
    require(entity.get_layer_str_id() == wanted.layer, "the layer is the line without its end");
    for (std::size_t i = 0; i < wanted.points; ++i) {
        DRVect3d point;
        entity.get_point(point, static_cast<unsigned int>(i));
        require(same(point.x(), wanted.coordinates[3 * i]), "x as the file gives it");
        require(same(point.y(), wanted.coordinates[3 * i + 1]), "y as the file gives it");
        require(same(point.z(), wanted.coordinates[3 * i + 2]), "z as the file gives it");
    }
}

inline void check_normal(DraftEntity& entity)
{
    entity.compute_normal();
    const double length = entity.get_normal().length();
    // Squares of coordinates beyond 1e150 or below 1e-150 leave the range of doubles, and with them the unit.
    bool in_range = true;
    for (unsigned int i = 0; i < entity.points(); ++i) {
        DRVect3d point;
        entity.get_point(point, i);
        for (const double value : {point.x(), point.y(), point.z()})
            in_range = in_range && (value == 0 || (std::fabs(value) < 1e70 && std::fabs(value) > 1e-70));
    }
    if (in_range)
        require(length == 0 || std::fabs(length - 1) < 1e-9, "a normal is a unit vector or none");
}

/// The extents are the ends of the sorted coordinates, to the sign of a zero. What is no number takes no part.
inline void check_extents(const DXFL_Processing& reader, OwnedEntities& entities)
{
    DRVect3d min_point(1, 2, 3);
    DRVect3d max_point(4, 5, 6);
    double limit = 7;
    const bool has_extents = reader.get_boundary(entities.list, min_point, max_point, limit);
    require(has_extents == !entities.list.empty(), "extents of every drawing that is not empty");
    if (!has_extents) {
        require(limit == 7 && min_point == DRVect3d(1, 2, 3), "no extents change nothing");
        return;
    }
    double wanted_limit = NAN;
    const auto check_axis = [&](double smallest, double greatest, DraftEntity::Coordinate axis) {
        std::vector<double> values;
        for (const DraftEntity* entity : entities.list)
            for (unsigned int i = 0; i < entity->points(); ++i) {
                double value = 0;
                entity->get_coordinate(value, axis, i);
                if (!std::isnan(value))
                    values.push_back(value);
            }
        std::stable_sort(values.begin(), values.end());
        require(same(smallest, values.empty() ? NAN : values.front()), "the smallest coordinate of an axis");
        require(same(greatest, values.empty() ? NAN : values.back()), "the largest coordinate of an axis");
        wanted_limit = std::fmax(wanted_limit, std::fmax(std::fabs(smallest), std::fabs(greatest)));
    };
    check_axis(min_point.x(), max_point.x(), DraftEntity::X);
    check_axis(min_point.y(), max_point.y(), DraftEntity::Y);
    check_axis(min_point.z(), max_point.z(), DraftEntity::Z);
    require(same(limit, wanted_limit), "the limit is the largest absolute coordinate");
}

/// Checks what `reader` made of a file's bytes. The process's locale has to be C.
inline void check_drawing(const DXFL_Processing& reader, OwnedEntities& entities, std::string_view bytes)
{
    require(reader.get_file_status() == 0, "a regular file is read");
    const std::vector<ReferenceEntity> wanted = ReferenceReader::read(bytes);
    require(entities.list.size() == wanted.size(), "as many entities as the rules give");
    auto next = wanted.begin();
    for (DraftEntity* entity : entities.list) {
        check_entity(*entity, *next++);
        check_normal(*entity);
    }
    check_extents(reader, entities);
}
