package quorvane.parallax;

import java.nio.ByteBuffer;

/** What an app does with EGL and GL beside the renderer, on the calling thread. */
final class TestGl {
    static {
        System.loadLibrary("quorvane_test_gl");
    }

    private TestGl() {}

    /** Makes a context and makes it current. */
    static long context() {
        final long made = makeContext();
        if (made == 0 || !makeCurrent(made)) {
            throw new AssertionError("no graphics driver: no context could be made");
        }
        return made;
    }

    static void release() {
        makeCurrent(0);
    }

    private static native long makeContext();

    static native boolean makeCurrent(long context);

    /** The current context, or 0. */
    static native long current();

    static native void destroy(long context);

    /** A texture name that was never bound. */
    static native int nameOnly();

    /** A cube map. */
    static native int cube();

    /** A 2D texture, RGBA, each byte 99; 0 x 0 for one without an image. */
    static native int texture(int width, int height);

    static native boolean isTexture(int name);

    /** A direct buffer without memory, as code that lost its memory may hold one. */
    static native ByteBuffer nowhere(int bytes);

    /** A texture's first rows and columns, 4 bytes a pixel. */
    static native byte[] read(int name, int width, int height);
}
