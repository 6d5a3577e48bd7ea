package android.os;

import java.util.List;
import java.util.Map;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.concurrent.Future;
import java.util.concurrent.RejectedExecutionException;
import java.util.concurrent.TimeUnit;

public class Handler {
    /** What would have ended an app. */
    public static final List<Throwable> UNCAUGHT = new CopyOnWriteArrayList<>();

    private static final ThreadLocal<Looper> CURRENT = new ThreadLocal<>();

    private final Looper looper;
    private final Map<Runnable, Future<?>> delayed = new ConcurrentHashMap<>();

    public Handler(Looper looper) {
        this.looper = looper;
    }

    /** The looper whose thread this is. */
    public static Looper current() {
        return CURRENT.get();
    }

    /** Runs a callback of the platform on a looper's thread. */
    public static void run(Looper looper, Runnable runnable) {
        CURRENT.set(looper);
        try {
            runnable.run();
        } catch (Throwable e) {
            UNCAUGHT.add(e);
        }
    }

    public final boolean post(Runnable runnable) {
        try {
            looper.queue.execute(() -> run(looper, runnable));
            return true;
        } catch (RejectedExecutionException e) {
            return false;
        }
    }

    public final boolean postDelayed(Runnable runnable, long delayMillis) {
        try {
            delayed.put(runnable, looper.queue.schedule(
                    () -> run(looper, runnable), delayMillis, TimeUnit.MILLISECONDS));
            return true;
        } catch (RejectedExecutionException e) {
            return false;
        }
    }

    public final void removeCallbacks(Runnable runnable) {
        Future<?> waiting = delayed.remove(runnable);
        if (waiting != null) {
            waiting.cancel(false);
        }
    }
}
