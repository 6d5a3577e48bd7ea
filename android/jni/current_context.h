#ifndef QUORVANE_ANDROID_JNI_CURRENT_CONTEXT_H
#define QUORVANE_ANDROID_JNI_CURRENT_CONTEXT_H

#include <EGL/egl.h>

namespace quorvane {

/// The context that is current on this thread, with its surfaces; current again when the scope ends.
class CurrentContext {
  public:
    CurrentContext()
        : m_display(eglGetCurrentDisplay()),
          m_draw(eglGetCurrentSurface(EGL_DRAW)),
          m_read(eglGetCurrentSurface(EGL_READ)),
          m_context(eglGetCurrentContext()) {}

    ~CurrentContext() {
        if (eglGetCurrentContext() == m_context) return;
        if (m_context == EGL_NO_CONTEXT)
            release();
        else
            eglMakeCurrent(m_display, m_draw, m_read, m_context);
    }

    CurrentContext(const CurrentContext&) = delete;
    CurrentContext& operator=(const CurrentContext&) = delete;

  private:
    static void release() {
        const EGLDisplay display = eglGetCurrentDisplay();
        if (display != EGL_NO_DISPLAY)
            eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }

    const EGLDisplay m_display;
    const EGLSurface m_draw;
    const EGLSurface m_read;
    const EGLContext m_context;
};

}  // namespace quorvane

#endif
