package quorvane.parallax;

import androidx.annotation.AnyThread;
import androidx.annotation.NonNull;

/**
 * Which part of a photo and of its depth map a picture shows, and the sizes to which these are
 * scaled so that {@link ParallaxRenderer} takes them together: the photo is {@code ratio} times the
 * grid of cells and the depth map 4 times, on both axes.
 */
@AnyThread
public final class FitSizes {
    /** Photo pixels a cell: 1, 2, 4, 8, 16 or 32. */
    public final int ratio;

    public final int photoWidth;
    public final int photoHeight;
    public final int depthWidth;
    public final int depthHeight;

    private final int[] photoPart;
    private final int[] depthPart;

    private FitSizes(int[] photoPart, int[] depthPart, int[] fit) {
        this.photoPart = photoPart;
        this.depthPart = depthPart;
        ratio = fit[0];
        photoWidth = fit[1];
        photoHeight = fit[2];
        depthWidth = fit[3];
        depthHeight = fit[4];
    }

    /**
     * The coarsest grid that keeps every sample of the depth map, for a photo of its size or, where
     * it is larger, scaled down to {@code largestSide}. The photo grows by less than one cell.
     * Where the photo is too small for that grid or the renderer's working memory would pass 2 GB,
     * the nearest grid that fits. All sizes are in pixels; those given must be 1 or more.
     *
     * @param largestSide what neither side of the photo may pass: the driver's texture limit or
     *     less
     * @throws IllegalArgumentException for a size below 1
     */
    @NonNull
    public static FitSizes of(
            int photoWidth, int photoHeight, int depthWidth, int depthHeight, int largestSide) {
        return of(photoWidth, photoHeight, depthWidth, depthHeight, photoWidth, photoHeight,
                largestSide);
    }

    /**
     * The same for a picture of another shape than the photo's, which shows the middle: of the photo
     * the largest part that has the picture's shape, and of the depth map what shows the same.
     *
     * @throws IllegalArgumentException for a size below 1
     */
    @NonNull
    public static FitSizes of(int photoWidth, int photoHeight, int depthWidth, int depthHeight,
            int pictureWidth, int pictureHeight, int largestSide) {
        return of(photoWidth, photoHeight, depthWidth, depthHeight, pictureWidth, pictureHeight,
                largestSide, false);
    }

    /**
     * The same with the finest grid that a phone draws in time, of up to 100,000 triangles: for
     * clean edges, which {@link PicturePlan} makes of a depth map of any size.
     *
     * @throws IllegalArgumentException for a size below 1
     */
    @NonNull
    public static FitSizes forCleanEdges(int photoWidth, int photoHeight, int depthWidth,
            int depthHeight, int pictureWidth, int pictureHeight, int largestSide) {
        return of(photoWidth, photoHeight, depthWidth, depthHeight, pictureWidth, pictureHeight,
                largestSide, true);
    }

    private static FitSizes of(int photoWidth, int photoHeight, int depthWidth, int depthHeight,
            int pictureWidth, int pictureHeight, int largestSide, boolean fine) {
        requireSides("photo", photoWidth, photoHeight);
        requireSides("depth map", depthWidth, depthHeight);
        requireSides("picture", pictureWidth, pictureHeight);
        requireSides("largest side", largestSide, largestSide);
        ParallaxRenderer.loadLibrary();
        int[] plan = nativePlan(photoWidth, photoHeight, depthWidth, depthHeight, pictureWidth,
                pictureHeight, largestSide, fine);
        return new FitSizes(middle(photoWidth, photoHeight, plan[0], plan[1]),
                middle(depthWidth, depthHeight, plan[2], plan[3]),
                new int[] {plan[4], plan[5], plan[6], plan[7], plan[8]});
    }

    /** The part of the photo that is shown: left, top, width and height in its pixels. */
    @NonNull
    public int[] photoPart() {
        return photoPart.clone();
    }

    /** The part of the depth map that is used: left, top, width and height in its pixels. */
    @NonNull
    public int[] depthPart() {
        return depthPart.clone();
    }

    /**
     * By which power of two an image can be decoded smaller and have its longer side still at least
     * {@code longest} pixels; 1 where it is shorter.
     */
    static int sampleSize(int width, int height, int longest) {
        int side = Math.max(width, height);
        int size = 1;
        while (side / size / 2 >= longest) {
            size *= 2;
        }
        return size;
    }

    private static int[] middle(int width, int height, int partWidth, int partHeight) {
        return new int[] {
            (width - partWidth) / 2, (height - partHeight) / 2, partWidth, partHeight
        };
    }

    private static void requireSides(String what, int width, int height) {
        if (width < 1 || height < 1) {
            throw new IllegalArgumentException(
                    what + ": " + width + " x " + height + " pixels; sides are 1 or more");
        }
    }

    /**
     * Width and height of the photo's part and of the depth map's part, the ratio, then width and
     * height of the fitted photo and of the fitted depth map.
     */
    private static native int[] nativePlan(int photoWidth, int photoHeight, int depthWidth,
            int depthHeight, int pictureWidth, int pictureHeight, int largestSide, boolean fine);
}
