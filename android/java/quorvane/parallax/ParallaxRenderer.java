package quorvane.parallax;

import androidx.annotation.NonNull;
import java.nio.ByteBuffer;
import java.util.Arrays;
import java.util.Collections;
import java.util.List;
import java.util.Map;
import java.util.concurrent.atomic.AtomicLong;

/**
 * Draws a photo that moves in depth, seen from a point that follows the hand, with OpenGL ES 2.0.
 *
 * <p>Use: {@link #create} or {@link #createOffscreen}, {@link #setPhoto}, {@link #setDepth}; then
 * for every picture {@link #lookAt} and {@link #render}, {@link #renderInto} or {@link
 * #readPixels}; at last {@link #close}. Every failure is a {@link ParallaxException}. A call that
 * fails leaves the renderer as it was, unless the driver runs out of memory in the middle of an
 * upload: then that image is unset.
 *
 * <p><b>Threads and contexts.</b> All calls come from the thread that created the renderer, with
 * the context of then current; calls from elsewhere fail and change nothing. Several renderers may
 * work on several threads at once. After a call of a renderer made with {@link #create}, other
 * programs, buffers, framebuffers and textures (units 0 to 2) are bound than before, and the
 * viewport, the clear values, the unpack alignment and the fragment tests are changed: an app that
 * draws to its window next binds framebuffer 0 and sets its viewport again. A renderer made with
 * {@link #createOffscreen} leaves the thread's context as it found it.
 *
 * <p><b>Buffers</b> are direct. What counts lies between a buffer's position and its limit, which
 * both stay as they are; more bytes than needed do no harm, and the byte order is of no account.
 * Images have no padding between rows, and their first row is the top. They are copied: the app may
 * use the buffer again at once.
 *
 * <p><b>Closing.</b> A renderer that is dropped without {@link #close} does no harm, but its memory
 * outside the Java heap stays in use as long as the process lives, and its GL objects as long as
 * their context does. No finalizer frees them, as it would run on a thread where the context is not
 * current.
 */
public final class ParallaxRenderer implements AutoCloseable {
    static {
        System.loadLibrary("quorvane_jni");
    }

    private final Thread owner = Thread.currentThread();

    /** Address of the native half; 0 once closed. Atomic for those who close after the owner. */
    private final AtomicLong handle;

    private ParallaxRenderer(long handle) {
        this.handle = new AtomicLong(handle);
    }

    /**
     * Makes a renderer in the OpenGL ES 2 or 3 context that is current on this thread.
     *
     * @param width of the pictures, in pixels, from 1 to the driver's limit
     * @param height of the pictures, in pixels, from 1 to the driver's limit
     * @param orientation chooses the tuned parameters: 4 and 7 the first set, every other code the
     *     second
     * @return the renderer, which belongs to this thread
     */
    @NonNull
    public static ParallaxRenderer create(int width, int height, int orientation) {
        return new ParallaxRenderer(nativeCreate(width, height, orientation, false));
    }

    /**
     * Makes a renderer with a context of its own, for pictures that are read back: {@link
     * #readPixels}. The context is current during the renderer's calls only, so the texture that
     * {@link #render} names is of no use to the app.
     *
     * @param width of the pictures, in pixels, from 1 to the driver's limit
     * @param height of the pictures, in pixels, from 1 to the driver's limit
     * @param orientation as in {@link #create}
     * @return the renderer, which belongs to this thread
     */
    @NonNull
    public static ParallaxRenderer createOffscreen(int width, int height, int orientation) {
        return new ParallaxRenderer(nativeCreate(width, height, orientation, true));
    }

    /**
     * Takes a photo of 3 bytes a pixel: red, green, blue. A photo of another size than the last one
     * unsets the depth map.
     *
     * @param width in pixels, from 1 to the driver's texture limit
     * @param height in pixels, from 1 to the driver's texture limit
     * @param rgb direct, width * height * 3 bytes
     */
    public void setPhoto(int width, int height, @NonNull ByteBuffer rgb) {
        final long open = open();
        checkBuffer("photo", rgb);
        nativeSetPhoto(open, width, height, rgb, rgb.position(), rgb.remaining(), 3);
    }

    /**
     * Takes a photo of 4 bytes a pixel, as {@code Bitmap.copyPixelsToBuffer} gives it: red, green,
     * blue and one that is dropped. Otherwise {@link #setPhoto}.
     *
     * @param width in pixels, from 1 to the driver's texture limit
     * @param height in pixels, from 1 to the driver's texture limit
     * @param rgba direct, width * height * 4 bytes
     */
    public void setPhotoRgba(int width, int height, @NonNull ByteBuffer rgba) {
        final long open = open();
        checkBuffer("photo", rgba);
        nativeSetPhoto(open, width, height, rgba, rgba.position(), rgba.remaining(), 4);
    }

    /**
     * Takes and filters the photo's depth map, a byte a sample: 0 to 255, larger is nearer. The
     * grid has a cell for every 4 x 4 samples, and the photo must be 1, 2, 4, 8, 16 or 32 times the
     * grid on each axis, to within one cell. After a new photo of the same size, calling this again
     * makes the depth follow the new photo's edges.
     *
     * @param width in samples, at least 4
     * @param height in samples, at least 4
     * @param depth direct, width * height bytes
     */
    public void setDepth(int width, int height, @NonNull ByteBuffer depth) {
        final long open = open();
        checkBuffer("depth map", depth);
        nativeSetDepth(open, width, height, depth, depth.position(), depth.remaining());
    }

    /**
     * Takes the parameters and the depth map of a plan, which was made for this renderer's size and
     * orientation and the photo that it has. Positions are to be multiplied by its {@link
     * PicturePlan#swing}.
     *
     * @param plan of the picture
     */
    public void use(@NonNull PicturePlan plan) {
        for (Map.Entry<String, Double> parameter : plan.parameters().entrySet()) {
            setParameter(parameter.getKey(), parameter.getValue());
        }
        setDepth(plan.depthWidth(), plan.depthHeight(), plan.depth());
    }

    /**
     * Lists the tunable parameters with their ranges. Any thread may ask.
     *
     * @return all of them, always in the same order
     */
    @NonNull
    public static List<ParallaxParameter> parameters() {
        return Collections.unmodifiableList(Arrays.asList(nativeParameters()));
    }

    /**
     * Sets a parameter; {@link ParallaxParameter#takesEffect} says when it shows.
     *
     * @param name of {@link #parameters}
     * @param value in the parameter's range; a whole number where it is an integer
     */
    public void setParameter(@NonNull String name, double value) {
        final long open = open();
        checkName(name);
        nativeSetParameter(open, name, value);
    }

    /**
     * Tells whether {@link #setParameter} would take it. Any thread may ask.
     *
     * @throws ParallaxException where it would not
     */
    static void checkParameter(String name, double value) {
        checkName(name);
        nativeCheckParameter(name, value);
    }

    /**
     * Tells what a parameter is set to.
     *
     * @param name of {@link #parameters}
     * @return its value, rounded to a {@code float}
     */
    public double parameter(@NonNull String name) {
        final long open = open();
        checkName(name);
        return nativeParameter(open, name);
    }

    /**
     * Sets all parameters anew to the second tuned set, and then those that the device's system
     * properties name.
     *
     * @param orientation as in {@link #create}; 4 and 7 leave out the tuned set, so that parameters
     *     that no property names stay
     */
    public void applyProperties(int orientation) {
        nativeApplyProperties(open(), orientation);
    }

    /**
     * Changes the size of the pictures. Photo, depth map and parameters stay; the last picture and
     * the texture that {@link #render} named go.
     *
     * @param width in pixels, from 1 to the driver's limit
     * @param height in pixels, from 1 to the driver's limit
     */
    public void resize(int width, int height) {
        nativeResize(open(), width, height);
    }

    /**
     * Sets from where the next pictures are seen. (0, 0) is the rest position. The border dead zone
     * holds the ends a little inside.
     *
     * @param x -1 to 1 and clamped to it; positive is from the right
     * @param y -1 to 1 and clamped to it; positive is from above
     */
    public void lookAt(float x, float y) {
        nativeLookAt(open(), x, y);
    }

    /**
     * Moves the point of view by a displacement in pixels of the picture.
     *
     * @param x along the width, finite
     * @param y along the height, finite
     * @param z finite
     */
    public void setAccelerometerData(float x, float y, float z) {
        nativeSetAccelerometerData(open(), x, y, z);
    }

    /**
     * Sets the point of view from a position on the picture, held off its border: the centre is the
     * rest position.
     *
     * @param x pixels along the width, finite
     * @param y pixels along the height, finite
     * @param z finite
     */
    public void setRotation(float x, float y, float z) {
        nativeSetRotation(open(), x, y, z);
    }

    /**
     * Stores an offset of the camera for diagnostics; no picture changes.
     *
     * @param x finite
     * @param y finite
     * @param z finite
     */
    public void setTranslation(float x, float y, float z) {
        nativeSetTranslation(open(), x, y, z);
    }

    /**
     * Draws the picture into a texture of the renderer's and returns when it is finished. Needs a
     * photo and a depth map.
     *
     * @return the name of the texture, RGBA with the picture's top as its first row (v = 0). It is
     *     drawn into again by the next call, and deleted by {@link #resize} and {@link #close}.
     */
    public int render() {
        return nativeRender(open());
    }

    /**
     * Draws the picture as {@link #render} does and copies it into a texture of the app's, finished
     * when the call returns. The texture stays bound to unit 0.
     *
     * @param texture name of a 2D texture of the current context whose level 0 is RGBA or RGB and
     *     at least as large as the picture; its first rows and columns are written, the picture's
     *     top as the first row (v = 0)
     */
    public void renderInto(int texture) {
        nativeRenderInto(open(), texture);
    }

    /**
     * Copies the last picture that was drawn, 4 bytes a pixel: red, green, blue, alpha.
     *
     * @param rgba direct and writable, width * height * 4 bytes of the picture's size
     */
    public void readPixels(@NonNull ByteBuffer rgba) {
        final long open = open();
        checkBuffer("reading the picture", rgba);
        if (rgba.isReadOnly()) {
            throw new ParallaxException("reading the picture: the buffer is read-only");
        }
        nativeReadPixels(open, rgba, rgba.position(), rgba.remaining());
    }

    /**
     * Tells the width of the pictures.
     *
     * @return in pixels
     */
    public int width() {
        return nativeWidth(open());
    }

    /**
     * Tells the height of the pictures.
     *
     * @return in pixels
     */
    public int height() {
        return nativeHeight(open());
    }

    /**
     * Tells what was planned for the images in use.
     *
     * @return zeroes but for the mesh's extents until photo and depth map are set
     */
    @NonNull
    public ParallaxGeometry geometry() {
        return nativeGeometry(open());
    }

    /**
     * Frees memory and GL objects; calling it again does nothing. Like every call it belongs to the
     * thread that created the renderer, but once that thread has ended any other may close.
     *
     * <p>Where the context of {@link #create} is not current, perhaps because it was lost, the
     * memory is freed and the GL objects are left to go with their context. After a loss close
     * before anything is made in the new context: it may look like the old one.
     */
    @Override
    public void close() {
        if (Thread.currentThread() != owner && owner.isAlive()) {
            throw wrongThread();
        }
        final long open = handle.getAndSet(0);
        if (open != 0) {
            nativeClose(open);
        }
    }

    /** The native half's address, for the owner while the renderer is open. */
    private long open() {
        if (Thread.currentThread() != owner) {
            throw wrongThread();
        }
        final long open = handle.get();
        if (open == 0) {
            throw new ParallaxException("the renderer is closed");
        }
        return open;
    }

    /**
     * Loads the native library, as this class's initializer does. An initializer in another class
     * would do it too, but loading initializes all classes with native methods, and two threads
     * that begin with one class each would wait for each other.
     */
    static void loadLibrary() {}

    private static ParallaxException wrongThread() {
        return new ParallaxException(
                "called from another thread than the one that created the renderer");
    }

    static void checkBuffer(String what, ByteBuffer buffer) {
        if (buffer == null) {
            throw new ParallaxException(what + ": no buffer given");
        }
        if (!buffer.isDirect()) {
            throw new ParallaxException(
                    what + ": the buffer is not direct; ByteBuffer.allocateDirect makes one");
        }
    }

    private static void checkName(String name) {
        if (name == null) {
            throw new ParallaxException("parameter: no name given");
        }
    }

    // The first argument is the native half's address, which native code trusts.

    private static native long nativeCreate(
            int width, int height, int orientation, boolean offscreen);

    private static native void nativeSetPhoto(
            long open,
            int width,
            int height,
            ByteBuffer pixels,
            int position,
            int bytes,
            int bytesPerPixel);

    private static native void nativeSetDepth(
            long open, int width, int height, ByteBuffer depth, int position, int bytes);

    private static native ParallaxParameter[] nativeParameters();

    private static native void nativeCheckParameter(String name, double value);

    private static native void nativeSetParameter(long open, String name, double value);

    private static native double nativeParameter(long open, String name);

    private static native void nativeApplyProperties(long open, int orientation);

    private static native void nativeResize(long open, int width, int height);

    private static native void nativeLookAt(long open, float x, float y);

    private static native void nativeSetAccelerometerData(long open, float x, float y, float z);

    private static native void nativeSetRotation(long open, float x, float y, float z);

    private static native void nativeSetTranslation(long open, float x, float y, float z);

    private static native int nativeRender(long open);

    private static native void nativeRenderInto(long open, int texture);

    private static native void nativeReadPixels(
            long open, ByteBuffer rgba, int position, int bytes);

    private static native int nativeWidth(long open);

    private static native int nativeHeight(long open);

    private static native ParallaxGeometry nativeGeometry(long open);

    private static native void nativeClose(long open);
}
