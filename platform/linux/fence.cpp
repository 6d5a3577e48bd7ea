// Android's libEGL exports the KHR fence calls; Linux's hands them out through eglGetProcAddress only.

#define EGL_EGLEXT_PROTOTYPES
#include <EGL/egl.h>
#include <EGL/eglext.h>

namespace {

struct FenceCalls {
    PFNEGLCREATESYNCKHRPROC create;
    PFNEGLCLIENTWAITSYNCKHRPROC wait;
    PFNEGLDESTROYSYNCKHRPROC destroy;

    static const FenceCalls& instance() {
        static const FenceCalls calls = {
            reinterpret_cast<PFNEGLCREATESYNCKHRPROC>(eglGetProcAddress("eglCreateSyncKHR")),
            reinterpret_cast<PFNEGLCLIENTWAITSYNCKHRPROC>(eglGetProcAddress("eglClientWaitSyncKHR")),
            reinterpret_cast<PFNEGLDESTROYSYNCKHRPROC>(eglGetProcAddress("eglDestroySyncKHR")),
        };
        return calls;
    }
};

}  // namespace

// Where the driver has no fences, creating gives "none" and the rest fail, as on a device that lacks them.

EGLSyncKHR eglCreateSyncKHR(EGLDisplay dpy, EGLenum type, const EGLint* attrib_list) {
    const FenceCalls& calls = FenceCalls::instance();
    return calls.create != nullptr ? calls.create(dpy, type, attrib_list) : EGL_NO_SYNC_KHR;
}

EGLint eglClientWaitSyncKHR(EGLDisplay dpy, EGLSyncKHR sync, EGLint flags, EGLTimeKHR timeout) {
    const FenceCalls& calls = FenceCalls::instance();
    return calls.wait != nullptr ? calls.wait(dpy, sync, flags, timeout) : EGL_FALSE;
}

EGLBoolean eglDestroySyncKHR(EGLDisplay dpy, EGLSyncKHR sync) {
    const FenceCalls& calls = FenceCalls::instance();
    return calls.destroy != nullptr ? calls.destroy(dpy, sync) : EGL_FALSE;
}
