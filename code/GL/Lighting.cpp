// The lights' place and colour, and what OpenGL makes of them.

#include "Lighting.h"

#include <GL/gl.h>

#include <cmath>
#include <initializer_list>

void set_up_lighting(double limit)
{
    glDisable(GL_CULL_FACE);

    // One light behind the viewer and one before, both at infinity: the fourth component is 0, so only the direction
    // counts. The first view of the process sets the distance for all later ones, so it has to be one whose square a
    // float holds, even where that view's limit is 0, infinite or not a number.
    static const auto distance = static_cast<GLfloat>(std::fmin(std::fmax(10.0 * limit, 1e-14), 1e16));
    static const GLfloat position0[] = {0.0F, 0.0F, -distance, 0.0F};
    static const GLfloat position1[] = {0.0F, 0.0F, distance, 0.0F};
    const GLfloat ambient[] = {0.0F, 0.0F, 0.0F, 1.0F};
    const GLfloat diffuse[] = {1.0F, 1.0F, 1.0F, 1.0F};
    glLightfv(GL_LIGHT0, GL_AMBIENT, ambient);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse);
    glLightfv(GL_LIGHT0, GL_POSITION, position0);
    glLightfv(GL_LIGHT1, GL_AMBIENT, ambient);
    glLightfv(GL_LIGHT1, GL_DIFFUSE, diffuse);
    glLightfv(GL_LIGHT1, GL_POSITION, position1);

    const GLfloat lmodelAmbient[] = {0.2F, 0.2F, 0.2F, 1.0F};
    const GLfloat localView[] = {0.0F};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, lmodelAmbient);
    glLightModelfv(GL_LIGHT_MODEL_LOCAL_VIEWER, localView);

    glFrontFace(GL_CW);
    for (const GLenum capability : {GL_LIGHTING, GL_LIGHT0, GL_LIGHT1, GL_AUTO_NORMAL, GL_NORMALIZE, GL_DEPTH_TEST})
        glEnable(capability);
    glDepthFunc(GL_LESS);
}
