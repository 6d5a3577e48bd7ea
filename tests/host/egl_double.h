#ifndef QUORVANE_TESTS_HOST_EGL_DOUBLE_H
#define QUORVANE_TESTS_HOST_EGL_DOUBLE_H

#include <EGL/egl.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace quorvane::test {

/// Stands in for the part of EGL that makes contexts. While the GL recorder is a fake it is one too; with the
/// recorder in front of the driver every call goes to the driver.
struct EglDouble {
    static EglDouble& instance();

    /// The displays: Mesa's surfaceless one, two devices' and the default one.
    static EGLDisplay handle(uintptr_t value) { return reinterpret_cast<EGLDisplay>(value); }
    static constexpr uintptr_t kSurfaceless = 0xe0, kDevice0 = 0xe1, kDevice1 = 0xe2, kDefault = 0xd1;

    using Function = __eglMustCastToProperFunctionPointerType;

    // Scripts.

    std::string client_extensions = "EGL_EXT_platform_device EGL_MESA_platform_surfaceless";
    std::string display_extensions = "EGL_KHR_image EGL_KHR_surfaceless_context";
    std::set<std::string> failing;              ///< functions that fail
    std::set<EGLDisplay> broken_displays;       ///< on which eglInitialize fails
    std::set<std::string> missing_functions;    ///< for eglGetProcAddress
    std::map<std::string, Function> functions;  ///< more that eglGetProcAddress has
    EGLint configurations = 1;
    EGLDisplay default_display = handle(kDefault);
    uintptr_t next_context = 0xc1;  ///< 0xc1 is what the GL recorder calls current

    // What came in.

    std::vector<std::string> calls;  ///< names only
    std::map<EGLDisplay, int> initialised;
    std::set<EGLContext> contexts;
    std::set<EGLSurface> surfaces;
    std::vector<EGLint> config_wanted, context_wanted, surface_wanted;
    EGLSurface current_surface = EGL_NO_SURFACE;
    EGLContext current_context = EGL_NO_CONTEXT;
    EGLenum api = EGL_OPENGL_API;
};

}  // namespace quorvane::test

#endif
