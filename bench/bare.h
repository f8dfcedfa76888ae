// The limit of drawing: the OpenGL calls that a drawing takes, sent from one flat array and by nothing else.
#pragma once

#include <GL/gl.h>

#include <string>
#include <vector>

/// The corners and the unit normal of an entity; a line has two corners, a point one.
struct BareEntity {
    GLdouble corners[4][3];
    GLdouble normal[3];
};

/// The entities of a DXF file.
std::vector<BareEntity> read_bare_entities(const std::string& file_name);

/// The loops below send for each entity the calls that a GLObject with default colours sends, from the name 1024 on.
void draw_bare_wireframe(const std::vector<BareEntity>& faces);
void draw_bare_solid(const std::vector<BareEntity>& faces);
void draw_bare_lines(const std::vector<BareEntity>& lines);
void draw_bare_points(const std::vector<BareEntity>& points);
