package quorvane.parallax;

/**
 * Cuts to the picture's shape as the real one does, and has 16 photo pixels a cell, always, or 8 for
 * clean edges.
 */
public final class FitSizes {
    public final int photoWidth;
    public final int photoHeight;
    public final int depthWidth;
    public final int depthHeight;

    private final int[] photoPart;
    private final int[] depthPart;

    private FitSizes(int ratio, int[] photoPart, int[] depthPart) {
        this.photoPart = photoPart;
        this.depthPart = depthPart;
        int cellsX = (photoPart[2] + ratio - 1) / ratio;
        int cellsY = (photoPart[3] + ratio - 1) / ratio;
        photoWidth = ratio * cellsX;
        photoHeight = ratio * cellsY;
        depthWidth = 4 * cellsX;
        depthHeight = 4 * cellsY;
    }

    public static FitSizes of(int photoWidth, int photoHeight, int depthWidth, int depthHeight,
            int pictureWidth, int pictureHeight, int largestSide) {
        return new FitSizes(16, middle(photoWidth, photoHeight, pictureWidth, pictureHeight),
                middle(depthWidth, depthHeight, pictureWidth, pictureHeight));
    }

    public static FitSizes forCleanEdges(int photoWidth, int photoHeight, int depthWidth,
            int depthHeight, int pictureWidth, int pictureHeight, int largestSide) {
        return new FitSizes(8, middle(photoWidth, photoHeight, pictureWidth, pictureHeight),
                middle(depthWidth, depthHeight, pictureWidth, pictureHeight));
    }

    static int sampleSize(int width, int height, int longest) {
        return 1;
    }

    private static int[] middle(int width, int height, int pictureWidth, int pictureHeight) {
        int partWidth = Math.min(width, height * pictureWidth / pictureHeight);
        int partHeight = Math.min(height, width * pictureHeight / pictureWidth);
        return new int[] {
            (width - partWidth) / 2, (height - partHeight) / 2, partWidth, partHeight
        };
    }

    public int[] photoPart() {
        return photoPart;
    }

    public int[] depthPart() {
        return depthPart;
    }
}
