// Repaints and picks, by the view's own operations and barely.

#include "view.h"

#include <GL/glu.h>

#include <QMouseEvent>
#include <QTest>

View::View(const std::string& file) : MyGlMDIChild(nullptr)
{
    loadFile(QString::fromStdString(file));
    resize(800, 600);
    show();
    if (!QTest::qWaitForWindowExposed(this))
        qFatal("The window did not come up.");
}

void View::render(GLObject::DRendering mode)
{
    for (unsigned long i = 0; i < quantity_of_drawing_objects(); ++i)
        get_drawing_object(i)->rendering(mode);
}

double View::repaint_seconds()
{
    makeCurrent();
    glFinish();
    return seconds_of([this] {
        paintGL();
        glFinish();
    });
}

double View::bare_repaint_seconds(const std::function<void()>& draw)
{
    makeCurrent();
    glFinish();
    return seconds_of([&] {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw();
        glFinish();
    });
}

double View::pick_seconds()
{
    QMouseEvent event(QEvent::MouseButtonDblClick, rect().center(), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    return seconds_of([&] { mouseDoubleClickEvent(&event); });
}

double View::bare_pick_seconds(const std::function<void()>& draw)
{
    GLuint buffer[512] = {};
    GLint viewport[4] = {};
    return seconds_of([&] {
        makeCurrent();
        glGetIntegerv(GL_VIEWPORT, viewport);
        glSelectBuffer(512, buffer);
        glRenderMode(GL_SELECT);
        glInitNames();
        glPushName(0);
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glLoadIdentity();
        gluPickMatrix(rect().center().x(), viewport[3] - rect().center().y(), 3.0, 3.0, viewport);
        perspective_transformation(width(), height());
        draw();
        glPopMatrix();
        glRenderMode(GL_RENDER);
    });
}
