package quorvane.parallax;

import static quorvane.parallax.ParallaxRendererTest.check;

import java.util.Arrays;

/** Every public method is a test and runs on a thread of its own. */
final class FitSizesNativeTest {
    private static final int LARGEST = 16384;

    private static void assertEquals(int wanted, int found) {
        check(wanted == found, found + " instead of " + wanted);
    }

    private static void assertTrue(boolean holds) {
        check(holds, "a promise is not kept");
    }

    private static void fits(int ratio, int photoWidth, int photoHeight, FitSizes fit) {
        assertEquals(ratio, fit.ratio);
        assertEquals(photoWidth, fit.photoWidth);
        assertEquals(photoHeight, fit.photoHeight);
        assertEquals(photoWidth / ratio * 4, fit.depthWidth);
        assertEquals(photoHeight / ratio * 4, fit.depthHeight);
    }

    private static void parts(int[] photo, int[] depth, FitSizes fit) {
        check(Arrays.equals(photo, fit.photoPart()), Arrays.toString(fit.photoPart()));
        check(Arrays.equals(depth, fit.depthPart()), Arrays.toString(fit.depthPart()));
    }

    public void leavesSizesThatFitAsTheyAre() {
        fits(16, 4096, 3072, FitSizes.of(4096, 3072, 1024, 768, LARGEST));
    }

    public void makesThePhotoAWholeNumberOfCells() {
        // 2100 * 4 / 640 is 13.1, so 8 photo pixels a cell, and 2100 / 8 is 262.5.
        fits(8, 2104, 2104, FitSizes.of(2100, 2100, 640, 640, LARGEST));
    }

    public void keepsTheDepthsDetailOnBothAxes() {
        // 8 would do for the width, the height needs 2.
        fits(2, 800, 600, FitSizes.of(800, 600, 400, 1200, LARGEST));
    }

    public void takesAPhotoSmallerThanItsDepth() {
        fits(1, 100, 80, FitSizes.of(100, 80, 1000, 800, LARGEST));
    }

    public void takesOnePixel() {
        FitSizes fit = FitSizes.of(1, 1, 1, 1, LARGEST);
        assertEquals(4, fit.depthWidth);
        assertEquals(4, fit.depthHeight);
    }

    public void scalesAPhotoDownToTheLimit() {
        fits(32, 4096, 2048, FitSizes.of(20000, 10000, 500, 250, 4096));
    }

    public void neverGrowsPastTheLimit() {
        fits(32, 992, 992, FitSizes.of(1000, 1000, 20, 20, 1000));
        fits(4, 4, 4, FitSizes.of(5, 5, 1, 1, 5));
    }

    public void keepsDetailWhereTheLimitCutsALastCell() {
        // 31 cells of 32 pixels would be 992 of the 1000, and the depth map 124 wide.
        fits(16, 992, 992, FitSizes.of(1000, 1000, 125, 125, 1000));
    }

    public void coarsensTheGridRatherThanPassTwoGigabytes() {
        fits(8, 16384, 16384, FitSizes.of(16384, 16384, 16384, 16384, LARGEST));
    }

    public void takesTheLargestSidesThereAre() {
        int most = Integer.MAX_VALUE;
        for (int width : new int[] {1, most}) {
            for (int height : new int[] {1, most}) {
                FitSizes fit = FitSizes.of(width, height, most, most, most);
                assertTrue(fit.photoWidth >= 1 && fit.photoHeight >= 1);
                assertTrue(3.0 * fit.photoWidth * fit.photoHeight <= most);
            }
        }
    }

    public void keepsItsPromisesForAllSizes() {
        int[][] depths = {{1, 1}, {64, 48}, {257, 193}, {1000, 1}, {3001, 1999}};
        for (int width = 1; width < 3000; width += 97) {
            for (int height = 1; height < 3000; height += 131) {
                for (int[] depth : depths) {
                    FitSizes fit = FitSizes.of(width, height, depth[0], depth[1], LARGEST);
                    assertTrue(fit.ratio <= 32 && Integer.bitCount(fit.ratio) == 1);
                    assertEquals(0, fit.photoWidth % fit.ratio);
                    assertEquals(0, fit.photoHeight % fit.ratio);
                    assertEquals(fit.photoWidth / fit.ratio * 4, fit.depthWidth);
                    assertEquals(fit.photoHeight / fit.ratio * 4, fit.depthHeight);
                    assertTrue(fit.photoWidth >= width && fit.photoWidth < width + fit.ratio);
                    assertTrue(fit.photoHeight >= height && fit.photoHeight < height + fit.ratio);
                    // A photo with fewer pixels than a quarter of the depth's cannot carry its
                    // detail.
                    assertTrue(fit.depthWidth >= Math.min(depth[0], 4 * width));
                    assertTrue(fit.depthHeight >= Math.min(depth[1], 4 * height));
                    // The next coarser grid would lose some, unless there is none.
                    assertTrue(fit.ratio == 32 || 2.0 * width / fit.ratio < depth[0]
                            || 2.0 * height / fit.ratio < depth[1]);
                }
            }
        }
    }

    public void cutsTheMiddleInThePicturesShape() {
        parts(new int[] {50, 0, 300, 300}, new int[] {50, 0, 300, 300},
                FitSizes.of(400, 300, 400, 300, 100, 100, LARGEST));
        parts(new int[] {0, 125, 300, 150}, new int[] {0, 125, 300, 150},
                FitSizes.of(300, 400, 300, 400, 200, 100, LARGEST));
        parts(new int[] {0, 0, 1920, 1440}, new int[] {0, 0, 1920, 1440},
                FitSizes.of(1920, 1440, 1920, 1440, 4, 3, LARGEST));
    }

    public void cutsTheSamePartOfADepthMapOfAnotherShape() {
        // Of 400 x 300 the picture leaves the middle three quarters of the width.
        parts(new int[] {50, 0, 300, 300}, new int[] {10, 0, 60, 90},
                FitSizes.of(400, 300, 80, 90, 100, 100, LARGEST));
    }

    public void leavesAtLeastAPixelOfBoth() {
        parts(new int[] {2499, 0, 1, 1}, new int[] {0, 0, 1, 1},
                FitSizes.of(5000, 1, 1, 1, 2, 10000, LARGEST));
        parts(new int[] {2499, 0, 1, 3}, new int[] {2499, 0, 1, 3},
                FitSizes.of(5000, 3, 5000, 3, 2, 10000, LARGEST));
    }

    public void fitsThePartThatIsShown() {
        // 300 x 300 of the photo and 75 x 75 of the depth map: 16 photo pixels a cell, 19 cells.
        fits(16, 304, 304, FitSizes.of(400, 300, 100, 75, 50, 50, LARGEST));
    }

    public void takesAFineGridForCleanEdges() {
        // 320 x 240 cells are 153,600 triangles, 160 x 120 are 38,400.
        fits(2, 320, 240, FitSizes.forCleanEdges(320, 240, 160, 120, 320, 240, LARGEST));
        fits(1, 160, 120, FitSizes.forCleanEdges(160, 120, 16, 12, 160, 120, LARGEST));
        // A picture of another shape has its cells in the middle.
        parts(new int[] {40, 0, 240, 240}, new int[] {20, 0, 120, 120},
                FitSizes.forCleanEdges(320, 240, 160, 120, 50, 50, LARGEST));
    }

    public void theCallersCannotChangeTheParts() {
        FitSizes fit = FitSizes.of(400, 300, 400, 300, 100, 100, LARGEST);
        fit.photoPart()[0] = 7;
        fit.depthPart()[2] = 7;
        parts(new int[] {50, 0, 300, 300}, new int[] {50, 0, 300, 300}, fit);
    }
}
