package android.graphics;

public class Color {
    public static final int GRAY = 0xFF888888;
    public static final int WHITE = 0xFFFFFFFF;
}
