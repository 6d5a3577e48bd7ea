package android.view;

public final class Display {
    public static final int DEFAULT_DISPLAY = 0;

    public int getRotation() {
        throw new UnsupportedOperationException();
    }
}
