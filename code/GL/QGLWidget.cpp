// Makes QOpenGLWidget paint when a view expects it, and pass screen pixels to resizeGL.

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

/// Qt calls resizeGL with widget pixels, and paints at once although it will repaint anyway. If only the screen's scale
/// changes, Qt sets the viewport itself and does not call resizeGL.
void QGLWidget::resizeEvent(QResizeEvent* event)
{
    my_is_resizing = true;
    QOpenGLWidget::resizeEvent(event);
    my_is_resizing = false;
    const qreal pixels = devicePixelRatio();
    if (isValid() && pixels != 1.0) {
        makeCurrent();
        resizeGL(qRound(width() * pixels), qRound(height() * pixels));
    }
}

void QGLWidget::paintEvent(QPaintEvent* event)
{
    if (my_is_resizing)
        update();
    else if (!my_is_painted)
        QOpenGLWidget::paintEvent(event);
    my_is_painted = false;
}
