package android.opengl;

import android.graphics.SurfaceTexture;
import java.util.concurrent.atomic.AtomicInteger;

/** Android's calls on Mesa: a window is a pbuffer, and what is swapped in is read back. */
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
    public static final EGLDisplay EGL_NO_DISPLAY = new EGLDisplay(0);
    public static final EGLContext EGL_NO_CONTEXT = new EGLContext(0);
    public static final EGLSurface EGL_NO_SURFACE = new EGLSurface(0);

    /** Pictures that were swapped in. */
    public static final AtomicInteger SWAPS = new AtomicInteger();
    /** Whether what is swapped in is read back. */
    public static volatile boolean reads = true;
    /** So often the driver says that the context was lost. */
    public static final AtomicInteger LOSSES = new AtomicInteger();
    /** Bits of red in the config of the last context. */
    public static volatile int redBits;

    private static volatile SurfaceTexture window;

    static {
        System.loadLibrary("quorvane_device");
    }

    public static EGLDisplay eglGetDisplay(int displayId) {
        long display = display();
        return display == 0 ? EGL_NO_DISPLAY : new EGLDisplay(display);
    }

    public static boolean eglInitialize(EGLDisplay display, int[] major, int majorOffset,
            int[] minor, int minorOffset) {
        return true;
    }

    public static boolean eglChooseConfig(EGLDisplay display, int[] attributes, int offset,
            EGLConfig[] configs, int configsOffset, int configSize, int[] count, int countOffset) {
        long[] found = new long[configSize];
        count[countOffset] = chooseConfig(display.handle, attributes, found);
        for (int i = 0; i < Math.min(count[countOffset], configSize); ++i) {
            configs[configsOffset + i] = new EGLConfig(found[i]);
        }
        return count[countOffset] > 0;
    }

    public static boolean eglGetConfigAttrib(EGLDisplay display, EGLConfig config, int attribute,
            int[] value, int offset) {
        value[offset] = attribute(display.handle, config.handle, attribute);
        return true;
    }

    public static EGLContext eglCreateContext(EGLDisplay display, EGLConfig config,
            EGLContext share, int[] attributes, int offset) {
        redBits = attribute(display.handle, config.handle, EGL_RED_SIZE);
        long context = createContext(display.handle, config.handle, attributes);
        return context == 0 ? EGL_NO_CONTEXT : new EGLContext(context);
    }

    public static EGLSurface eglCreateWindowSurface(EGLDisplay display, EGLConfig config,
            Object newWindow, int[] attributes, int offset) {
        window = (SurfaceTexture) newWindow;
        long surface = createSurface(display.handle, config.handle, window.width, window.height);
        return surface == 0 ? EGL_NO_SURFACE : new EGLSurface(surface);
    }

    public static boolean eglMakeCurrent(EGLDisplay display, EGLSurface draw, EGLSurface read,
            EGLContext context) {
        return makeCurrent(display.handle, draw.handle, context.handle);
    }

    public static boolean eglSwapBuffers(EGLDisplay display, EGLSurface surface) {
        if (LOSSES.get() > 0) {
            LOSSES.decrementAndGet();
            return false;
        }
        if (reads) {
            byte[] picture = new byte[4 * window.width * window.height];
            readPicture(window.width, window.height, picture);
            window.picture = picture;
        }
        SWAPS.incrementAndGet();
        return true;
    }

    public static boolean eglDestroySurface(EGLDisplay display, EGLSurface surface) {
        return destroySurface(display.handle, surface.handle);
    }

    public static boolean eglDestroyContext(EGLDisplay display, EGLContext context) {
        return destroyContext(display.handle, context.handle);
    }

    public static boolean eglReleaseThread() {
        return true;
    }

    /** Counted on Android, so that other contexts stay. */
    public static boolean eglTerminate(EGLDisplay display) {
        return true;
    }

    public static int eglGetError() {
        return 0x3000;
    }

    private static native long display();

    private static native int chooseConfig(long display, int[] attributes, long[] found);

    private static native int attribute(long display, long config, int name);

    private static native long createContext(long display, long config, int[] attributes);

    private static native long createSurface(long display, long config, int width, int height);

    private static native boolean makeCurrent(long display, long surface, long context);

    private static native boolean destroySurface(long display, long surface);

    private static native boolean destroyContext(long display, long context);

    private static native void readPicture(int width, int height, byte[] picture);
}
