package android.view;

public final class MotionEvent {
    public static final int ACTION_DOWN = 0;
    public static final int ACTION_UP = 1;
    public static final int ACTION_MOVE = 2;
    public static final int ACTION_CANCEL = 3;

    public int getActionMasked() {
        throw new UnsupportedOperationException();
    }

    public int getPointerId(int pointerIndex) {
        throw new UnsupportedOperationException();
    }

    public float getX() {
        throw new UnsupportedOperationException();
    }

    public float getY() {
        throw new UnsupportedOperationException();
    }
}
