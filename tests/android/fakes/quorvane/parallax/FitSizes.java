package quorvane.parallax;

/** Cuts to the picture's shape as the real one does, and has 16 photo pixels a cell, always. */
public final class FitSizes {
    public final int photoWidth;
    public final int photoHeight;
    public final int depthWidth;
    public final int depthHeight;

    private FitSizes(int cellsX, int cellsY) {
        photoWidth = 16 * cellsX;
        photoHeight = 16 * cellsY;
        depthWidth = 4 * cellsX;
        depthHeight = 4 * cellsY;
    }

    public static FitSizes of(int photoWidth, int photoHeight, int depthWidth, int depthHeight,
            int pictureWidth, int pictureHeight, int largestSide) {
        int width = Math.min(photoWidth, photoHeight * pictureWidth / pictureHeight);
        int height = Math.min(photoHeight, photoWidth * pictureHeight / pictureWidth);
        return new FitSizes((width + 15) / 16, (height + 15) / 16);
    }

    public int[] photoPart() {
        return null;
    }

    public int[] depthPart() {
        return null;
    }
}
