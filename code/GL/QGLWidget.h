// QGLWidget: the OpenGL widget that a view derives from, made of Qt's QOpenGLWidget.
// What is drawn in it is left to the view.
#pragma once

#include <QOpenGLWidget>
#include <QSurfaceFormat>

namespace QGL
{

enum FormatOption { DoubleBuffer = 1, DepthBuffer = 2 };
Q_DECLARE_FLAGS(FormatOptions, FormatOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(FormatOptions)

} // namespace QGL

/// A format with these buffers; colours are always there.
class QGLFormat : public QSurfaceFormat
{
public:
    explicit QGLFormat(QGL::FormatOptions options)
    {
        setSwapBehavior(options.testFlag(QGL::DoubleBuffer) ? DoubleBuffer : SingleBuffer);
        setDepthBufferSize(options.testFlag(QGL::DepthBuffer) ? 24 : 0);
    }
};

/// A widget that OpenGL paints. Its context is made when it is first shown; isValid() is false before, and for good
/// where there is no OpenGL.
class QGLWidget : public QOpenGLWidget
{
    Q_OBJECT

public:
    /// The views of one window share their contexts anyhow; `shared` is not looked at.
    QGLWidget(QWidget* parent, const QGLWidget* /*shared*/, Qt::WindowFlags flags) : QOpenGLWidget(parent, flags) {}

    /// Paints at once, if the widget is visible. QWidget::repaint() puts it off when the last paint is less than a
    /// frame ago.
    void updateGL();

    /// As QWidget::update(), which does not know that a paint by updateGL() is outdated.
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
