package android.os;

import java.util.concurrent.ScheduledThreadPoolExecutor;

/** A thread with a queue. */
public final class Looper {
    private static final Looper MAIN = new Looper();

    public final ScheduledThreadPoolExecutor queue =
            new ScheduledThreadPoolExecutor(1, Looper::daemon);

    public Looper() {
        queue.setRemoveOnCancelPolicy(true);
    }

    public static Looper getMainLooper() {
        return MAIN;
    }

    private static Thread daemon(Runnable run) {
        Thread thread = new Thread(run);
        thread.setDaemon(true);
        return thread;
    }
}
