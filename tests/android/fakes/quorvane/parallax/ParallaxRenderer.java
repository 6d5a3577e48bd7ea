package quorvane.parallax;

import java.nio.ByteBuffer;
import java.util.concurrent.atomic.AtomicInteger;

/** Says what it was told last. */
public final class ParallaxRenderer implements AutoCloseable {
    static final AtomicInteger OPEN = new AtomicInteger();
    static volatile String size;
    static volatile String photo;
    static volatile String depth;
    static volatile String parameter;
    static volatile float x;
    static volatile boolean closedTooLate;

    private final Thread owner = Thread.currentThread();

    public static ParallaxRenderer create(int width, int height, int orientation) {
        size = width + " x " + height;
        OPEN.incrementAndGet();
        return new ParallaxRenderer();
    }

    public void setParameter(String name, double value) {
        if (name.equals("nonsense")) {
            throw new ParallaxException("unknown parameter 'nonsense'");
        }
        parameter = name + " = " + value;
    }

    public void setPhotoRgba(int width, int height, ByteBuffer rgba) {
        photo = width + " x " + height;
    }

    public void use(PicturePlan plan) {
        depth = plan.depth;
    }

    public void lookAt(float newX, float y) {
        x = newX;
    }

    public int render() {
        if (Thread.currentThread() != owner) {
            throw new ParallaxException("called from another thread");
        }
        return 1;
    }

    @Override
    public void close() {
        // Its context must still be there.
        closedTooLate |= Screen.OPEN.get() < OPEN.getAndDecrement();
    }
}
