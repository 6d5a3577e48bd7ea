package quorvane.parallax;

/** What was planned for the images in use. */
public final class ParallaxGeometry {
    /** Cells of the grid from left to right; the shaped depth map has a sample for each. */
    public final int gridWidth;

    /** Cells of the grid from top to bottom. */
    public final int gridHeight;

    /** Photo pixels a cell from left to right: 1, 2, 4, 8, 16 or 32. */
    public final int colourRatioX;

    /** Photo pixels a cell from top to bottom: 1, 2, 4, 8, 16 or 32. */
    public final int colourRatioY;

    /** Working memory outside the Java heap, in bytes. */
    public final int blockBytes;

    /** Half the width of the mesh, in object units. */
    public final float halfWidth;

    /** Half the height of the mesh, in object units. */
    public final float halfHeight;

    /** Distance of the pivot in front of the camera, in object units. */
    public final float pivotDistance;

    /**
     * The shaped depth, on the scale 0 to 255, that stays in place while the view swings: nearer
     * depths move one way and farther ones the other. Below 0 when the pivot lies behind
     * everything.
     */
    public final float stillDepth;

    /** Called from native code. */
    ParallaxGeometry(
            int gridWidth,
            int gridHeight,
            int colourRatioX,
            int colourRatioY,
            int blockBytes,
            float halfWidth,
            float halfHeight,
            float pivotDistance,
            float stillDepth) {
        this.gridWidth = gridWidth;
        this.gridHeight = gridHeight;
        this.colourRatioX = colourRatioX;
        this.colourRatioY = colourRatioY;
        this.blockBytes = blockBytes;
        this.halfWidth = halfWidth;
        this.halfHeight = halfHeight;
        this.pivotDistance = pivotDistance;
        this.stillDepth = stillDepth;
    }
}
