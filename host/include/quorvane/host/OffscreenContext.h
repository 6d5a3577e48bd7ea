#ifndef QUORVANE_HOST_OFFSCREEN_CONTEXT_H
#define QUORVANE_HOST_OFFSCREEN_CONTEXT_H

#include <EGL/egl.h>

#include <memory>

#include "Status.h"

namespace quorvane {

/// An OpenGL ES 2 context without a window, current on the thread that created it. Software rendering will
/// do.
///
/// Tried in this order: Mesa's surfaceless platform, each EGL device, the default display; each with no
/// surface where the driver allows that, else with a 1 x 1 pbuffer.
class OffscreenContext {
  public:
    /// Creates a context and makes it current on the calling thread. On failure `*context` is null and the
    /// status names everything that was tried, and why it failed.
    static Status create(std::unique_ptr<OffscreenContext>* context);

    /// Destroys the context; on its own thread it is no longer current. Delete GL objects before.
    ~OffscreenContext();

    OffscreenContext(const OffscreenContext&) = delete;
    OffscreenContext& operator=(const OffscreenContext&) = delete;

    /// Makes the context current on the calling thread. A context is current on one thread at most.
    Status makeCurrent();

    /// Leaves the calling thread without a context, so that another may take this one.
    void release();

    bool isCurrent() const;

    /// Whether its driver draws on the processor. The context has to be current.
    bool drawsInSoftware() const;

    /// Which of the ways gave the context: "Mesa surfaceless", "EGL device 0", "default display".
    const std::string& platform() const { return m_platform; }

  private:
    OffscreenContext() = default;
    Status open(EGLDisplay display, std::string platform);

    EGLDisplay m_display = EGL_NO_DISPLAY;
    EGLSurface m_surface = EGL_NO_SURFACE;
    EGLContext m_context = EGL_NO_CONTEXT;
    std::string m_platform;
};

}  // namespace quorvane

#endif
