package quorvane.parallax;

import android.graphics.SurfaceTexture;
import android.view.SurfaceHolder;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.concurrent.atomic.AtomicReference;

/** Counts what is shown, and loses its context when a test says so. */
final class Screen implements AutoCloseable {
    static final AtomicInteger OPEN = new AtomicInteger();
    static final AtomicInteger FRAMES = new AtomicInteger();
    static final AtomicInteger LOSSES = new AtomicInteger();
    static volatile boolean afterRelease;
    /** What the driver throws next, once; null: nothing. */
    static final AtomicReference<RuntimeException> FAULT = new AtomicReference<>();

    private final Object window;

    Screen(Object nativeWindow) {
        window = nativeWindow;
        OPEN.incrementAndGet();
    }

    void resized(Object nativeWindow) {
        if (nativeWindow != window) {
            throw new ParallaxException("another window");
        }
    }

    int largestTexture() {
        return 4096;
    }

    void show(int texture, int width, int height) {
        afterRelease |= window instanceof SurfaceHolder ? ((SurfaceHolder) window).gone()
                                                        : ((SurfaceTexture) window).released;
        RuntimeException fault = FAULT.getAndSet(null);
        if (fault != null) {
            throw fault;
        }
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
