// The road to a context: a display without a screen, a pixel buffer on it, desktop OpenGL in that.

#include "OffscreenContext.h"

#include <EGL/eglext.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace
{

bool is_software(EGLDeviceEXT device)
{
    const auto query = reinterpret_cast<PFNEGLQUERYDEVICESTRINGEXTPROC>(eglGetProcAddress("eglQueryDeviceStringEXT"));
    const char* extensions = query != nullptr ? query(device, EGL_EXTENSIONS) : nullptr;
    return extensions != nullptr &&
           std::string_view(extensions).find("EGL_MESA_device_software") != std::string_view::npos;
}

/// A display of the device platform (EGL_EXT_platform_device) on the software device, or else one of the surfaceless
/// platform (EGL_MESA_platform_surfaceless).
EGLDisplay screenless_display()
{
    std::array<EGLDeviceEXT, 16> devices{};
    EGLint quantity = 0;
    const auto query = reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
    if (query != nullptr)
        query(static_cast<EGLint>(devices.size()), devices.data(), &quantity);

    const auto end = devices.begin() + quantity;
    const auto device = std::find_if(devices.begin(), end, is_software);
    return device != end ? eglGetPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, *device, nullptr)
                         : eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
}

} // namespace

OffscreenContext::OffscreenContext(int size) : my_display(screenless_display())
{
    if (eglInitialize(my_display, nullptr, nullptr) == EGL_FALSE || eglBindAPI(EGL_OPENGL_API) == EGL_FALSE)
        return;

    const EGLint wanted[][2] = {{EGL_SURFACE_TYPE, EGL_PBUFFER_BIT},
                                {EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT},
                                {EGL_RED_SIZE, 8},
                                {EGL_GREEN_SIZE, 8},
                                {EGL_BLUE_SIZE, 8},
                                {EGL_DEPTH_SIZE, 24},
                                {EGL_NONE, EGL_NONE}};
    EGLConfig config = nullptr;
    EGLint quantity = 0;
    if (eglChooseConfig(my_display, *wanted, &config, 1, &quantity) == EGL_FALSE || quantity == 0)
        return;

    // The display releases its surfaces and contexts, so neither is destroyed by itself.
    const EGLint sides[] = {EGL_WIDTH, size, EGL_HEIGHT, size, EGL_NONE};
    const EGLint profile[] = {EGL_CONTEXT_OPENGL_PROFILE_MASK, EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT, EGL_NONE};
    EGLSurface surface = eglCreatePbufferSurface(my_display, config, sides);
    EGLContext context = eglCreateContext(my_display, config, EGL_NO_CONTEXT, profile);
    if (eglMakeCurrent(my_display, surface, surface, context) == EGL_TRUE)
        my_context = context;
}

OffscreenContext::~OffscreenContext()
{
    eglMakeCurrent(my_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglTerminate(my_display);
}
