package android.view;

import android.os.Handler;
import android.os.Looper;
import java.util.concurrent.RejectedExecutionException;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.concurrent.atomic.AtomicReference;
import java.util.function.Consumer;

/** A frame every 2 ms. */
public final class Choreographer {
    /** How often a thread was woken for a frame. */
    public static final AtomicInteger WAKES = new AtomicInteger();

    private static final AtomicReference<Consumer<FrameCallback>> TAKER = new AtomicReference<>();
    private static final ThreadLocal<Choreographer> OWN =
            ThreadLocal.withInitial(Choreographer::new);

    private final Looper looper = Handler.current();
    private final Runnable tick = () -> Handler.run(Handler.current(), this::frame);
    private FrameCallback pending;
    private boolean handedOver;

    public static Choreographer getInstance() {
        return OWN.get();
    }

    /** Hands over the next frame's callback, and shows nothing until that has returned. */
    public static void atNextFrame(Consumer<FrameCallback> frames) {
        TAKER.set(frames);
    }

    public void postFrameCallback(FrameCallback callback) {
        pending = callback;
        if (handedOver) {
            return;
        }
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
            Consumer<FrameCallback> frames = TAKER.getAndSet(null);
            if (frames == null) {
                callback.doFrame(System.nanoTime());
                return;
            }
            handedOver = true;
            frames.accept(callback);
            handedOver = false;
        }
    }

    public interface FrameCallback {
        void doFrame(long frameTimeNanos);
    }
}
