package quorvane.parallax;

import androidx.annotation.AnyThread;
import androidx.annotation.NonNull;
import java.nio.ByteBuffer;
import java.util.ArrayList;
import java.util.Collections;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/**
 * How a picture is composed before anything is drawn: how much of the photo is seen, what stays in
 * place while the view swings, and a depth map with clean silhouettes. Arithmetic only: any thread
 * may ask, without a context.
 *
 * <pre>
 *     FitSizes fit = FitSizes.forCleanEdges(4000, 3000, 768, 576, width, height, 4096);
 *     PicturePlan plan = new PicturePlan.Request(fit, width, height).plan(768, 576, depth);
 *     renderer.setPhotoRgba(fit.photoWidth, fit.photoHeight, photo);
 *     renderer.use(plan);
 *     renderer.lookAt((float) plan.swing * x, (float) plan.swing * y);
 * </pre>
 */
@AnyThread
public final class PicturePlan {
    /** The visible part of each of the photo's sides, in force. */
    public final double fovScale;

    /** The distance that stays in place, in object units, in force. */
    public final double rotateZTrans;

    /**
     * What every view position is to be multiplied by: 1 unless even half of the photo would show a
     * border.
     */
    public final double swing;

    private final Map<String, Double> parameters = new LinkedHashMap<>();
    private int depthWidth;
    private int depthHeight;
    private ByteBuffer depth;

    /** Called from native code. */
    private PicturePlan(
            String[] names, double[] values, double fovScale, double rotateZTrans, double swing) {
        for (int i = 0; i < names.length; ++i) {
            parameters.put(names[i], values[i]);
        }
        this.fovScale = fovScale;
        this.rotateZTrans = rotateZTrans;
        this.swing = swing;
    }

    /**
     * Tells what {@link ParallaxRenderer#setParameter} is to be given before the depth map.
     *
     * @return the parameters asked for and those suggested, by their names
     */
    @NonNull
    public Map<String, Double> parameters() {
        return Collections.unmodifiableMap(parameters);
    }

    /**
     * Tells the depth map's width.
     *
     * @return in samples, four a cell
     */
    public int depthWidth() {
        return depthWidth;
    }

    /**
     * Tells the depth map's height.
     *
     * @return in samples, four a cell
     */
    public int depthHeight() {
        return depthHeight;
    }

    /**
     * Gives the depth map for {@link ParallaxRenderer#setDepth}.
     *
     * @return direct, a byte a sample
     */
    @NonNull
    public ByteBuffer depth() {
        return depth.duplicate();
    }

    /**
     * Tells whether the larger samples of a depth map seem to be the farther ones, by what the
     * photo shows too: both whole and upright, of any size, direct from position 0.
     *
     * @param rgba 4 bytes a pixel
     * @param depth a byte a sample
     */
    static boolean largerIsFarther(int photoWidth, int photoHeight, ByteBuffer rgba, int depthWidth,
            int depthHeight, ByteBuffer depth) {
        ParallaxRenderer.loadLibrary();
        return nativeLargerIsFarther(
                photoWidth, photoHeight, rgba, depthWidth, depthHeight, depth);
    }

    /** A picture that is asked for; every setter returns the request itself. */
    public static final class Request {
        private static final int PIVOT_AUTO = 0;
        private static final int PIVOT_POINT = 1;
        private static final int PIVOT_TUNED = 2;

        private final FitSizes fit;
        private final int width;
        private final int height;
        private final List<String> names = new ArrayList<>();
        private final List<Double> values = new ArrayList<>();
        private int orientation = 4;
        private boolean cleanEdges = true;
        private int pivot = PIVOT_AUTO;
        private double pivotX;
        private double pivotY;
        private double frame = Double.NaN;
        private ByteBuffer photo;
        private int photoBytesPerPixel;

        /**
         * Asks for a picture that is seen from everywhere that {@link ParallaxRenderer#lookAt}
         * goes.
         *
         * @param fit the sizes of the photo and the grid
         * @param width of the picture, in pixels
         * @param height of the picture, in pixels
         */
        public Request(@NonNull FitSizes fit, int width, int height) {
            this.fit = fit;
            this.width = width;
            this.height = height;
        }

        /** The code that the renderer is made with; 4 at first. */
        @NonNull
        public Request orientation(int code) {
            orientation = code;
            return this;
        }

        /**
         * Keeps a parameter at a value, as a device property does: nothing is suggested for it.
         *
         * @param name of {@link ParallaxRenderer#parameters}
         */
        @NonNull
        public Request parameter(@NonNull String name, double value) {
            if (name == null) {
                throw new ParallaxException("parameter: no name given");
            }
            names.add(name);
            values.add(value);
            return this;
        }

        /**
         * Says whether near things are to stay whole where they meet far ones, as they do at
         * first. Otherwise the depth map has the size of {@code fit} and is smoothed by the photo,
         * which is needed then.
         */
        @NonNull
        public Request cleanEdges(boolean clean) {
            cleanEdges = clean;
            return this;
        }

        /**
         * Keeps in place what the photo shows at a point, instead of the subject.
         *
         * @param x from 0 at the left of the photo's part that is used to 1
         * @param y from 0 at its top to 1
         */
        @NonNull
        public Request pivotAt(double x, double y) {
            pivot = PIVOT_POINT;
            pivotX = x;
            pivotY = y;
            return this;
        }

        /** Keeps in place the depth that the parameters give, instead of the subject. */
        @NonNull
        public Request pivotOff() {
            pivot = PIVOT_TUNED;
            return this;
        }

        /**
         * Shows this part of each side of the photo, instead of as much as shows no border.
         *
         * @param part 0.05 to 1
         */
        @NonNull
        public Request frame(double part) {
            frame = part;
            return this;
        }

        /**
         * Gives the photo, which counts where the guided filter is on: for edges that are not
         * clean, or where a parameter switches it on.
         *
         * @param rgba direct, 4 bytes a pixel, in the size of {@code fit}
         */
        @NonNull
        public Request photoRgba(@NonNull ByteBuffer rgba) {
            photo = rgba;
            photoBytesPerPixel = 4;
            return this;
        }

        /**
         * The same for 3 bytes a pixel.
         *
         * @param rgb direct, in the size of {@code fit}
         */
        @NonNull
        public Request photo(@NonNull ByteBuffer rgb) {
            photo = rgb;
            photoBytesPerPixel = 3;
            return this;
        }

        /**
         * Plans the picture.
         *
         * @param depthWidth in samples; any for clean edges, else that of {@code fit}
         * @param depthHeight in samples
         * @param depth what the used part of the photo shows: direct, a byte a sample, larger is
         *     nearer
         * @throws ParallaxException for what cannot be drawn
         */
        @NonNull
        public PicturePlan plan(int depthWidth, int depthHeight, @NonNull ByteBuffer depth) {
            ParallaxRenderer.loadLibrary();
            ParallaxRenderer.checkBuffer("depth map", depth);
            if (photo != null) {
                ParallaxRenderer.checkBuffer("photo", photo);
            }
            final double[] numbers = new double[values.size()];
            for (int i = 0; i < numbers.length; ++i) {
                numbers[i] = values.get(i);
            }
            final ByteBuffer made = ByteBuffer.allocateDirect(fit.depthWidth * fit.depthHeight);
            final PicturePlan plan = nativePlan(
                    new int[] {fit.photoWidth, fit.photoHeight, fit.depthWidth / 4,
                        fit.depthHeight / 4, width, height, orientation, pivot, depthWidth,
                        depthHeight},
                    cleanEdges, pivotX, pivotY, frame, names.toArray(new String[0]), numbers,
                    photo, photo == null ? 0 : photo.position(),
                    photo == null ? 0 : photo.remaining(), photoBytesPerPixel, depth,
                    depth.position(), depth.remaining(), made);
            plan.depth = made;
            plan.depthWidth = fit.depthWidth;
            plan.depthHeight = fit.depthHeight;
            return plan;
        }
    }

    /**
     * Fills {@code made} with the plan's depth map. {@code numbers}: width and height of the photo,
     * of the grid and of the picture, the orientation, the pivot, width and height of the depth map.
     */
    private static native PicturePlan nativePlan(int[] numbers, boolean cleanEdges, double pivotX,
            double pivotY, double frame, String[] names, double[] values, ByteBuffer photo,
            int photoPosition, int photoBytes, int photoBytesPerPixel, ByteBuffer depth,
            int depthPosition, int depthBytes, ByteBuffer made);

    private static native boolean nativeLargerIsFarther(int photoWidth, int photoHeight,
            ByteBuffer rgba, int depthWidth, int depthHeight, ByteBuffer depth);
}
