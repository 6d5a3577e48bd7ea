#include "quorvane/host/OffscreenContext.h"

#include <EGL/eglext.h>

#include <map>
#include <mutex>
#include <vector>

#include "host/gl_queries.h"
#include "host/text.h"

namespace quorvane {
namespace {

std::string eglFailure(const char* call) {
    return text("%s failed (EGL error 0x%04x)", call, static_cast<unsigned>(eglGetError()));
}

// EGL gives the same display to every caller in the process, and terminating it ends everybody's contexts:
// the last user terminates.
class DisplayUsers {
  public:
    bool enter(EGLDisplay display) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!eglInitialize(display, nullptr, nullptr)) return false;
        ++m_users[display];
        return true;
    }

    void leave(EGLDisplay display) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (--m_users[display] > 0) return;
        m_users.erase(display);
        eglTerminate(display);
    }

  private:
    std::mutex m_mutex;
    std::map<EGLDisplay, int> m_users;
};

DisplayUsers& displayUsers() {
    // Never destroyed: a program may keep a context to its very end.
    static DisplayUsers& users = *new DisplayUsers;
    return users;
}

struct Candidate {
    EGLDisplay display;
    std::string platform;
};

std::vector<Candidate> candidates() {
    std::vector<Candidate> found;
    const char* client_extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    const auto platform_display =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));

    if (platform_display != nullptr && hasWord(client_extensions, "EGL_MESA_platform_surfaceless"))
        found.push_back({platform_display(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr),
                         "Mesa surfaceless"});

    const auto query_devices =
        reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
    if (platform_display != nullptr && query_devices != nullptr &&
        hasWord(client_extensions, "EGL_EXT_platform_device")) {
        EGLDeviceEXT devices[16];
        EGLint count = 0;
        if (query_devices(16, devices, &count))
            for (EGLint i = 0; i < count; ++i)
                found.push_back({platform_display(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr),
                                 "EGL device " + std::to_string(i)});
    }

    found.push_back({eglGetDisplay(EGL_DEFAULT_DISPLAY), "default display"});
    return found;
}

}  // namespace

Status OffscreenContext::create(std::unique_ptr<OffscreenContext>* context) {
    context->reset();
    std::string tried;
    for (const Candidate& candidate : candidates()) {
        std::unique_ptr<OffscreenContext> attempt(new OffscreenContext);
        const Status opened = attempt->open(candidate.display, candidate.platform);
        if (opened) {
            *context = std::move(attempt);
            return Status::success();
        }
        tried += (tried.empty() ? "" : "; ") + candidate.platform + ": " + opened.message();
    }
    return Status::failure("no OpenGL ES 2 context could be made; tried " + tried);
}

Status OffscreenContext::open(EGLDisplay display, std::string platform) {
    if (display == EGL_NO_DISPLAY) return Status::failure("no display");
    if (!displayUsers().enter(display)) return Status::failure(eglFailure("eglInitialize"));
    m_display = display;
    m_platform = std::move(platform);

    if (!eglBindAPI(EGL_OPENGL_ES_API)) return Status::failure(eglFailure("eglBindAPI"));
    const bool surfaceless =
        hasWord(eglQueryString(m_display, EGL_EXTENSIONS), "EGL_KHR_surfaceless_context");
    const EGLint config_wanted[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT, EGL_SURFACE_TYPE,
                                    surfaceless ? 0 : EGL_PBUFFER_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint configs = 0;
    if (!eglChooseConfig(m_display, config_wanted, &config, 1, &configs))
        return Status::failure(eglFailure("eglChooseConfig"));
    if (configs == 0) return Status::failure("no OpenGL ES 2 configuration");

    const EGLint version_2[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    m_context = eglCreateContext(m_display, config, EGL_NO_CONTEXT, version_2);
    if (m_context == EGL_NO_CONTEXT) return Status::failure(eglFailure("eglCreateContext"));
    if (!surfaceless) {
        const EGLint one_pixel[] = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
        m_surface = eglCreatePbufferSurface(m_display, config, one_pixel);
        if (m_surface == EGL_NO_SURFACE) return Status::failure(eglFailure("eglCreatePbufferSurface"));
    }
    return makeCurrent();
}

OffscreenContext::~OffscreenContext() {
    if (m_display == EGL_NO_DISPLAY) return;
    if (isCurrent()) release();
    if (m_context != EGL_NO_CONTEXT) eglDestroyContext(m_display, m_context);
    if (m_surface != EGL_NO_SURFACE) eglDestroySurface(m_display, m_surface);
    displayUsers().leave(m_display);
}

Status OffscreenContext::makeCurrent() {
    if (!eglMakeCurrent(m_display, m_surface, m_surface, m_context))
        return Status::failure(eglFailure("eglMakeCurrent"));
    return Status::success();
}

void OffscreenContext::release() {
    eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

bool OffscreenContext::drawsInSoftware() const { return quorvane::drawsInSoftware(); }

bool OffscreenContext::isCurrent() const {
    return m_context != EGL_NO_CONTEXT && eglGetCurrentContext() == m_context;
}

}  // namespace quorvane
