package quorvane.parallax;

import android.graphics.Bitmap;
import androidx.annotation.AnyThread;
import androidx.annotation.NonNull;
import androidx.annotation.Nullable;
import java.nio.ByteBuffer;

/**
 * A depth map for a photo from anywhere: it shows what the photo shows, upright or with an Exif
 * orientation of its own, in any size. The nearest sample is the largest one unless {@link
 * #largerIsFarther} says otherwise.
 *
 * <p>Objects never change. Setting the same object again does nothing, and two that name the same
 * bitmap or source are equal.
 */
@AnyThread
public final class Depth {
    private final Bitmap bitmap;
    private final ImageSource file;
    private final Samples samples;
    private final boolean largerIsFarther;

    private Depth(Bitmap bitmap, ImageSource file, Samples samples, boolean largerIsFarther) {
        this.bitmap = bitmap;
        this.file = file;
        this.samples = samples;
        this.largerIsFarther = largerIsFarther;
    }

    /**
     * A bitmap, of which red counts, or alpha where it has nothing else. The app leaves it as it is
     * as long as a view has it.
     *
     * @throws IllegalArgumentException for null or a recycled bitmap
     */
    @NonNull
    public static Depth of(@NonNull Bitmap bitmap) {
        return new Depth(Images.usable("depth map", bitmap), null, null, false);
    }

    /**
     * An image file, of which red counts.
     *
     * @throws IllegalArgumentException for null
     */
    @NonNull
    public static Depth of(@NonNull ImageSource file) {
        return new Depth(null, Images.given("depth map", file), null, false);
    }

    /**
     * Bytes, a sample each, which are copied.
     *
     * @param samples rows from the top without padding, from the buffer's position on, which stays
     * @throws IllegalArgumentException where they are fewer than width x height, or a side is below 1
     */
    @NonNull
    public static Depth of(@NonNull ByteBuffer samples, int width, int height) {
        Images.given("depth map", samples);
        requireSamples(width, height, samples.remaining());
        ByteBuffer source = samples.duplicate();
        source.limit(source.position() + width * height);
        ByteBuffer copy = ByteBuffer.allocateDirect(width * height);
        copy.put(source);
        copy.rewind();
        return new Depth(null, null, new Samples(width, height, copy), false);
    }

    /**
     * Numbers such as a depth model gives, of any range: the smallest becomes 0 and the largest
     * 255. What is not finite is taken for the smallest. They are linear in 1 / distance, as
     * disparities are; distances in metres are to be inverted before, as 1 / d.
     *
     * @param samples rows from the top without padding; copied
     * @throws IllegalArgumentException where they are fewer than width x height, or a side is below 1
     */
    @NonNull
    public static Depth of(@NonNull float[] samples, int width, int height) {
        Images.given("depth map", samples);
        requireSamples(width, height, samples.length);
        int count = width * height;
        float smallest = Float.POSITIVE_INFINITY;
        float largest = Float.NEGATIVE_INFINITY;
        for (int i = 0; i < count; ++i) {
            if (Math.abs(samples[i]) < Float.POSITIVE_INFINITY) {
                smallest = Math.min(smallest, samples[i]);
                largest = Math.max(largest, samples[i]);
            }
        }
        double range = (double) largest - smallest;
        ByteBuffer bytes = ByteBuffer.allocateDirect(count);
        for (int i = 0; i < count; ++i) {
            boolean finite = Math.abs(samples[i]) < Float.POSITIVE_INFINITY;
            double level = finite && range > 0.0 ? ((double) samples[i] - smallest) / range : 0.0;
            bytes.put(i, (byte) Math.round(255.0 * level));
        }
        return new Depth(null, null, new Samples(width, height, bytes), false);
    }

    /** The same map, of which the smallest sample is the nearest. */
    @NonNull
    public Depth largerIsFarther() {
        return new Depth(bitmap, file, samples, true);
    }

    /** Where the samples come from: a bitmap, a file, or they themselves. */
    Object origin() {
        return bitmap != null ? bitmap : file != null ? file : samples;
    }

    /** The samples, larger nearer; whoever decodes a file keeps them. */
    Samples samples(int longest) {
        Samples stored = samples != null ? samples
                : bitmap != null ? Pixels.depth(bitmap, longest) : Pixels.depth(file, longest);
        return largerIsFarther ? stored.inverted() : stored;
    }

    /** Whether the app has said that the smallest sample is the nearest. */
    boolean isLargerFarther() {
        return largerIsFarther;
    }

    ImageSource file() {
        return file;
    }

    @Override
    public boolean equals(@Nullable Object other) {
        return other instanceof Depth && ((Depth) other).origin().equals(origin())
                && ((Depth) other).largerIsFarther == largerIsFarther;
    }

    @Override
    public int hashCode() {
        return origin().hashCode() + (largerIsFarther ? 1 : 0);
    }

    private static void requireSamples(int width, int height, int count) {
        if (width < 1 || height < 1 || (long) width * height > count) {
            throw new IllegalArgumentException("depth map: " + count + " samples are not " + width
                    + " x " + height + "; sides are 1 or more");
        }
    }
}
