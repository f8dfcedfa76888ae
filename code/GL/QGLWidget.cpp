// Where QOpenGLWidget does otherwise than its views expect: when it paints, and sizes in pixels of the widget.

#include "QGLWidget.h"

#include <QPaintEvent>

void QGLWidget::updateGL()
{
    if (!isVisible())
        return;
    QPaintEvent event(rect());
    QOpenGLWidget::paintEvent(&event);
    update();
    my_is_painted = true;
}

void QGLWidget::update()
{
    my_is_painted = false;
    QOpenGLWidget::update();
}

/// Qt calls resizeGL in pixels of the widget, and paints at once although the window is about to be painted.
void QGLWidget::resizeEvent(QResizeEvent* event)
{
    my_is_resizing = true;
    QOpenGLWidget::resizeEvent(event);
    my_is_resizing = false;
    const qreal pixels = devicePixelRatio();
    if (isValid() && pixels != 1.0)
        resizeGL(qRound(width() * pixels), qRound(height() * pixels));
}

void QGLWidget::paintEvent(QPaintEvent* event)
{
    if (my_is_resizing)
        update();
    else if (!my_is_painted)
        QOpenGLWidget::paintEvent(event);
    my_is_painted = false;
}
