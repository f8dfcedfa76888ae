// The isometric eye, and the drawing pass through the viewer's objects and lights.

#include "Preview.h"

#include <GL/gl.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "Drawing/DXFL_Processing.h"
#include "GL/GLObject.h"
#include "GL/Lighting.h"
#include "OffscreenContext.h"

namespace
{

/// The axes of the eye in model coordinates, each of length `length`; as in the view, the eye's z axis points away.
struct EyeAxis {
    double x, y, z, length;
};

const std::array<EyeAxis, 3> eye_axes{{
    {1, 0, 1, std::sqrt(2.0)},
    {-1, 2, 1, std::sqrt(6.0)},
    {-1, -1, 1, std::sqrt(3.0)},
}};

constexpr double margin = 0.04; // around the drawing, in eye units
constexpr int smoothing = 4;    // pixels drawn for one of the picture, along each side
constexpr double stroke = 1.5;  // of points and lines, in pixels of the picture

template <typename Change> void change_points(std::list<DraftEntity*>& entities, Change change)
{
    for (DraftEntity* entity : entities) {
        for (unsigned int i = 0; i < entity->points(); ++i) {
            DRVect3d point;
            entity->get_point(point, i);
            const DRVect3d changed = change(point);
            entity->set_coordinate(changed.x(), DraftEntity::X, i);
            entity->set_coordinate(changed.y(), DraftEntity::Y, i);
            entity->set_coordinate(changed.z(), DraftEntity::Z, i);
        }
    }
}

double along(const EyeAxis& axis, const DRVect3d& point)
{
    return (axis.x * point.x() + axis.y * point.y() + axis.z * point.z()) / axis.length;
}

/// The middle between two values that may be too large for their sum.
double middle(double a, double b)
{
    return a / 2 + b / 2;
}

void draw_objects(const std::list<DraftEntity*>& entities)
{
    for (DraftEntity* entity : entities) {
        GLObject object(entity);
        object.rendering(GLObject::SOLID);
        object.thickness(stroke * smoothing);
        object.draw();
    }
}

/// The current context's picture.
QImage read_pixels(int side)
{
    QImage image(side, side, QImage::Format_RGB32);
    glReadPixels(0, 0, side, side, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, image.bits());
    return image;
}

} // namespace

bool bring_into_view(std::list<DraftEntity*>& entities, const DXFL_Processing& reader)
{
    change_points(entities, [](const DRVect3d& point) {
        return DRVect3d(along(eye_axes[0], point), along(eye_axes[1], point), along(eye_axes[2], point));
    });

    DRVect3d min;
    DRVect3d max;
    double limit = 0.0;
    if (!reader.get_boundary(entities, min, max, limit) || !std::isfinite(limit))
        return false;
    const DRVect3d center(middle(min.x(), max.x()), middle(min.y(), max.y()), middle(min.z(), max.z()));
    const double reach = std::max({max.x() - center.x(), max.y() - center.y(), max.z() - center.z()});
    const double unit = reach > 0 ? reach : 1.0;
    change_points(entities, [&](const DRVect3d& point) {
        const DRVect3d moved = point - center;
        return DRVect3d(moved.x() / unit, moved.y() / unit, moved.z() / unit);
    });

    for (DraftEntity* entity : entities)
        entity->compute_normal();
    return true;
}

QImage draw_preview(const std::list<DraftEntity*>& entities, int size)
{
    const int side = smoothing * size;
    const OffscreenContext context(side);
    if (!context.is_current())
        return {};

    // With the lights moved to the left of the eye and up, the front of a box is light, its top less, its side dark.
    glMatrixMode(GL_MODELVIEW);
    glRotated(7, 1, 0, 0);
    glRotated(18.5, 0, 1, 0);
    set_up_lighting(1.0);
    glLoadIdentity();

    // From the smallest to the largest z, as in the view: the eye sees what has the smallest.
    // Upwards is downwards, for OpenGL's rows begin at the bottom and a picture's at the top.
    const double reach = 1.0 + margin;
    glMatrixMode(GL_PROJECTION);
    glOrtho(-reach, reach, reach, -reach, reach, -reach);
    glClearColor(128 / 255.0F, 128 / 255.0F, 128 / 255.0F, 1.0F);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    draw_objects(entities);
    return read_pixels(side).scaled(size, size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}
