package android.graphics;

public class Paint {
    public static final int FILTER_BITMAP_FLAG = 0x02;

    public Paint(int flags) {}

    public void setColor(int color) {}
}
