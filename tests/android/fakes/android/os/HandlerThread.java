package android.os;

import java.util.concurrent.atomic.AtomicInteger;

public class HandlerThread extends Thread {
    /** Those that were not told to quit. */
    public static final AtomicInteger RUNNING = new AtomicInteger();

    private final Looper looper = new Looper();

    public HandlerThread(String name, int priority) {
        RUNNING.incrementAndGet();
    }

    public Looper getLooper() {
        return looper;
    }

    public boolean quitSafely() {
        RUNNING.decrementAndGet();
        looper.queue.shutdown();
        return true;
    }
}
