package quorvane.parallax;

import android.graphics.SurfaceTexture;
import java.util.concurrent.atomic.AtomicInteger;

/** Counts what is shown, and loses its context when a test says so. */
final class Screen implements AutoCloseable {
    static final AtomicInteger OPEN = new AtomicInteger();
    static final AtomicInteger FRAMES = new AtomicInteger();
    static final AtomicInteger LOSSES = new AtomicInteger();
    static volatile boolean afterRelease;

    private final SurfaceTexture window;

    Screen(Object nativeWindow) {
        window = (SurfaceTexture) nativeWindow;
        OPEN.incrementAndGet();
    }

    int largestTexture() {
        return 4096;
    }

    void show(int texture, int width, int height) {
        afterRelease |= window.released;
        if (LOSSES.getAndUpdate(left -> Math.max(0, left - 1)) > 0) {
            throw new ParallaxException("lost");
        }
        FRAMES.incrementAndGet();
    }

    @Override
    public void close() {
        OPEN.decrementAndGet();
    }
}
