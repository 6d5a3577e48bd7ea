package android.os;

public class HandlerThread extends Thread {
    public HandlerThread(String name, int priority) {}

    public Looper getLooper() {
        throw new UnsupportedOperationException();
    }

    public boolean quitSafely() {
        throw new UnsupportedOperationException();
    }
}
