// DraftEntity: one point, line or face of a drawing, as the DXF reader found it.
// Reading it is left to DXFL_Processing, drawing it to GLObject.
#pragma once

#include "BlockMemory.h"
#include "DRVect3d.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// One entity of a drawing: its type, handle, layer and points, whose number depends on the type. Coordinates are model
/// coordinates in drawing units. Point indices count from 0; every indexed operation returns false and changes nothing
/// (its out-arguments included) for an index at or beyond points().
class DraftEntity
{
public:
    /// The DXF entities that are known: POINT with one point, LINE with two, 3DFACE with four.
    enum EntityType : int { Point, Line, Face };

    enum Coordinate : int { X, Y, Z };

    /// All points start at the origin. A type outside the enumeration has no points.
    explicit DraftEntity(EntityType cur_type);
    ~DraftEntity();
    DraftEntity(const DraftEntity&) = delete;
    DraftEntity& operator=(const DraftEntity&) = delete;

    /// From BlockMemory, so that an entity lies beside its points.
    static void* operator new(std::size_t size) { return BlockMemory::take(size); }
    static void operator delete(void* entity) { BlockMemory::release(entity); }

    /// The handle (DXF group code 5), empty until it is set.
    void set_str_id(std::string some_str) { my_str_id = std::move(some_str); }
    std::string get_str_id() const { return my_str_id; }

    /// The layer name (DXF group code 8), empty until it is set.
    void set_layer_str_id(std::string some_str) { my_layer_str_id = std::move(some_str); }
    std::string get_layer_str_id() const { return my_layer_str_id; }

    EntityType get_type() const { return my_type; }
    unsigned int points() const { return static_cast<unsigned int>(my_points.size()); }

    /// A `cur_coord` outside the enumeration changes nothing, but still returns true.
    bool set_coordinate(double cur_val, Coordinate cur_coord, unsigned int cur_point);
    bool get_coordinate(double& cur_val, Coordinate cur_coord, unsigned int cur_point) const;

    bool get_coordinates(double& cur_x, double& cur_y, double& cur_z, unsigned int cur_point) const
    {
        if (cur_point >= points())
            return false;
        const DRVect3d& point = *my_points[cur_point];
        cur_x = point.x();
        cur_y = point.y();
        cur_z = point.z();
        return true;
    }

    bool get_point(DRVect3d& cur_drvect, unsigned int cur_point) const
    {
        if (cur_point >= points())
            return false;
        const DRVect3d& point = *my_points[cur_point];
        cur_drvect.x(point.x());
        cur_drvect.y(point.y());
        cur_drvect.z(point.z());
        return true;
    }

    /// Sets the unit normal of a face from its first three points; (0, 0, 0) if they are collinear. Points and
    /// lines keep (0, 0, 0).
    void compute_normal();
    DRVect3d get_normal() const { return my_normal; }

private:
    EntityType my_type;
    std::string my_str_id;
    std::string my_layer_str_id;
    std::vector<DRVect3d*, BlockAllocator<DRVect3d*>> my_points; // owned, from BlockMemory
    DRVect3d my_normal;
};
