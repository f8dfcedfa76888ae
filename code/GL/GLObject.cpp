// The OpenGL calls that draw one entity.

#include "GLObject.h"

#include "Drawing/DraftEntity.h"

#include <GL/gl.h>

namespace
{

void send_color(const DRVect3d& color)
{
    glColor3d(color.x(), color.y(), color.z());
}

void send_vertex(const DraftEntity& entity, unsigned int index)
{
    DRVect3d point;
    entity.get_point(point, index);
    const GLdouble coordinates[] = {point.x(), point.y(), point.z()};
    glVertex3dv(coordinates);
}

void send_vertices(const DraftEntity& entity)
{
    const unsigned int count = entity.points();
    for (unsigned int i = 0; i < count; ++i)
        send_vertex(entity, i);
}

void begin_points(double size, const DRVect3d& color)
{
    glPointSize(static_cast<GLfloat>(size));
    glBegin(GL_POINTS);
    send_color(color);
}

void begin_lines(double width, const DRVect3d& color)
{
    glLineWidth(static_cast<GLfloat>(width));
    glBegin(GL_LINES);
    send_color(color);
}

} // namespace

GLObject::GLObject(DraftEntity* cur_drentity) : Marker(0), my_drentity(cur_drentity) {}

GLObject::~GLObject()
{
    my_drentity = nullptr;
}

/// An object has the selection colour only if `selected` is its only mark.
const DRVect3d& GLObject::current_color() const
{
    return my_mark == selected ? my_select_color : my_basic_color;
}

void GLObject::draw()
{
    glDisable(GL_LIGHTING);
    glLoadName(static_cast<GLuint>(my_local_id));
    switch (my_drentity->get_type()) {
    case DraftEntity::Point:
        begin_points(my_thickness, current_color());
        send_vertices(*my_drentity);
        glEnd();
        break;
    case DraftEntity::Line:
        begin_lines(my_thickness, current_color());
        send_vertices(*my_drentity);
        glEnd();
        break;
    case DraftEntity::Face:
        draw_face();
        break;
    }
}

void GLObject::draw_face()
{
    const DraftEntity& face = *my_drentity;
    const unsigned int count = face.points();
    switch (my_rendering) {
    case POINT:
        begin_points(my_thickness, current_color());
        send_vertices(face);
        glEnd();
        break;
    case WIREFRAME:
        begin_lines(my_thickness, current_color());
        for (unsigned int i = 0; i < count; ++i) {
            send_vertex(face, i);
            send_vertex(face, i + 1 < count ? i + 1 : 0);
        }
        glEnd();
        break;
    case SOLID: {
        if (count < 3)
            break;
        glEnable(GL_LIGHTING);
        const DRVect3d& color = current_color();
        const GLfloat diffuse[] = {static_cast<GLfloat>(color.x()), static_cast<GLfloat>(color.y()),
                                   static_cast<GLfloat>(color.z()), 1.0F};
        glBegin(count == 3 ? GL_TRIANGLES : count == 4 ? GL_QUADS : GL_POLYGON);
        glMaterialfv(GL_FRONT, GL_DIFFUSE, diffuse);
        const DRVect3d normal = face.get_normal();
        glNormal3d(normal.x(), normal.y(), normal.z());
        send_vertices(face);
        glEnd();
        break;
    }
    }
}
