// Measures repaints and picks of a drawing window, and a bare loop that sends the same OpenGL calls from a flat array.
#pragma once

#include "../tests/view.h"
#include "Drawing/OwnedEntities.h"
#include "GL/GLObject.h"

#include <QMouseEvent>

#include <chrono>
#include <string>
#include <vector>

/// The seconds that `work` takes.
template <typename Work> double seconds_of(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct BareFace {
    GLdouble corners[4][3];
    GLdouble normal[3];
};

inline std::vector<BareFace> read_bare_faces(const std::string& file)
{
    OwnedEntities entities;
    const DXFL_Processing reader(file, entities.list);
    std::vector<BareFace> faces;
    faces.reserve(entities.list.size());
    for (DraftEntity* entity : entities.list) {
        entity->compute_normal();
        const DRVect3d normal = entity->get_normal();
        BareFace face = {{}, {normal.x(), normal.y(), normal.z()}};
        for (unsigned int i = 0; i < entity->points(); ++i)
            entity->get_coordinates(face.corners[i][0], face.corners[i][1], face.corners[i][2], i);
        faces.push_back(face);
    }
    return faces;
}

/// Sends the OpenGL calls for faces in the default colour, with names from 1024.
inline void draw_bare_faces(const std::vector<BareFace>& faces, GLObject::DRendering mode)
{
    const GLfloat diffuse[] = {0.961F, 0.961F, 0.961F, 1.0F};
    GLuint name = 1024;
    for (const BareFace& face : faces) {
        glDisable(GL_LIGHTING);
        glLoadName(name++);
        if (mode == GLObject::SOLID) {
            glEnable(GL_LIGHTING);
            glBegin(GL_QUADS);
            glMaterialfv(GL_FRONT, GL_DIFFUSE, diffuse);
            glNormal3d(face.normal[0], face.normal[1], face.normal[2]);
            for (const auto& corner : face.corners)
                glVertex3dv(corner);
        } else {
            glLineWidth(1.0F);
            glBegin(GL_LINES);
            glColor3d(0.961, 0.961, 0.961);
            for (int i = 0; i < 4; ++i) {
                glVertex3dv(face.corners[i]);
                glVertex3dv(face.corners[(i + 1) % 4]);
            }
        }
        glEnd();
    }
}

/// Sets the rendering mode for the next repaint.
inline void render(const View& view, GLObject::DRendering mode)
{
    for (unsigned long i = 0; i < view.quantity_of_drawing_objects(); ++i)
        view.get_drawing_object(i)->rendering(mode);
}

/// The seconds until OpenGL has finished what `drawing` sends.
template <typename Drawing> double seconds_to_finish(View& view, Drawing drawing)
{
    view.makeCurrent();
    glFinish();
    return seconds_of([&] {
        drawing();
        glFinish();
    });
}

/// The seconds of a repaint, and of one that sends `faces` instead of the objects.
inline double repaint_seconds(View& view)
{
    return seconds_to_finish(view, [&] { view.paintGL(); });
}
inline double bare_repaint_seconds(View& view, const std::vector<BareFace>& faces, GLObject::DRendering mode)
{
    return seconds_to_finish(view, [&] {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw_bare_faces(faces, mode);
    });
}

/// The seconds of a left double-click in the middle.
inline double pick_seconds(View& view)
{
    const QPointF middle = view.rect().center();
    QMouseEvent event(QEvent::MouseButtonDblClick, middle, middle, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    return seconds_of([&] { view.mouseDoubleClickEvent(&event); });
}
