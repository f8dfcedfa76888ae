// DRVect3d: the three-dimensional vector for points, corners and colours. The callers choose the units.
#pragma once

#include <cmath>

/// A vector of three doubles: for a point, its coordinates; for a colour, red, green and blue from 0 to 1.
/// Every value is accepted, infinities and NaN included.
class DRVect3d
{
public:
    /// The origin.
    DRVect3d() = default;
    DRVect3d(double some_x, double some_y, double some_z) : my_x(some_x), my_y(some_y), my_z(some_z) {}
    DRVect3d(const DRVect3d&) = default;
    ~DRVect3d() = default;

    double x() const { return my_x; }
    double y() const { return my_y; }
    double z() const { return my_z; }

    /// The setters return the stored value.
    double x(double ll_val) { return my_x = ll_val; }
    double y(double ll_val) { return my_y = ll_val; }
    double z(double ll_val) { return my_z = ll_val; }

    /// Assigns and returns a copy of the result, not a reference to the object.
    DRVect3d operator=(DRVect3d some_vect) // NOLINT(misc-unconventional-assign-operator): callers get a value
    {
        my_x = some_vect.my_x;
        my_y = some_vect.my_y;
        my_z = some_vect.my_z;
        return *this;
    }

    DRVect3d operator-(DRVect3d some_vect) const
    {
        return {my_x - some_vect.my_x, my_y - some_vect.my_y, my_z - some_vect.my_z};
    }

    DRVect3d operator+(DRVect3d some_vect) const
    {
        return {my_x + some_vect.my_x, my_y + some_vect.my_y, my_z + some_vect.my_z};
    }

    DRVect3d operator+=(DRVect3d some_vect) { return *this = *this + some_vect; }
    DRVect3d operator-=(DRVect3d some_vect) { return *this = *this - some_vect; }

    /// The cross product, right-handed: x ^ y is z.
    DRVect3d operator^(DRVect3d some_vect) const
    {
        return {my_y * some_vect.my_z - my_z * some_vect.my_y, my_z * some_vect.my_x - my_x * some_vect.my_z,
                my_x * some_vect.my_y - my_y * some_vect.my_x};
    }

    /// Exact, component by component: 0 equals -0, and a NaN equals nothing.
    bool operator==(DRVect3d some_vect) const
    {
        return my_x == some_vect.my_x && my_y == some_vect.my_y && my_z == some_vect.my_z;
    }

    bool operator!=(DRVect3d some_vect) const { return !(*this == some_vect); }

    double length() const { return std::sqrt(my_x * my_x + my_y * my_y + my_z * my_z); }

    /// The unit vector in the direction of `some_vect`; (0, 0, 0) if its length is 0 or not a number.
    /// Ignores the vector that it is called on.
    DRVect3d normalize(DRVect3d some_vect) const
    {
        const double len = some_vect.length();
        if (len > 0)
            return {some_vect.my_x / len, some_vect.my_y / len, some_vect.my_z / len};
        return {};
    }

    /// The unit normal of the plane through three points; it points towards a viewer who sees them run
    /// counter-clockwise. (0, 0, 0) if they are collinear or so close that the cross product's length underflows;
    /// (0, 0, 0) or NaN if it overflows. Ignores the vector that it is called on.
    DRVect3d getNormal(const DRVect3d& vectA, const DRVect3d& vectB, const DRVect3d& vectC) const
    {
        return normalize((vectB - vectA) ^ (vectC - vectA));
    }

protected:
    double my_x = 0.0;
    double my_y = 0.0;
    double my_z = 0.0;
};
