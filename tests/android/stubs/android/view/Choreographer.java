package android.view;

public final class Choreographer {
    public static Choreographer getInstance() {
        throw new UnsupportedOperationException();
    }

    public void postFrameCallback(FrameCallback callback) {}

    public void removeFrameCallback(FrameCallback callback) {}

    public interface FrameCallback {
        void doFrame(long frameTimeNanos);
    }
}
