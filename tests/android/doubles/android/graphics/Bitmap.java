package android.graphics;

/** Nothing but a size. */
public final class Bitmap {
    private final int width;
    private final int height;
    private volatile boolean recycled;

    public Bitmap(int width, int height) {
        this.width = width;
        this.height = height;
    }

    public int getWidth() {
        return width;
    }

    public int getHeight() {
        return height;
    }

    public boolean isRecycled() {
        return recycled;
    }

    public void recycle() {
        recycled = true;
    }
}
