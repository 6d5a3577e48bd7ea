package android.os;

import java.util.concurrent.RejectedExecutionException;

public class Handler {
    private static final ThreadLocal<Looper> CURRENT = new ThreadLocal<>();

    private final Looper looper;

    public Handler(Looper looper) {
        this.looper = looper;
    }

    /** The looper whose thread this is. */
    public static Looper current() {
        return CURRENT.get();
    }

    public final boolean post(Runnable runnable) {
        try {
            looper.queue.execute(() -> {
                CURRENT.set(looper);
                runnable.run();
            });
            return true;
        } catch (RejectedExecutionException e) {
            return false;
        }
    }
}
