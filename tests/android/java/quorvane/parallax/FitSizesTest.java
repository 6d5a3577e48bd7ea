package quorvane.parallax;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertThrows;

import org.junit.Test;

/** What needs no native library. */
public final class FitSizesTest {
    @Test
    public void sampleSizeKeepsTheLongerSideLongEnough() {
        assertEquals(1, FitSizes.sampleSize(4000, 3000, 2560));
        assertEquals(1, FitSizes.sampleSize(100, 5119, 2560));
        assertEquals(2, FitSizes.sampleSize(5120, 100, 2560));
        assertEquals(4, FitSizes.sampleSize(12000, 9000, 2560));
        assertEquals(1, FitSizes.sampleSize(1, 1, 2560));
    }

    @Test
    public void sizesBelowOneAreRefusedInASentence() {
        assertEquals("photo: 0 x 5 pixels; sides are 1 or more",
                assertThrows(IllegalArgumentException.class, () -> FitSizes.of(0, 5, 1, 1, 1))
                        .getMessage());
        assertEquals("depth map: 4 x -1 pixels; sides are 1 or more",
                assertThrows(IllegalArgumentException.class, () -> FitSizes.of(1, 1, 4, -1, 1))
                        .getMessage());
        assertEquals("picture: 0 x 0 pixels; sides are 1 or more",
                assertThrows(IllegalArgumentException.class,
                        () -> FitSizes.of(1, 1, 1, 1, 0, 0, 1)).getMessage());
    }
}
