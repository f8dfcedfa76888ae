// A rasteriser with a depth buffer and an isometric view. It fills everything as triangles, row by row.

#include "Preview.h"

#include "Drawing/DraftEntity.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace
{

// The axes of the eye in drawing coordinates. As in the viewer, z points away from the eye.
const DRVect3d eye_x = DRVect3d().normalize({1, 0, 1});
const DRVect3d eye_y = DRVect3d().normalize({-1, 2, 1});
const DRVect3d eye_z = DRVect3d().normalize({-1, -1, 1});

// In picture coordinates, with y downwards. The front of a box is light, its top darker, its side darkest.
const DRVect3d light = DRVect3d().normalize({0.32, 0.12, 0.94});

constexpr unsigned char background = 80;    // darker than anything drawn
constexpr unsigned char darkest_face = 100; // parallel to the light
constexpr unsigned char object_color = 245; // of points, lines and the lightest face, as in the viewer

constexpr double margin = 0.12;        // as a fraction of the drawing's reach; points at its edge are drawn whole
constexpr int smoothing = 4;           // samples along each side of a pixel
constexpr double stroke = 1.5;         // width of lines and smallest width of points, in pixels
constexpr double lone_point = 1.0 / 8; // its side, as a fraction of the picture's
constexpr int faintest_contrast = 8;   // the smallest difference from the background that can be seen

double dot(const DRVect3d& a, const DRVect3d& b)
{
    return a.x() * b.x() + a.y() * b.y() + a.z() * b.z();
}

bool is_finite(const DRVect3d& vector)
{
    return std::isfinite(vector.x()) && std::isfinite(vector.y()) && std::isfinite(vector.z());
}

DRVect3d seen_point(const DraftEntity& entity, unsigned int index)
{
    DRVect3d point;
    entity.get_point(point, index);
    return {dot(eye_x, point), dot(eye_y, point), dot(eye_z, point)};
}

/// The first and last of the samples in a row or column whose centres lie between two coordinates.
std::pair<int, int> samples_between(double begin, double end, int side)
{
    return {static_cast<int>(std::ceil(std::clamp<double>(begin, 0, side) - 0.5)),
            static_cast<int>(std::floor(std::clamp<double>(end, 0, side) - 0.5))};
}

/// The extents of a drawing in eye coordinates (x to the right, y upwards, z away), in drawing units.
struct SeenExtents {
    DRVect3d center;
    double reach; // half the width or half the height, whichever is larger; 0 for a single point
};

/// Draws entities as samples with depth, for a picture of `size` pixels. Coordinates are in samples: x from the left, y
/// from the top, z away from the eye. The first sample's centre is (0.5, 0.5). The nearest surface is seen; at equal
/// depth, the one drawn first.
class Painter
{
public:
    Painter(const SeenExtents& extents, int size, std::size_t count)
        : my_side(size * smoothing), my_greys(std::size_t{1} * my_side * my_side, background),
          my_depths(my_greys.size(), std::numeric_limits<float>::infinity()), my_center(extents.center),
          my_middle(my_side / 2.0), my_scale(my_middle / (1 + margin) / (extents.reach > 0 ? extents.reach : 1)),
          my_point_side(smoothing * std::max(stroke, lone_point * size / std::sqrt(static_cast<double>(count))))
    {
    }

    void draw(const DraftEntity& entity)
    {
        std::array<DRVect3d, 4> corners;
        for (unsigned int i = 0; i < entity.points(); ++i) {
            corners[i] = on_canvas(seen_point(entity, i));
            if (!is_finite(corners[i]))
                return;
        }
        switch (entity.get_type()) {
        case DraftEntity::Point:
            draw_band(corners[0], corners[0], my_point_side);
            break;
        case DraftEntity::Line:
            draw_band(corners[0], corners[1], smoothing * stroke);
            break;
        case DraftEntity::Face: {
            const DRVect3d normal = DRVect3d().getNormal(corners[0], corners[1], corners[2]);
            const double lit = darkest_face + (object_color - darkest_face) * std::fabs(dot(normal, light));
            draw_face(corners, static_cast<unsigned char>(lit));
            break;
        }
        }
    }

    /// The mean shade of the samples of a pixel.
    unsigned char shade(int x, int y) const
    {
        int sum = 0;
        for (int sample = 0; sample < smoothing * smoothing; ++sample)
            sum += my_greys[(y * smoothing + sample / smoothing) * my_side + x * smoothing + sample % smoothing];
        return static_cast<unsigned char>(sum / (smoothing * smoothing));
    }

private:
    DRVect3d on_canvas(const DRVect3d& point) const
    {
        const DRVect3d from_center = point - my_center;
        return {my_middle + my_scale * from_center.x(), my_middle - my_scale * from_center.y(),
                my_scale * from_center.z()};
    }

    void draw_face(const std::array<DRVect3d, 4>& corners, unsigned char grey)
    {
        fill_triangle(corners[0], corners[1], corners[2], grey);
        fill_triangle(corners[0], corners[2], corners[3], grey);
    }

    /// A line with square ends; a square if the line has no length.
    void draw_band(const DRVect3d& from, const DRVect3d& to, double width)
    {
        const double x = to.x() - from.x();
        const double y = to.y() - from.y();
        const double length = std::hypot(x, y);
        const DRVect3d along =
            length > 0 ? DRVect3d(x / length * width / 2, y / length * width / 2, 0) : DRVect3d(width / 2, 0, 0);
        const DRVect3d across(-along.y(), along.x(), 0);
        draw_face({from - along - across, from - along + across, to + along + across, to + along - across},
                  object_color);
    }

    void fill_triangle(const DRVect3d& a, const DRVect3d& b, const DRVect3d& c, unsigned char grey)
    {
        const DRVect3d normal = (b - a) ^ (c - a);
        if (normal.z() == 0) // it is seen edge-on
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

    int my_side; // of the square canvas, in samples
    std::vector<unsigned char> my_greys;
    std::vector<float> my_depths;
    DRVect3d my_center;
    double my_middle; // of the canvas, in samples
    double my_scale;  // samples per drawing unit
    double my_point_side;
};

SeenExtents seen_extents(const std::list<DraftEntity*>& entities)
{
    const double infinity = std::numeric_limits<double>::infinity();
    DRVect3d min(infinity, infinity, infinity);
    DRVect3d max(-infinity, -infinity, -infinity);
    for (const DraftEntity* entity : entities) {
        for (unsigned int i = 0; i < entity->points(); ++i) {
            const DRVect3d point = seen_point(*entity, i);
            // fmin() and fmax() ignore a NaN.
            min = DRVect3d(std::fmin(min.x(), point.x()), std::fmin(min.y(), point.y()), std::fmin(min.z(), point.z()));
            max = DRVect3d(std::fmax(max.x(), point.x()), std::fmax(max.y(), point.y()), std::fmax(max.z(), point.z()));
        }
    }
    // Halved first, since the sum of two large values may overflow.
    for (DRVect3d* corner : {&min, &max})
        *corner = DRVect3d(corner->x() / 2, corner->y() / 2, corner->z() / 2);
    const DRVect3d reach = max - min;
    return {min + max, std::max(reach.x(), reach.y())};
}

} // namespace

QImage draw_preview(const std::list<DraftEntity*>& entities, int size)
{
    const SeenExtents extents = seen_extents(entities);
    if (!is_finite(extents.center) || !std::isfinite(extents.reach))
        return {};
    Painter painter(extents, size, entities.size());
    for (const DraftEntity* entity : entities)
        painter.draw(*entity);

    QImage picture(size, size, QImage::Format_Grayscale8);
    if (picture.isNull())
        throw std::bad_alloc();
    bool shows_anything = false;
    for (int y = 0; y < size; ++y) {
        unsigned char* const row = picture.scanLine(y);
        for (int x = 0; x < size; ++x) {
            row[x] = painter.shade(x, y);
            shows_anything |= row[x] - background >= faintest_contrast;
        }
    }
    return shows_anything ? picture : QImage();
}
