package android.graphics;

import java.nio.Buffer;
import java.nio.ByteBuffer;

/** Pixels as Java's own images have them. */
public final class Bitmap {
    public enum Config { ALPHA_8, RGB_565, ARGB_4444, ARGB_8888, RGBA_F16, HARDWARE }

    final int[] argb;
    private final int width;
    private final int height;
    private volatile boolean recycled;

    Bitmap(int width, int height) {
        this.width = width;
        this.height = height;
        argb = new int[width * height];
    }

    public static Bitmap createBitmap(int width, int height, Config config) {
        return new Bitmap(width, height);
    }

    public static Bitmap createScaledBitmap(Bitmap source, int width, int height, boolean filter) {
        Matrix matrix = new Matrix();
        matrix.postScale(width / (float) source.width, height / (float) source.height);
        Bitmap scaled = new Bitmap(width, height);
        new Canvas(scaled).drawBitmap(source, matrix, null);
        return scaled;
    }

    public Bitmap copy(Config config, boolean isMutable) {
        throw new UnsupportedOperationException();
    }

    public int getPixel(int x, int y) {
        return argb[y * width + x];
    }

    public void copyPixelsToBuffer(Buffer target) {
        ByteBuffer bytes = (ByteBuffer) target;
        for (int pixel : argb) {
            bytes.put((byte) (pixel >> 16)).put((byte) (pixel >> 8)).put((byte) pixel);
            bytes.put((byte) (pixel >> 24));
        }
    }

    public Config getConfig() {
        return Config.ARGB_8888;
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
