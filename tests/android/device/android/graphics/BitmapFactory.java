package android.graphics;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.io.InputStream;
import java.util.concurrent.atomic.AtomicInteger;
import javax.imageio.ImageIO;

/** Decodes with Java's own readers. */
public class BitmapFactory {
    /** Pictures that were decoded, and not only looked at. */
    public static final AtomicInteger DECODED = new AtomicInteger();
    /** Pixels of the largest of them. */
    public static final AtomicInteger LARGEST = new AtomicInteger();

    public static class Options {
        public boolean inJustDecodeBounds;
        public int inSampleSize;
        public int outWidth;
        public int outHeight;
        public ColorSpace inPreferredColorSpace;
    }

    public static Bitmap decodeStream(InputStream stream, Rect outPadding, Options options) {
        BufferedImage image;
        try {
            image = ImageIO.read(stream);
        } catch (IOException e) {
            image = null;
        }
        if (image == null) {
            options.outWidth = -1;
            options.outHeight = -1;
            return null;
        }
        int smaller = Math.max(1, options.inSampleSize);
        Bitmap bitmap = new Bitmap(image.getWidth() / smaller, image.getHeight() / smaller);
        options.outWidth = bitmap.getWidth();
        options.outHeight = bitmap.getHeight();
        if (options.inJustDecodeBounds) {
            return null;
        }
        DECODED.incrementAndGet();
        LARGEST.accumulateAndGet(bitmap.argb.length, Math::max);
        for (int y = 0; y < bitmap.getHeight(); ++y) {
            for (int x = 0; x < bitmap.getWidth(); ++x) {
                bitmap.argb[y * bitmap.getWidth() + x] = pixel(image, x * smaller, y * smaller);
            }
        }
        return bitmap;
    }

    // Java takes a gray sample for linear light.
    private static int pixel(BufferedImage image, int x, int y) {
        return image.getRaster().getNumBands() > 1
                ? image.getRGB(x, y)
                : 0xff000000 | image.getRaster().getSample(x, y, 0) * 0x010101;
    }
}
