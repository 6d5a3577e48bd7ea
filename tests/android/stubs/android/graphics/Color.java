package android.graphics;

public class Color {
    public static final int WHITE = 0xFFFFFFFF;
}
