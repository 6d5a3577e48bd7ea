package android.view;

import android.os.Handler;
import android.os.Looper;
import java.util.concurrent.RejectedExecutionException;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicInteger;

/** A frame every 2 ms. */
public final class Choreographer {
    /** How often a thread was woken for a frame. */
    public static final AtomicInteger WAKES = new AtomicInteger();

    private static final ThreadLocal<Choreographer> OWN =
            ThreadLocal.withInitial(Choreographer::new);

    private final Looper looper = Handler.current();
    private final Runnable tick = () -> Handler.run(Handler.current(), this::frame);
    private FrameCallback pending;

    public static Choreographer getInstance() {
        return OWN.get();
    }

    public void postFrameCallback(FrameCallback callback) {
        pending = callback;
        try {
            looper.queue.schedule(tick, 2, TimeUnit.MILLISECONDS);
        } catch (RejectedExecutionException e) {
            // The thread is ending.
        }
    }

    public void removeFrameCallback(FrameCallback callback) {
        pending = null;
    }

    private void frame() {
        FrameCallback callback = pending;
        if (callback != null) {
            WAKES.incrementAndGet();
            pending = null;
            callback.doFrame(System.nanoTime());
        }
    }

    public interface FrameCallback {
        void doFrame(long frameTimeNanos);
    }
}
