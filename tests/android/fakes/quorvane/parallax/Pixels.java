package quorvane.parallax;

import android.graphics.Bitmap;
import java.io.IOException;
import java.nio.ByteBuffer;

final class Pixels {
    private Pixels() {}

    static Bitmap decode(String what, ImageSource source, int longest) {
        try {
            source.open();
            return new Bitmap(400, 300);
        } catch (IOException e) {
            throw new ParallaxException(what + ": cannot be read (" + e.getMessage() + ")");
        }
    }

    static ByteBuffer rgba(Bitmap bitmap, int[] part, int width, int height) {
        return null;
    }

    static ByteBuffer red(Bitmap bitmap, int[] part, int width, int height) {
        return null;
    }
}
