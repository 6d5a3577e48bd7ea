package quorvane.parallax;

/**
 * The sizes to which a photo and its depth map are scaled, so that {@link ParallaxRenderer} takes
 * them together: the photo is {@code ratio} times the grid of cells and the depth map 4 times, on
 * both axes.
 */
public final class FitSizes {
    private static final int DEPTH_PIXELS_PER_CELL = 4;
    private static final int LARGEST_RATIO = 32;

    /** Photo pixels a cell: 1, 2, 4, 8, 16 or 32. */
    public final int ratio;

    public final int photoWidth;
    public final int photoHeight;
    public final int depthWidth;
    public final int depthHeight;

    private FitSizes(int gridWidth, int gridHeight, int ratio) {
        this.ratio = ratio;
        photoWidth = gridWidth * ratio;
        photoHeight = gridHeight * ratio;
        depthWidth = gridWidth * DEPTH_PIXELS_PER_CELL;
        depthHeight = gridHeight * DEPTH_PIXELS_PER_CELL;
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
    public static FitSizes of(
            int photoWidth, int photoHeight, int depthWidth, int depthHeight, int largestSide) {
        requireSides("photo", photoWidth, photoHeight);
        requireSides("depth map", depthWidth, depthHeight);
        requireSides("largest side", largestSide, largestSide);
        int[] source = scaledInto(photoWidth, photoHeight, largestSide);
        int ratio = 1;
        while (canDouble(ratio, largestSide)
                && keepsDetail(source[0], depthWidth, 2 * ratio, largestSide)
                && keepsDetail(source[1], depthHeight, 2 * ratio, largestSide)) {
            ratio *= 2;
        }
        while (canDouble(ratio, largestSide) && !blockFits(source, ratio, largestSide)) {
            ratio *= 2;
        }
        // Then only a smaller photo helps.
        while (!blockFits(source, ratio, largestSide)) {
            source = scaledInto(source[0], source[1], Math.max(source[0], source[1]) / 8 * 7);
        }
        return new FitSizes(cells(source[0], ratio, largestSide),
                cells(source[1], ratio, largestSide), ratio);
    }

    /**
     * The largest part of the photo that has the shape of the picture, from its middle: left, top,
     * width and height in pixels of an image that shows what the photo shows, but may have another
     * size. So a photo and its depth map lose the same.
     *
     * @throws IllegalArgumentException for a size below 1
     */
    public static int[] crop(int photoWidth, int photoHeight, int pictureWidth, int pictureHeight,
            int imageWidth, int imageHeight) {
        requireSides("photo", photoWidth, photoHeight);
        requireSides("picture", pictureWidth, pictureHeight);
        requireSides("image", imageWidth, imageHeight);
        // The part of the photo's width and of its height that the picture's shape leaves.
        double shape = (double) pictureWidth / pictureHeight * photoHeight / photoWidth;
        int width = (int) Math.max(1, Math.round(imageWidth * Math.min(1.0, shape)));
        int height = (int) Math.max(1, Math.round(imageHeight * Math.min(1.0, 1.0 / shape)));
        return new int[] {(imageWidth - width) / 2, (imageHeight - height) / 2, width, height};
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

    private static boolean canDouble(int ratio, int largestSide) {
        return 2 * ratio <= Math.min(LARGEST_RATIO, largestSide);
    }

    // A side at the limit cannot grow into the next cell.
    private static int cells(int side, int ratio, int largestSide) {
        return Math.min((side - 1) / ratio + 1, largestSide / ratio);
    }

    private static boolean keepsDetail(int side, int depthSide, int ratio, int largestSide) {
        // The last cell reaches past the photo or, at the limit, stops short of it.
        long covered = Math.min(side, (long) cells(side, ratio, largestSide) * ratio);
        return covered * DEPTH_PIXELS_PER_CELL >= (long) depthSide * ratio;
    }

    // The renderer counts the bytes of its working memory in 32 bits.
    private static boolean blockFits(int[] photo, int ratio, int largestSide) {
        double w = cells(photo[0], ratio, largestSide);
        double h = cells(photo[1], ratio, largestSide);
        double bytes = 3 * (w * ratio) * (h * ratio) + 57 * w * h + 40 * h * (w + 1)
                + 12 * (w + 1) * (h + 1);
        return bytes <= Integer.MAX_VALUE;
    }

    private static int[] scaledInto(int width, int height, int longest) {
        int side = Math.max(width, height);
        if (side <= longest) {
            return new int[] {width, height};
        }
        return new int[] {scaled(width, longest, side), scaled(height, longest, side)};
    }

    private static int scaled(int length, int longest, int side) {
        return (int) Math.max(1, Math.round((double) length * longest / side));
    }

    private static void requireSides(String what, int width, int height) {
        if (width < 1 || height < 1) {
            throw new IllegalArgumentException(
                    what + ": " + width + " x " + height + " pixels; sides are 1 or more");
        }
    }
}
