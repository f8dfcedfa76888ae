// Bare loops of OpenGL calls.

#include "bare.h"

#include "Drawing/DXFL_Processing.h"
#include "Drawing/OwnedEntities.h"

namespace
{

constexpr GLuint first_name = 1024;

void copy(const DRVect3d& from, GLdouble (&to)[3])
{
    to[0] = from.x();
    to[1] = from.y();
    to[2] = from.z();
}

} // namespace

std::vector<BareEntity> read_bare_entities(const std::string& file_name)
{
    OwnedEntities entities;
    const DXFL_Processing reader(file_name, entities.list);
    std::vector<BareEntity> result;
    result.reserve(entities.list.size());
    for (DraftEntity* entity : entities.list) {
        BareEntity bare = {};
        entity->compute_normal();
        copy(entity->get_normal(), bare.normal);
        for (unsigned int i = 0; i < entity->points(); ++i) {
            DRVect3d point;
            entity->get_point(point, i);
            copy(point, bare.corners[i]);
        }
        result.push_back(bare);
    }
    return result;
}

void draw_bare_wireframe(const std::vector<BareEntity>& faces)
{
    GLuint name = first_name;
    for (const BareEntity& face : faces) {
        glDisable(GL_LIGHTING);
        glLoadName(name++);
        glLineWidth(1.0F);
        glBegin(GL_LINES);
        glColor3d(0.961, 0.961, 0.961);
        for (int i = 0; i < 4; ++i) {
            glVertex3dv(face.corners[i]);
            glVertex3dv(face.corners[(i + 1) % 4]);
        }
        glEnd();
    }
}

void draw_bare_solid(const std::vector<BareEntity>& faces)
{
    const GLfloat diffuse[] = {0.961F, 0.961F, 0.961F, 1.0F};
    GLuint name = first_name;
    for (const BareEntity& face : faces) {
        glDisable(GL_LIGHTING);
        glLoadName(name++);
        glEnable(GL_LIGHTING);
        glBegin(GL_QUADS);
        glMaterialfv(GL_FRONT, GL_DIFFUSE, diffuse);
        glNormal3d(face.normal[0], face.normal[1], face.normal[2]);
        for (const auto& corner : face.corners)
            glVertex3dv(corner);
        glEnd();
    }
}

void draw_bare_lines(const std::vector<BareEntity>& lines)
{
    GLuint name = first_name;
    for (const BareEntity& line : lines) {
        glDisable(GL_LIGHTING);
        glLoadName(name++);
        glLineWidth(1.0F);
        glBegin(GL_LINES);
        glColor3d(0.961, 0.961, 0.961);
        glVertex3dv(line.corners[0]);
        glVertex3dv(line.corners[1]);
        glEnd();
    }
}

void draw_bare_points(const std::vector<BareEntity>& points)
{
    GLuint name = first_name;
    for (const BareEntity& point : points) {
        glDisable(GL_LIGHTING);
        glLoadName(name++);
        glPointSize(1.0F);
        glBegin(GL_POINTS);
        glColor3d(0.961, 0.961, 0.961);
        glVertex3dv(point.corners[0]);
        glEnd();
    }
}
