// QGLWidget: the base class of a view, an adapter over QOpenGLWidget.
// Drawing in it is left to the view.
#pragma once

#include <QOpenGLWidget>
#include <QSurfaceFormat>

namespace QGL
{

enum FormatOption { DoubleBuffer = 1, DepthBuffer = 2 };
Q_DECLARE_FLAGS(FormatOptions, FormatOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(FormatOptions)

} // namespace QGL

/// A surface format with the buffers of `options` besides the colour buffer.
class QGLFormat : public QSurfaceFormat
{
public:
    explicit QGLFormat(QGL::FormatOptions options)
    {
        setSwapBehavior(options.testFlag(QGL::DoubleBuffer) ? DoubleBuffer : SingleBuffer);
        setDepthBufferSize(options.testFlag(QGL::DepthBuffer) ? 24 : 0);
    }
};

/// A widget painted by OpenGL. The context is created when it is first shown; until then, or if there is no OpenGL,
/// isValid() is false. Once shown, the widget must stay in its window: in another one it would get a new context, but
/// no resizeGL().
class QGLWidget : public QOpenGLWidget
{
    Q_OBJECT

public:
    /// `shared` is ignored: Qt shares the contexts of one window anyway.
    QGLWidget(QWidget* parent, const QGLWidget* /*shared*/, Qt::WindowFlags flags) : QOpenGLWidget(parent, flags) {}

    /// Paints at once, if the widget is visible. QWidget::repaint() would delay a paint that comes less than a frame
    /// after the last one.
    void updateGL();

    /// Schedules a paint. Hides QWidget::update(), whose paint would be skipped right after updateGL().
    void update();

    /// Sets the clear colour of the current context.
    void qglClearColor(const QColor& color)
    {
        glClearColor(color.redF(), color.greenF(), color.blueF(), color.alphaF());
    }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool my_is_resizing = false;
    bool my_is_painted = false; // by updateGL(), and not yet on the screen
};
