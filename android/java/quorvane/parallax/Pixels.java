package quorvane.parallax;

import android.graphics.Bitmap;
import android.graphics.BitmapFactory;
import android.graphics.Canvas;
import android.graphics.Color;
import android.graphics.ColorSpace;
import android.graphics.Matrix;
import android.graphics.Paint;
import android.media.ExifInterface;
import android.os.Build;
import java.io.ByteArrayInputStream;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;

/** From image files and bitmaps to the bytes that {@link ParallaxRenderer} takes. */
final class Pixels {
    private static final int LARGEST_FILE = 256 << 20;

    private Pixels() {}

    /** A picture in a file. */
    static final class Bounds {
        /** Upright. */
        final int width;
        final int height;
        /** Exif's code, which turns it upright. */
        final int orientation;

        Bounds(int storedWidth, int storedHeight, int orientation) {
            boolean across = ExifTurn.degrees(orientation) % 180 != 0;
            width = across ? storedHeight : storedWidth;
            height = across ? storedWidth : storedHeight;
            this.orientation = orientation;
        }
    }

    /** What is inside a portrait photo's file, which is in memory. */
    static final class Portrait {
        final ImageSource photo;
        final Bounds bounds;
        final Samples depth;

        Portrait(ImageSource photo, Bounds bounds, Samples depth) {
            this.photo = photo;
            this.bounds = bounds;
            this.depth = depth;
        }
    }

    private interface Reading<T> {
        T read() throws IOException;
    }

    /** Looks at a photo's size. */
    static Bounds bounds(ImageSource file) {
        return reading("photo", () -> bounds("photo", file, orientation(file)));
    }

    /**
     * Decodes a part of a photo, upright and in sRGB, scaled to a size that is not larger than it.
     *
     * @param part left, top, width and height in the upright photo's pixels
     */
    static Bitmap photo(ImageSource file, Bounds bounds, int[] part, int width, int height) {
        return reading("photo", () -> {
            int smaller = 1;
            while (part[2] / smaller / 2 >= width && part[3] / smaller / 2 >= height) {
                smaller *= 2;
            }
            Bitmap decoded = decode("photo", file, smaller);
            Bitmap drawn = drawn(decoded, bounds, part, width, height);
            decoded.recycle();
            return drawn;
        });
    }

    /** The same of a bitmap, which is upright. */
    static Bitmap photo(Bitmap bitmap, int[] part, int width, int height) {
        Images.usable("photo", bitmap);
        Bounds bounds = new Bounds(bitmap.getWidth(), bitmap.getHeight(), 1);
        // A pixel is drawn of four: one that stands for more is made of halves.
        Bitmap source = bitmap;
        while (part[2] * (source.getWidth() / 2.0) / bitmap.getWidth() >= width
                && part[3] * (source.getHeight() / 2.0) / bitmap.getHeight() >= height) {
            Bitmap half = Bitmap.createScaledBitmap(source, Math.max(1, source.getWidth() / 2),
                    Math.max(1, source.getHeight() / 2), true);
            recycleUnless(source, bitmap);
            source = half;
        }
        Bitmap drawn = drawn(source, bounds, part, width, height);
        recycleUnless(source, bitmap);
        return drawn;
    }

    /** Decodes a depth map, upright, whose longer side is at most twice {@code longest} samples. */
    static Samples depth(ImageSource file, int longest) {
        return reading("depth map", () -> depth(file, longest, orientation(file)));
    }

    /** Reads a bitmap's red, or alpha where it has nothing else. */
    static Samples depth(Bitmap bitmap, int longest) {
        Images.usable("depth map", bitmap);
        int side = Math.max(bitmap.getWidth(), bitmap.getHeight());
        int smaller = (side + longest - 1) / longest;
        int width = Math.max(1, bitmap.getWidth() / smaller);
        int height = Math.max(1, bitmap.getHeight() / smaller);
        int[] whole = {0, 0, bitmap.getWidth(), bitmap.getHeight()};
        return red(photo(bitmap, whole, width, height));
    }

    /** Reads a phone's photo and the depth inside it. */
    static Portrait portrait(ImageSource file, int longest) {
        return reading("photo", () -> {
            byte[] bytes = bytes(file);
            if (isHeif(bytes)) {
                throw new ParallaxException("photo: a HEIC or AVIF file, of which Android decodes "
                        + "the photo alone; share it as JPEG, or give a depth map of its own");
            }
            PortraitPhoto found = PortraitPhoto.read(bytes);
            if (found.container() == null) {
                throw new ParallaxException("photo: no depth is inside the file"
                        + (found.remarks().isEmpty() ? "" : " (" + found.remarks().get(0) + ")")
                        + "; give a depth map of its own");
            }
            byte[] original = found.original();
            ImageSource photo = () -> new ByteArrayInputStream(original != null ? original : bytes);
            Samples depth;
            if (found.depthPicture() == null) {
                depth = new Samples(found.depthWidth(), found.depthHeight(), found.depthMap());
            } else {
                Samples gray =
                        depth(() -> new ByteArrayInputStream(found.depthPicture()), longest, 1);
                depth = new Samples(gray.width, gray.height, found.depthMap(gray.bytes));
            }
            return new Portrait(photo, bounds("photo", photo, found.orientation()),
                    depth.upright(found.depthOrientation()));
        });
    }

    /**
     * The pixels of a bitmap that {@link #photo} made.
     *
     * @return direct, width * height * 4 bytes: red, green, blue, alpha
     */
    static ByteBuffer rgba(Bitmap bitmap) {
        ByteBuffer bytes = ByteBuffer.allocateDirect(4 * bitmap.getWidth() * bitmap.getHeight());
        bitmap.copyPixelsToBuffer(bytes);
        bytes.rewind();
        return bytes;
    }

    // A source is the app's code, or a content provider's, and throws what it likes.
    private static <T> T reading(String what, Reading<T> work) {
        try {
            return work.read();
        } catch (ParallaxException e) {
            throw e;
        } catch (IOException | RuntimeException e) {
            String why = e.getMessage() != null ? e.getMessage() : e.getClass().getSimpleName();
            throw new ParallaxException(what + ": cannot be read (" + why + ")");
        } catch (OutOfMemoryError e) {
            throw new ParallaxException(what + ": too little memory to decode it");
        }
    }

    private static InputStream opened(ImageSource file) throws IOException {
        InputStream stream = file.open();
        if (stream == null) {
            throw new IOException("the source gave no file");
        }
        return stream;
    }

    private static byte[] bytes(ImageSource file) throws IOException {
        try (InputStream stream = opened(file)) {
            ByteArrayOutputStream all = new ByteArrayOutputStream();
            byte[] piece = new byte[1 << 16];
            for (int count = stream.read(piece); count >= 0; count = stream.read(piece)) {
                all.write(piece, 0, count);
                if (all.size() > LARGEST_FILE) {
                    throw new ParallaxException("photo: larger than 256 MB");
                }
            }
            return all.toByteArray();
        }
    }

    private static boolean isHeif(byte[] file) {
        return file.length > 8 && file[4] == 'f' && file[5] == 't' && file[6] == 'y'
                && file[7] == 'p';
    }

    private static Bounds bounds(String what, ImageSource file, int orientation)
            throws IOException {
        BitmapFactory.Options options = new BitmapFactory.Options();
        options.inJustDecodeBounds = true;
        try (InputStream stream = opened(file)) {
            BitmapFactory.decodeStream(stream, null, options);
        }
        if (options.outWidth < 1 || options.outHeight < 1) {
            throw new ParallaxException(
                    what + ": not a picture that this device decodes; JPEG or PNG will do");
        }
        return new Bounds(options.outWidth, options.outHeight, orientation);
    }

    private static Bitmap decode(String what, ImageSource file, int smaller) throws IOException {
        BitmapFactory.Options options = new BitmapFactory.Options();
        options.inSampleSize = smaller;
        if (Build.VERSION.SDK_INT >= 26) {
            // Phones' photos have more colours than the surface shows, by other numbers.
            options.inPreferredColorSpace = ColorSpace.get(ColorSpace.Named.SRGB);
        }
        try (InputStream stream = opened(file)) {
            Bitmap bitmap = BitmapFactory.decodeStream(stream, null, options);
            if (bitmap == null) {
                throw new ParallaxException(what + ": the file is damaged or ends too early");
            }
            return bitmap;
        }
    }

    private static int orientation(ImageSource file) throws IOException {
        try (InputStream stream = opened(file)) {
            return new ExifInterface(stream).getAttributeInt(
                    ExifInterface.TAG_ORIENTATION, ExifInterface.ORIENTATION_NORMAL);
        }
    }

    private static Samples depth(ImageSource file, int longest, int orientation)
            throws IOException {
        Bounds stored = bounds("depth map", file, 1);
        Bitmap decoded = decode(
                "depth map", file, FitSizes.sampleSize(stored.width, stored.height, longest));
        int[] whole = {0, 0, decoded.getWidth(), decoded.getHeight()};
        Samples samples = red(photo(decoded, whole, decoded.getWidth(), decoded.getHeight()));
        decoded.recycle();
        return samples.upright(orientation);
    }

    /** The red values of a bitmap, which is recycled. */
    private static Samples red(Bitmap bitmap) {
        ByteBuffer rgba = rgba(bitmap);
        ByteBuffer red = ByteBuffer.allocateDirect(bitmap.getWidth() * bitmap.getHeight());
        for (int i = 0; i < red.capacity(); ++i) {
            red.put(i, rgba.get(4 * i));
        }
        Samples samples = new Samples(bitmap.getWidth(), bitmap.getHeight(), red);
        bitmap.recycle();
        return samples;
    }

    /**
     * Draws a part of the picture that {@code bounds} names onto a bitmap of its own. The source is
     * that picture as it is stored, or smaller.
     */
    private static Bitmap drawn(Bitmap source, Bounds bounds, int[] part, int width, int height) {
        // A hardware bitmap is drawn by the graphics processor only.
        boolean plain = Build.VERSION.SDK_INT < 26
                || source.getConfig() != Bitmap.Config.HARDWARE;
        Bitmap readable = plain ? source : source.copy(Bitmap.Config.ARGB_8888, false);
        Matrix matrix = new Matrix();
        int wide = readable.getWidth();
        int high = readable.getHeight();
        if (ExifTurn.mirrored(bounds.orientation)) {
            matrix.postScale(-1f, 1f);
            matrix.postTranslate(wide, 0f);
        }
        int degrees = ExifTurn.degrees(bounds.orientation);
        matrix.postRotate(degrees);
        matrix.postTranslate(degrees == 90 ? high : degrees == 180 ? wide : 0f,
                degrees == 180 ? high : degrees == 270 ? wide : 0f);
        boolean across = degrees % 180 != 0;
        matrix.postScale(bounds.width / (float) (across ? high : wide),
                bounds.height / (float) (across ? wide : high));
        matrix.postTranslate(-part[0], -part[1]);
        matrix.postScale(width / (float) part[2], height / (float) part[3]);
        Paint paint = new Paint(Paint.FILTER_BITMAP_FLAG);
        // What a bitmap of alpha alone is drawn in.
        paint.setColor(Color.WHITE);
        Bitmap target = Bitmap.createBitmap(width, height, Bitmap.Config.ARGB_8888);
        new Canvas(target).drawBitmap(readable, matrix, paint);
        recycleUnless(readable, source);
        return target;
    }

    private static void recycleUnless(Bitmap bitmap, Bitmap callers) {
        if (bitmap != callers) {
            bitmap.recycle();
        }
    }
}
