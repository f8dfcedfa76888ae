// QGLWidget, the OpenGL widget of Qt 5; on Qt 6, which has none, as much of it as a view uses.
#pragma once

#include <QWidget>
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QGLWidget>
#else
#include <QOpenGLContext>
#include <QWindow>
#include <utility>

enum QGL { DoubleBuffer = 0, DepthBuffer = 1 }; // DepthBuffer is the least depth in bits; Qt 6 always double-buffers
using QGLFormat = int;

/// Like Qt 5's, it draws straight into a native window of its own and has its context from setFormat() on.
struct QGLWidget : QWidget {
    QGLWidget(QWidget* parent, QGLWidget* /*shared*/, Qt::WindowFlags flags) : QWidget(parent, flags) {}
    void setFormat(QGLFormat depth)
    {
        QSurfaceFormat format;
        format.setDepthBufferSize(depth);
        format.setStencilBufferSize(1); // as Qt 5 does, for the same depth buffer
        setAttribute(Qt::WA_PaintOnScreen);
        setAttribute(Qt::WA_NativeWindow);
        windowHandle()->setSurfaceType(QSurface::OpenGLSurface);
        windowHandle()->setFormat(format);
        winId(); // makes the window
        my_context.setFormat(format);
        my_context.create();
    }
    QPaintEngine* paintEngine() const override { return nullptr; } // OpenGL paints
    bool isValid() const { return my_context.isValid(); }
    bool makeCurrent() { return my_context.makeCurrent(windowHandle()); }
    void updateGL() { repaint(); }
    void qglClearColor(const QColor& c) { glClearColor(c.redF(), c.greenF(), c.blueF(), c.alphaF()); }

private:
    virtual void initializeGL() = 0;
    virtual void resizeGL(int width, int height) = 0;
    virtual void paintGL() = 0;
    void resizeEvent(QResizeEvent* /*event*/) override
    {
        setAutoFillBackground(!autoFillBackground()); // Qt then works out again what the view covers: a size may come
        window()->update();                           // after the frame around it has been painted
        if (!makeCurrent())
            return;
        if (!std::exchange(my_is_initialized, true))
            initializeGL();
        resizeGL(qRound(width() * devicePixelRatio()), qRound(height() * devicePixelRatio()));
    }
    void paintEvent(QPaintEvent* /*event*/) override
    {
        if (makeCurrent())
            paintGL();
        my_context.swapBuffers(windowHandle());
    }
    QOpenGLContext my_context;
    bool my_is_initialized = false;
};
#endif
