// A library to preload into a viewer: it ends the program when that has swapped OpenGL's buffers for the first time.

#include <GL/glx.h>

#include <dlfcn.h>
#include <unistd.h>

extern "C" void glXSwapBuffers(Display* display, GLXDrawable drawable)
{
    const auto swap = reinterpret_cast<decltype(&glXSwapBuffers)>(dlsym(RTLD_NEXT, "glXSwapBuffers"));
    swap(display, drawable);
    _exit(0);
}
