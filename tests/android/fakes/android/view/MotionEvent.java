package android.view;

public final class MotionEvent {
    public static final int ACTION_DOWN = 0;
    public static final int ACTION_UP = 1;
    public static final int ACTION_MOVE = 2;
    public static final int ACTION_CANCEL = 3;

    private final int action;
    private final int finger;
    private final float x;
    private final float y;

    public MotionEvent(int action, int finger, float x) {
        this(action, finger, x, 50f);
    }

    public MotionEvent(int action, int finger, float x, float y) {
        this.action = action;
        this.finger = finger;
        this.x = x;
        this.y = y;
    }

    public int getActionMasked() {
        return action;
    }

    public int getPointerId(int pointerIndex) {
        return finger;
    }

    public float getX() {
        return x;
    }

    public float getY() {
        return y;
    }
}
