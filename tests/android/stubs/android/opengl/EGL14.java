package android.opengl;

public class EGL14 {
    public static final int EGL_DEFAULT_DISPLAY = 0;
    public static final int EGL_NONE = 0x3038;
    public static final int EGL_RED_SIZE = 0x3024;
    public static final int EGL_GREEN_SIZE = 0x3023;
    public static final int EGL_BLUE_SIZE = 0x3022;
    public static final int EGL_ALPHA_SIZE = 0x3021;
    public static final int EGL_DEPTH_SIZE = 0x3025;
    public static final int EGL_STENCIL_SIZE = 0x3026;
    public static final int EGL_CONFIG_CAVEAT = 0x3027;
    public static final int EGL_SAMPLES = 0x3031;
    public static final int EGL_SURFACE_TYPE = 0x3033;
    public static final int EGL_WINDOW_BIT = 0x0004;
    public static final int EGL_RENDERABLE_TYPE = 0x3040;
    public static final int EGL_OPENGL_ES2_BIT = 0x0004;
    public static final int EGL_CONTEXT_CLIENT_VERSION = 0x3098;
    public static final EGLDisplay EGL_NO_DISPLAY = new EGLDisplay();
    public static final EGLContext EGL_NO_CONTEXT = new EGLContext();
    public static final EGLSurface EGL_NO_SURFACE = new EGLSurface();

    public static EGLDisplay eglGetDisplay(int displayId) {
        throw new UnsupportedOperationException();
    }

    public static boolean eglInitialize(EGLDisplay display, int[] major, int majorOffset,
            int[] minor, int minorOffset) {
        throw new UnsupportedOperationException();
    }

    public static boolean eglChooseConfig(EGLDisplay display, int[] attributes, int offset,
            EGLConfig[] configs, int configsOffset, int configSize, int[] count, int countOffset) {
        throw new UnsupportedOperationException();
    }

    public static boolean eglGetConfigAttrib(EGLDisplay display, EGLConfig config, int attribute,
            int[] value, int offset) {
        throw new UnsupportedOperationException();
    }

    public static EGLContext eglCreateContext(EGLDisplay display, EGLConfig config,
            EGLContext share, int[] attributes, int offset) {
        throw new UnsupportedOperationException();
    }

    public static EGLSurface eglCreateWindowSurface(EGLDisplay display, EGLConfig config,
            Object window, int[] attributes, int offset) {
        throw new UnsupportedOperationException();
    }

    public static boolean eglMakeCurrent(EGLDisplay display, EGLSurface draw, EGLSurface read,
            EGLContext context) {
        throw new UnsupportedOperationException();
    }

    public static boolean eglSwapBuffers(EGLDisplay display, EGLSurface surface) {
        throw new UnsupportedOperationException();
    }

    public static boolean eglDestroySurface(EGLDisplay display, EGLSurface surface) {
        throw new UnsupportedOperationException();
    }

    public static boolean eglDestroyContext(EGLDisplay display, EGLContext context) {
        throw new UnsupportedOperationException();
    }

    public static boolean eglReleaseThread() {
        throw new UnsupportedOperationException();
    }

    public static boolean eglTerminate(EGLDisplay display) {
        throw new UnsupportedOperationException();
    }

    public static int eglGetError() {
        throw new UnsupportedOperationException();
    }
}
