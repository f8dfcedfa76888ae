// Triangles become rows of samples, each tested against the depth that is there.

#include "Canvas.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace
{

/// The first and the last sample of a row or column whose centres are between two coordinates.
std::pair<int, int> samples_between(double begin, double end, int side)
{
    return {static_cast<int>(std::ceil(std::clamp<double>(begin, 0, side) - 0.5)),
            static_cast<int>(std::floor(std::clamp<double>(end, 0, side) - 0.5))};
}

} // namespace

Canvas::Canvas(int side, unsigned char background)
    : my_side(side), my_greys(std::size_t{1} * side * side, background),
      my_depths(my_greys.size(), std::numeric_limits<float>::infinity())
{
}

void Canvas::fill_triangle(const DRVect3d& a, const DRVect3d& b, const DRVect3d& c, unsigned char grey)
{
    const DRVect3d normal = (b - a) ^ (c - a);
    if (normal.z() == 0) // the eye sees only its edge
        return;
    const double slope_x = -normal.x() / normal.z();
    const double slope_y = -normal.y() / normal.z();
    const std::pair<const DRVect3d&, const DRVect3d&> edges[] = {{a, b}, {b, c}, {c, a}};

    const auto [top, bottom] = std::minmax({a.y(), b.y(), c.y()});
    const auto [first_row, last_row] = samples_between(top, bottom, my_side);
    for (int row = first_row; row <= last_row; ++row) {
        const double y = row + 0.5;
        double left = my_side;
        double right = 0.0;
        for (const auto& [from, to] : edges) {
            if ((from.y() <= y) == (to.y() <= y))
                continue;
            const double x = from.x() + (y - from.y()) / (to.y() - from.y()) * (to.x() - from.x());
            left = std::min(left, x);
            right = std::max(right, x);
        }

        const auto [first_column, last_column] = samples_between(left, right, my_side);
        const double depth_at_left = a.z() + slope_x * (0.5 - a.x()) + slope_y * (y - a.y());
        for (int column = first_column; column <= last_column; ++column) {
            const auto depth = static_cast<float>(depth_at_left + slope_x * column);
            const int sample = row * my_side + column;
            if (depth < my_depths[sample]) {
                my_depths[sample] = depth;
                my_greys[sample] = grey;
            }
        }
    }
}

unsigned char Canvas::mean(int column, int row, int side) const
{
    int sum = 0;
    for (int y = row; y < row + side; ++y)
        for (int x = column; x < column + side; ++x)
            sum += my_greys[y * my_side + x];
    return static_cast<unsigned char>(sum / (side * side));
}
