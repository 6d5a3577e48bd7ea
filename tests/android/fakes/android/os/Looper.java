package android.os;

import java.util.concurrent.Executors;
import java.util.concurrent.ScheduledExecutorService;

/** A thread with a queue. */
public final class Looper {
    private static final Looper MAIN = new Looper();

    public final ScheduledExecutorService queue =
            Executors.newSingleThreadScheduledExecutor(Looper::daemon);

    public static Looper getMainLooper() {
        return MAIN;
    }

    private static Thread daemon(Runnable run) {
        Thread thread = new Thread(run);
        thread.setDaemon(true);
        return thread;
    }
}
