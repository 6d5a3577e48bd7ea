package android.os;

public class Handler {
    public Handler(Looper looper) {}

    public final boolean post(Runnable runnable) {
        throw new UnsupportedOperationException();
    }

    public final boolean postDelayed(Runnable runnable, long delayMillis) {
        throw new UnsupportedOperationException();
    }

    public final void removeCallbacks(Runnable runnable) {}
}
