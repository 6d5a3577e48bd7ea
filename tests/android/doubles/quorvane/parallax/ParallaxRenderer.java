package quorvane.parallax;

import java.nio.ByteBuffer;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.atomic.AtomicInteger;

/** Says what it was told last, and how often. */
public final class ParallaxRenderer implements AutoCloseable {
    static final AtomicInteger OPEN = new AtomicInteger();
    static final AtomicInteger CREATED = new AtomicInteger();
    static final AtomicInteger PHOTOS = new AtomicInteger();
    static final AtomicInteger DEPTHS = new AtomicInteger();
    static final Map<String, Double> SET = new ConcurrentHashMap<>();
    static volatile String size;
    static volatile String photo;
    static volatile String depth;
    static volatile float x;
    static volatile boolean closedTooLate;
    static volatile Error absent;
    /** What a frame waits for. */
    static volatile CountDownLatch stuck;

    private final Thread owner = Thread.currentThread();

    public static ParallaxRenderer create(int width, int height, int orientation) {
        if (absent != null) {
            throw absent;
        }
        size = width + " x " + height;
        OPEN.incrementAndGet();
        CREATED.incrementAndGet();
        return new ParallaxRenderer();
    }

    public static ParallaxRenderer createOffscreen(int width, int height, int orientation) {
        return create(width, height, orientation);
    }

    public static List<ParallaxParameter> parameters() {
        return Arrays.asList(new ParallaxParameter("fov_scale", false, 0.05, 1, 0, ""),
                new ParallaxParameter("depth_contrast", false, 0, 100, 1, ""));
    }

    static void checkParameter(String name, double value) {
        for (ParallaxParameter known : parameters()) {
            if (known.name.equals(name) && value >= known.minimum && value <= known.maximum) {
                return;
            }
        }
        throw new ParallaxException("unknown parameter '" + name + "'");
    }

    public void setParameter(String name, double value) {
        checkThread();
        SET.put(name, value);
    }

    public void setPhotoRgba(int width, int height, ByteBuffer rgba) {
        checkThread();
        PHOTOS.incrementAndGet();
        photo = width + " x " + height;
    }

    public void setDepth(int width, int height, ByteBuffer samples) {
        checkThread();
        DEPTHS.incrementAndGet();
        depth = width + " x " + height;
    }

    public void resize(int width, int height) {
        checkThread();
        size = width + " x " + height;
    }

    public void lookAt(float newX, float y) {
        x = newX;
    }

    public int render() {
        checkThread();
        CountDownLatch wait = stuck;
        if (wait != null) {
            try {
                wait.await();
            } catch (InterruptedException e) {
                throw new AssertionError(e);
            }
        }
        return 1;
    }

    @Override
    public void close() {
        checkThread();
        // Its context must still be there.
        closedTooLate |= Screen.OPEN.get() < OPEN.getAndDecrement();
    }

    private void checkThread() {
        if (Thread.currentThread() != owner) {
            throw new ParallaxException("called from another thread");
        }
    }
}
