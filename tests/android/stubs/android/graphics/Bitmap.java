package android.graphics;

import androidx.annotation.RequiresApi;
import java.nio.Buffer;

public final class Bitmap {
    public static Bitmap createBitmap(int width, int height, Config config) {
        throw new UnsupportedOperationException();
    }

    public static Bitmap createScaledBitmap(Bitmap source, int width, int height, boolean filter) {
        throw new UnsupportedOperationException();
    }

    public Bitmap copy(Config config, boolean isMutable) {
        throw new UnsupportedOperationException();
    }

    public int getPixel(int x, int y) {
        throw new UnsupportedOperationException();
    }

    public void copyPixelsToBuffer(Buffer target) {}

    public Config getConfig() {
        throw new UnsupportedOperationException();
    }

    public int getWidth() {
        throw new UnsupportedOperationException();
    }

    public int getHeight() {
        throw new UnsupportedOperationException();
    }

    public boolean isRecycled() {
        throw new UnsupportedOperationException();
    }

    public void recycle() {}

    public enum Config {
        ALPHA_8,
        RGB_565,
        ARGB_4444,
        ARGB_8888,
        @RequiresApi(26)
        RGBA_F16,
        @RequiresApi(26)
        HARDWARE
    }
}
