package quorvane.parallax;

import android.graphics.Bitmap;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.util.concurrent.atomic.AtomicInteger;

/** Decodes every file to 400 x 300 pixels, and lets through whatever its source throws. */
final class Pixels {
    /** Files opened, for whatever. */
    static final AtomicInteger OPENED = new AtomicInteger();

    private Pixels() {}

    static final class Bounds {
        final int width;
        final int height;

        Bounds(int width, int height) {
            this.width = width;
            this.height = height;
        }
    }

    static final class Portrait {
        final ImageSource photo;
        final Bounds bounds = new Bounds(400, 300);
        final Samples depth = samples(80, 60);

        Portrait(ImageSource photo) {
            this.photo = photo;
        }
    }

    static Bounds bounds(ImageSource file) {
        open(file);
        return new Bounds(400, 300);
    }

    static Bitmap photo(ImageSource file, Bounds bounds, int[] part, int width, int height) {
        open(file);
        return new Bitmap(width, height);
    }

    static Bitmap photo(Bitmap bitmap, int[] part, int width, int height) {
        Images.usable("photo", bitmap);
        return new Bitmap(width, height);
    }

    static Samples depth(ImageSource file, int longest) {
        open(file);
        return samples(400, 300);
    }

    static Samples depth(Bitmap bitmap, int longest) {
        Images.usable("depth map", bitmap);
        return samples(bitmap.getWidth(), bitmap.getHeight());
    }

    static Portrait portrait(ImageSource file, int longest) {
        open(file);
        return new Portrait(file);
    }

    static ByteBuffer rgba(Bitmap bitmap) {
        return ByteBuffer.allocateDirect(4 * bitmap.getWidth() * bitmap.getHeight());
    }

    private static void open(ImageSource file) {
        OPENED.incrementAndGet();
        try {
            if (file.open() == null) {
                throw new IOException("no file");
            }
        } catch (IOException e) {
            throw new ParallaxException("file: cannot be read (" + e.getMessage() + ")");
        }
    }

    private static Samples samples(int width, int height) {
        return new Samples(width, height, ByteBuffer.allocateDirect(width * height));
    }
}
