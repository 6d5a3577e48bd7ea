package quorvane.parallax;

import android.graphics.Bitmap;
import android.graphics.BitmapFactory;
import android.graphics.Matrix;
import android.media.ExifInterface;
import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;

/** From image files and bitmaps to the bytes that {@link ParallaxRenderer} takes. */
final class Pixels {
    private Pixels() {}

    /**
     * Decodes an image file upright, in a size whose longer side is not below {@code longest}
     * pixels if the file's is not.
     *
     * @param what for the sentence: "photo" or "depth map"
     */
    static Bitmap decode(String what, ImageSource source, int longest) {
        try {
            BitmapFactory.Options options = new BitmapFactory.Options();
            options.inJustDecodeBounds = true;
            decode(source, options);
            if (options.outWidth < 1 || options.outHeight < 1) {
                throw new ParallaxException(
                        what + ": not a picture that this device decodes; JPEG or PNG will do");
            }
            options.inJustDecodeBounds = false;
            options.inSampleSize =
                    FitSizes.sampleSize(options.outWidth, options.outHeight, longest);
            Bitmap bitmap = decode(source, options);
            if (bitmap == null) {
                throw new ParallaxException(what + ": the file is damaged or ends too early");
            }
            return upright(bitmap, orientation(source));
        } catch (IOException | SecurityException e) {
            throw new ParallaxException(what + ": cannot be read (" + e.getMessage() + ")");
        } catch (OutOfMemoryError e) {
            throw new ParallaxException(what + ": too little memory to decode it");
        }
    }

    /**
     * Cuts {@code part} (left, top, width, height) out of a bitmap and scales it.
     *
     * @return width * height * 4 bytes: red, green, blue, alpha
     */
    static ByteBuffer rgba(Bitmap bitmap, int[] part, int width, int height) {
        Bitmap plain = bitmap.getConfig() == Bitmap.Config.ARGB_8888
                ? bitmap
                : bitmap.copy(Bitmap.Config.ARGB_8888, false);
        Bitmap cut = Bitmap.createBitmap(plain, part[0], part[1], part[2], part[3]);
        Bitmap scaled = Bitmap.createScaledBitmap(cut, width, height, true);
        ByteBuffer bytes = ByteBuffer.allocateDirect(4 * width * height);
        scaled.copyPixelsToBuffer(bytes);
        bytes.rewind();
        // Each may be the one before, and so the caller's own.
        if (scaled != cut) {
            scaled.recycle();
        }
        if (cut != plain) {
            cut.recycle();
        }
        if (plain != bitmap) {
            plain.recycle();
        }
        return bytes;
    }

    /** As {@link #rgba}, but the red values only: width * height bytes. */
    static ByteBuffer red(Bitmap bitmap, int[] part, int width, int height) {
        ByteBuffer rgba = rgba(bitmap, part, width, height);
        ByteBuffer red = ByteBuffer.allocateDirect(width * height);
        for (int i = 0; i < red.capacity(); ++i) {
            red.put(i, rgba.get(4 * i));
        }
        return red;
    }

    private static Bitmap decode(ImageSource source, BitmapFactory.Options options)
            throws IOException {
        try (InputStream file = source.open()) {
            return BitmapFactory.decodeStream(file, null, options);
        }
    }

    private static int orientation(ImageSource source) throws IOException {
        try (InputStream file = source.open()) {
            return new ExifInterface(file).getAttributeInt(
                    ExifInterface.TAG_ORIENTATION, ExifInterface.ORIENTATION_NORMAL);
        }
    }

    private static Bitmap upright(Bitmap bitmap, int orientation) {
        Matrix matrix = new Matrix();
        if (ExifTurn.mirrored(orientation)) {
            matrix.postScale(-1f, 1f);
        }
        matrix.postRotate(ExifTurn.degrees(orientation));
        return matrix.isIdentity()
                ? bitmap
                : Bitmap.createBitmap(
                        bitmap, 0, 0, bitmap.getWidth(), bitmap.getHeight(), matrix, true);
    }
}
