// The isometric eye, and what faces, lines and points become on the canvas.

#include "Preview.h"

#include "Canvas.h"
#include "Drawing/DraftEntity.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>

namespace
{

// The axes of the eye in drawing coordinates. As in the viewer, z points away from the eye.
const DRVect3d eye_x = DRVect3d().normalize({1, 0, 1});
const DRVect3d eye_y = DRVect3d().normalize({-1, 2, 1});
const DRVect3d eye_z = DRVect3d().normalize({-1, -1, 1});

// On the canvas, where y points downwards: the front of a box is light, its top less, its side dark.
const DRVect3d light = DRVect3d().normalize({0.32, 0.12, 0.94});

constexpr unsigned char background = 80;    // darker than all that is drawn
constexpr unsigned char darkest_face = 100; // which gets no light
constexpr unsigned char object_color = 245; // of points, lines and the lightest face, as in the viewer

constexpr double margin = 0.12;        // around the drawing, in parts of its reach: two points at its edge are whole
constexpr int smoothing = 4;           // samples for one pixel, along each side
constexpr double stroke = 1.5;         // of lines, and of points at least, in pixels
constexpr double lone_point = 1.0 / 8; // the side of a point that is alone, in parts of the picture
constexpr int faintest_contrast = 8;   // to the background, that can still be seen

double dot(const DRVect3d& a, const DRVect3d& b)
{
    return a.x() * b.x() + a.y() * b.y() + a.z() * b.z();
}

bool is_finite(const DRVect3d& vector)
{
    return std::isfinite(vector.x()) && std::isfinite(vector.y()) && std::isfinite(vector.z());
}

DRVect3d half(const DRVect3d& vector)
{
    return {vector.x() / 2, vector.y() / 2, vector.z() / 2};
}

DRVect3d seen_point(const DraftEntity& entity, unsigned int index)
{
    DRVect3d point;
    entity.get_point(point, index);
    return {dot(eye_x, point), dot(eye_y, point), dot(eye_z, point)};
}

/// Draws entities onto a canvas for a picture of `size` pixels.
class Painter
{
public:
    Painter(const SeenExtents& extents, int size, std::size_t quantity)
        : canvas(size * smoothing, background), my_center(extents.center), my_middle(size * smoothing / 2.0),
          my_scale(my_middle / (1 + margin) / (extents.reach > 0 ? extents.reach : 1)),
          my_point_side(smoothing * std::max(stroke, lone_point * size / std::sqrt(static_cast<double>(quantity))))
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

    Canvas canvas;

private:
    DRVect3d on_canvas(const DRVect3d& point) const
    {
        const DRVect3d from_center = point - my_center;
        return {my_middle + my_scale * from_center.x(), my_middle - my_scale * from_center.y(),
                my_scale * from_center.z()};
    }

    void draw_face(const std::array<DRVect3d, 4>& corners, unsigned char grey)
    {
        canvas.fill_triangle(corners[0], corners[1], corners[2], grey);
        canvas.fill_triangle(corners[0], corners[2], corners[3], grey);
    }

    /// A line with square ends; a square where the line has no length.
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

    DRVect3d my_center;
    double my_middle; // of the canvas, in samples
    double my_scale;  // samples for a drawing unit
    double my_point_side;
};

} // namespace

std::optional<SeenExtents> seen_extents(const std::list<DraftEntity*>& entities)
{
    const double infinity = std::numeric_limits<double>::infinity();
    DRVect3d min(infinity, infinity, infinity);
    DRVect3d max(-infinity, -infinity, -infinity);
    for (const DraftEntity* entity : entities) {
        for (unsigned int i = 0; i < entity->points(); ++i) {
            const DRVect3d point = seen_point(*entity, i);
            // fmin() and fmax() pass over a NaN.
            min = DRVect3d(std::fmin(min.x(), point.x()), std::fmin(min.y(), point.y()), std::fmin(min.z(), point.z()));
            max = DRVect3d(std::fmax(max.x(), point.x()), std::fmax(max.y(), point.y()), std::fmax(max.z(), point.z()));
        }
    }
    // Halved first, since the sum of two large values may overflow.
    min = half(min);
    max = half(max);
    const DRVect3d reach = max - min;
    if (!is_finite(reach))
        return std::nullopt;
    return SeenExtents{min + max, std::max(reach.x(), reach.y())};
}

QImage draw_preview(const std::list<DraftEntity*>& entities, const SeenExtents& extents, int size)
{
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
            row[x] = painter.canvas.mean(x * smoothing, y * smoothing, smoothing);
            shows_anything |= row[x] - background >= faintest_contrast;
        }
    }
    return shows_anything ? picture : QImage();
}
