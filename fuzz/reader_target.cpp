// libFuzzer target: the reader, the extents and the normals, held against the rules in their plainest form.

#include "memory_file.h"
#include "reference_reader.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "Drawing/DXFL_Processing.h"

namespace
{

using Entities = std::list<DraftEntity*>;

struct DeleteEntities {
    void operator()(Entities* entities) const
    {
        for (const DraftEntity* entity : *entities)
            delete entity;
        delete entities;
    }
};

void require(bool holds, const char* promise)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\n", promise);
    std::abort();
}

bool same(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

void check_entity(const DraftEntity& entity, const ReferenceEntity& wanted)
{
    require(entity.points() == wanted.points, "an entity has its type's points");
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

void check_normal(DraftEntity& entity)
{
    entity.compute_normal();
    const DRVect3d normal = entity.get_normal();
    const double length = normal.length();
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

void check_extents(const DXFL_Processing& reader, Entities& entities)
{
    DRVect3d min_point(1, 2, 3);
    DRVect3d max_point(4, 5, 6);
    double limit = 7;
    const bool has_extents = reader.get_boundary(entities, min_point, max_point, limit);
    require(has_extents == !entities.empty(), "extents of every drawing that is not empty");
    if (!has_extents) {
        require(limit == 7 && min_point == DRVect3d(1, 2, 3), "no extents change nothing");
        return;
    }
    double largest = -1;
    for (const DraftEntity* entity : entities)
        for (unsigned int i = 0; i < entity->points(); ++i) {
            DRVect3d point;
            entity->get_point(point, i);
            const double pairs[3][3] = {{min_point.x(), point.x(), max_point.x()},
                                        {min_point.y(), point.y(), max_point.y()},
                                        {min_point.z(), point.z(), max_point.z()}};
            for (const auto& [smallest, value, greatest] : pairs) {
                if (std::isnan(value))
                    continue;
                require(smallest <= value && value <= greatest, "every point lies within the extents");
                largest = std::max(largest, std::fabs(value));
            }
        }
    require(largest < 0 ? std::isnan(limit) : limit == largest, "the limit is the largest absolute coordinate");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const MemoryFile file(bytes, size);
    const std::unique_ptr<Entities, DeleteEntities> entities(new Entities);
    const DXFL_Processing reader(file.path(), *entities);
    require(reader.get_file_status() == 0, "a regular file is read");

    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    const std::vector<ReferenceEntity> wanted = ReferenceReader::read(text);
    require(entities->size() == wanted.size(), "as many entities as the rules give");
    auto next = wanted.begin();
    for (DraftEntity* entity : *entities) {
        check_entity(*entity, *next++);
        check_normal(*entity);
    }
    check_extents(reader, *entities);
    return 0;
}
