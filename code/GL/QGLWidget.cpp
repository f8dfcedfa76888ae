// Where QOpenGLWidget does otherwise than its views expect: sizes in pixels of the widget, and a paint in each resize.

#include "QGLWidget.h"

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
    else
        QOpenGLWidget::paintEvent(event);
}
