// OffscreenContext: an OpenGL context with a surface of its own, which needs neither X nor Wayland nor a graphics card.
// What is drawn there is left to the caller.
#pragma once

#include <EGL/egl.h>

/// An OpenGL context of the compatibility profile on an EGL pixel buffer with depth, current from its making to its
/// end. It is drawn by software where EGL has a software device, so that time and memory do not hang on a driver.
class OffscreenContext
{
public:
    /// A square surface whose sides are `size` pixels.
    explicit OffscreenContext(int size);
    ~OffscreenContext();
    OffscreenContext(const OffscreenContext&) = delete;
    OffscreenContext& operator=(const OffscreenContext&) = delete;

    /// Whether there is a context; nothing can be drawn without.
    bool is_current() const { return my_context != EGL_NO_CONTEXT; }

private:
    EGLDisplay my_display;
    EGLContext my_context = EGL_NO_CONTEXT;
};
