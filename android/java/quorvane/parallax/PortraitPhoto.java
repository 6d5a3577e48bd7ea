package quorvane.parallax;

import androidx.annotation.AnyThread;
import androidx.annotation.NonNull;
import androidx.annotation.Nullable;
import java.nio.ByteBuffer;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Collections;
import java.util.List;

/**
 * What a phone's camera has left in a portrait photo's file beside the picture: the depth, and the
 * photo before its background was blurred. Nothing here decodes a picture.
 *
 * <p>Use: {@link #read} the file's bytes. Where {@link #container} is not null, decode {@link
 * #original}, or the file itself where that is null, and {@link #depthPicture}, with {@code
 * BitmapFactory} for one. {@link #depthMap(ByteBuffer)} makes of the latter's gray samples what
 * {@link ParallaxRenderer#setDepth} takes; where the depth is bare samples, {@link #depthMap()} is
 * that already. Photo and depth map are then to be turned upright, each by its own orientation, and
 * scaled to sizes that fit together.
 *
 * <p>Objects never change, and any thread may use them. Arrays are the object's own: who writes
 * into one changes the object.
 */
@AnyThread
public final class PortraitPhoto {
    /** What a depth sample measures. Which end is near, {@link #largerIsNearer} says. */
    public enum DepthKind {
        /** Linear in 1 / distance; near and far may be unknown. */
        DISPARITY,
        /** Linear in 1 / distance, from near to far. */
        INVERSE_RANGE,
        /** Linear in distance, from near to far. */
        LINEAR_RANGE,
        /** The file does not say. */
        UNKNOWN
    }

    private final byte[] original;
    private final int orientation;
    private final List<String> remarks;
    private final String container;
    private final byte[] depth;
    private final boolean depthIsPicture;
    private final int depthWidth;
    private final int depthHeight;
    private final int depthBits;
    private final DepthKind depthKind;
    private final boolean largerIsNearer;
    private final double near;
    private final double far;
    private final String units;
    private final int depthOrientation;
    private final boolean depthOrientationKnown;

    /** Called from native code. */
    private PortraitPhoto(
            byte[] original,
            int orientation,
            String[] remarks,
            String container,
            byte[] depth,
            boolean depthIsPicture,
            int depthWidth,
            int depthHeight,
            int depthBits,
            int depthKind,
            boolean largerIsNearer,
            double near,
            double far,
            String units,
            int depthOrientation,
            boolean depthOrientationKnown) {
        this.original = original;
        this.orientation = orientation;
        this.container = container;
        this.depth = depth;
        this.depthIsPicture = depthIsPicture;
        this.depthWidth = depthWidth;
        this.depthHeight = depthHeight;
        this.depthBits = depthBits;
        this.depthKind = DepthKind.values()[depthKind];
        this.largerIsNearer = largerIsNearer;
        this.near = near;
        this.far = far;
        this.units = units;
        this.depthOrientation = depthOrientation;
        this.depthOrientationKnown = depthOrientationKnown;
        final List<String> all = new ArrayList<>(Arrays.asList(remarks));
        if (this.depthKind == DepthKind.LINEAR_RANGE && !isRange(near, far)) {
            all.add(
                    "the depth is linear in distance, but gives no usable near and far; taken as"
                            + " it is");
        }
        this.remarks = Collections.unmodifiableList(all);
    }

    /**
     * Names the ways of keeping a depth, or two views, that are looked for.
     *
     * @return the first has preference
     */
    @NonNull
    public static List<String> containers() {
        ParallaxRenderer.loadLibrary();
        return Collections.unmodifiableList(Arrays.asList(nativeContainers()));
    }

    /**
     * Looks into a photo's file. Whatever is in there, an object comes back: what is damaged or
     * unknown becomes one of {@link #remarks}. What is found is copied; in between, up to six times
     * the file's size and 50 MB are taken.
     *
     * @param file direct, the whole file from the buffer's position to its limit, which both stay;
     *     a file that is mapped must not be cut in the meantime
     * @return what was found
     */
    @NonNull
    public static PortraitPhoto read(@NonNull ByteBuffer file) {
        if (file == null) {
            throw new ParallaxException("photo file: no buffer given");
        }
        if (!file.isDirect()) {
            throw new ParallaxException(
                    "photo file: the buffer is not direct; ByteBuffer.allocateDirect makes one");
        }
        ParallaxRenderer.loadLibrary();
        return nativeRead(file, file.position(), file.remaining());
    }

    /**
     * As {@link #read(ByteBuffer)}, after copying the bytes.
     *
     * @param file the whole file
     * @return what was found
     */
    @NonNull
    public static PortraitPhoto read(@NonNull byte[] file) {
        if (file == null) {
            throw new ParallaxException("photo file: no bytes given");
        }
        final ByteBuffer direct = ByteBuffer.allocateDirect(file.length);
        direct.put(file);
        direct.rewind();
        return read(direct);
    }

    /**
     * Names the way in which the depth was kept.
     *
     * @return one of {@link #containers}, or null: no depth was found
     */
    @Nullable
    public String container() {
        return container;
    }

    /**
     * Gives the photo before its background was blurred.
     *
     * @return a whole picture file, or null: the file that was read is the photo
     */
    @Nullable
    public byte[] original() {
        return original;
    }

    /**
     * Tells how the photo is turned upright: {@link #original}, or the file where that is null.
     *
     * @return Exif's code, 1 to 8
     */
    public int orientation() {
        return orientation;
    }

    /**
     * Gives the depth where it is a picture, which is gray.
     *
     * @return a whole JPEG, PNG, WebP or other picture file, or null
     */
    @Nullable
    public byte[] depthPicture() {
        return depthIsPicture ? depth : null;
    }

    /**
     * Gives the depth where it is bare samples, as they are stored.
     *
     * @return rows from the top without padding, {@link #depthBits} each, the lower byte first; or
     *     null
     */
    @Nullable
    public byte[] depthSamples() {
        return depthIsPicture ? null : depth;
    }

    /**
     * Tells the width of the bare samples.
     *
     * @return in samples, before any turning; 0 where there are none
     */
    public int depthWidth() {
        return depthWidth;
    }

    /**
     * Tells the height of the bare samples.
     *
     * @return in samples, before any turning; 0 where there are none
     */
    public int depthHeight() {
        return depthHeight;
    }

    /**
     * Tells the size of a sample as it is stored. {@code BitmapFactory} makes 8 of 16.
     *
     * @return 8 or 16
     */
    public int depthBits() {
        return depthBits;
    }

    /**
     * Tells what the depth's samples measure.
     *
     * @return never null
     */
    @NonNull
    public DepthKind depthKind() {
        return depthKind;
    }

    /**
     * Tells which end of the samples is near, as they are stored.
     *
     * @return whether it is the upper one
     */
    public boolean largerIsNearer() {
        return largerIsNearer;
    }

    /**
     * Tells the distance of the nearest level.
     *
     * @return in {@link #units}, positive; NaN where the file does not say
     */
    public double near() {
        return near;
    }

    /**
     * Tells the distance of the farthest level.
     *
     * @return in {@link #units}, positive; NaN where the file does not say
     */
    public double far() {
        return far;
    }

    /**
     * Names what near and far are measured in.
     *
     * @return such as "m" or "mm"; empty where the file does not say
     */
    @NonNull
    public String units() {
        return units;
    }

    /**
     * Tells how the depth is turned upright.
     *
     * @return Exif's code, 1 to 8
     */
    public int depthOrientation() {
        return depthOrientation;
    }

    /**
     * Tells whether {@link #depthOrientation} is more than a guess.
     *
     * @return false for a plane that lies across its photo without a word about it
     */
    public boolean depthOrientationKnown() {
        return depthOrientationKnown;
    }

    /**
     * Lists what was there and could not be used, or not as it should be, and why.
     *
     * @return one line each
     */
    @NonNull
    public List<String> remarks() {
        return remarks;
    }

    /**
     * Makes a depth map of the bare samples: {@link #depthWidth} x {@link #depthHeight}, not
     * turned. Otherwise {@link #depthMap(ByteBuffer)}.
     *
     * @return direct, a byte a sample, larger is nearer
     */
    @NonNull
    public ByteBuffer depthMap() {
        requireDepth();
        if (depthIsPicture) {
            throw new ParallaxException(
                    "depth map: the depth is a picture; decode it and give its gray samples");
        }
        // Trailing bytes belong to no sample.
        final int bytes = depthWidth * depthHeight * (depthBits / 8);
        return levels(ByteBuffer.wrap(depth, 0, bytes), depthBits, depthBits > 8, this);
    }

    /**
     * Makes a depth map of the decoded depth picture: larger is nearer, and linear in 1 / distance
     * wherever its kind is known. A range that is linear in distance is converted, which takes
     * {@link #near} and {@link #far}; such ones and planes of more than 8 bits are spread over 0 to
     * 255. The picture may be turned before; scaling it comes better after.
     *
     * @param gray a byte a sample, 0 to 255, such as a bitmap's red values, from the buffer's
     *     position to its limit, which both stay
     * @return direct, as many bytes, larger is nearer
     */
    @NonNull
    public ByteBuffer depthMap(@NonNull ByteBuffer gray) {
        requireDepth();
        if (gray == null) {
            throw new ParallaxException("depth map: no buffer given");
        }
        return levels(gray, 8, depthBits > 8, this);
    }

    private void requireDepth() {
        if (container == null) {
            throw new ParallaxException("depth map: no depth was found in the photo");
        }
    }

    private static ByteBuffer levels(
            ByteBuffer samples, int bits, boolean spread, PortraitPhoto photo) {
        return levels(
                samples,
                bits,
                spread,
                photo.depthKind,
                photo.largerIsNearer,
                photo.near,
                photo.far);
    }

    /**
     * The rules of a depth map.
     *
     * @param samples of 8 bits, or of 16 with the lower byte first
     * @param spread brings the lowest level to 0 and the highest to 255
     */
    static ByteBuffer levels(
            ByteBuffer samples,
            int bits,
            boolean spread,
            DepthKind kind,
            boolean largerIsNearer,
            double near,
            double far) {
        final int bytes = bits / 8;
        final int count = samples.remaining() / bytes;
        final ByteBuffer map = ByteBuffer.allocateDirect(count);
        if (count == 0) {
            return map;
        }
        int lowest = Integer.MAX_VALUE;
        int highest = 0;
        for (int i = 0; i < count; ++i) {
            final int sample = sampleAt(samples, bytes, i);
            lowest = Math.min(lowest, sample);
            highest = Math.max(highest, sample);
        }

        final double full = (1 << bits) - 1;
        final boolean convert = kind == DepthKind.LINEAR_RANGE && isRange(near, far);
        final double[] levels = new double[highest + 1];
        for (int sample = lowest; sample <= highest; ++sample) {
            final double toFar = largerIsNearer ? 1.0 - sample / full : sample / full;
            levels[sample] = convert ? inverseRange(toFar, near, far) : 1.0 - toFar;
        }
        // They rise or fall all the way.
        final double floor = Math.min(levels[lowest], levels[highest]);
        final double range = Math.max(levels[lowest], levels[highest]) - floor;
        final boolean spreads = (convert || spread) && range > 0.0;
        final byte[] table = new byte[highest + 1];
        for (int sample = lowest; sample <= highest; ++sample) {
            final double level = spreads ? (levels[sample] - floor) / range : levels[sample];
            table[sample] = (byte) Math.round(255.0 * level);
        }
        for (int i = 0; i < count; ++i) {
            map.put(i, table[sampleAt(samples, bytes, i)]);
        }
        return map;
    }

    private static int sampleAt(ByteBuffer samples, int bytes, int index) {
        final int at = samples.position() + index * bytes;
        final int low = samples.get(at) & 0xff;
        return bytes == 1 ? low : low | (samples.get(at + 1) & 0xff) << 8;
    }

    private static boolean isRange(double near, double far) {
        return near > 0.0 && far > near && !Double.isInfinite(far);
    }

    /**
     * With the share t of the way from near to far, d = near + t (far - near), this is (1 / d - 1 /
     * far) / (1 / near - 1 / far), in a form that no near or far takes out of range.
     */
    private static double inverseRange(double t, double near, double far) {
        return near * (1.0 - t) / (near + t * (far - near));
    }

    private static native String[] nativeContainers();

    private static native PortraitPhoto nativeRead(ByteBuffer file, int position, int bytes);
}
