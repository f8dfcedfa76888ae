// The points of an entity: created and released with it, filled by the reader.

#include "DraftEntity.h"

#include "BlockMemory.h"

#include <array>
#include <new>

namespace
{

unsigned int points_of(DraftEntity::EntityType type)
{
    constexpr std::array<unsigned int, 3> points{1, 2, 4};
    const auto index = static_cast<std::size_t>(type);
    return index < points.size() ? points[index] : 0;
}

} // namespace

DraftEntity::DraftEntity(EntityType cur_type) : my_type(cur_type), my_points(points_of(cur_type))
{
    for (DRVect3d*& point : my_points)
        point = new (BlockMemory::take(sizeof *point)) DRVect3d;
}

DraftEntity::~DraftEntity()
{
    for (DRVect3d* point : my_points) {
        point->~DRVect3d();
        BlockMemory::release(point);
    }
}

bool DraftEntity::set_coordinate(double cur_val, Coordinate cur_coord, unsigned int cur_point)
{
    if (cur_point >= points())
        return false;
    DRVect3d& point = *my_points[cur_point];
    switch (cur_coord) {
    case X:
        point.x(cur_val);
        break;
    case Y:
        point.y(cur_val);
        break;
    case Z:
        point.z(cur_val);
        break;
    }
    return true;
}

bool DraftEntity::get_coordinate(double& cur_val, Coordinate cur_coord, unsigned int cur_point) const
{
    if (cur_point >= points())
        return false;
    const DRVect3d& point = *my_points[cur_point];
    switch (cur_coord) {
    case X:
        cur_val = point.x();
        break;
    case Y:
        cur_val = point.y();
        break;
    case Z:
        cur_val = point.z();
        break;
    }
    return true;
}

void DraftEntity::compute_normal()
{
    if (my_type != Face || points() < 3)
        return;
    my_normal = DRVect3d().getNormal(*my_points[0], *my_points[1], *my_points[2]);
}
