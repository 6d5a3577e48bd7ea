package quorvane.parallax;

import static org.junit.Assert.assertEquals;

import org.junit.Test;

public final class ExifTurnTest {
    /** Where the corner that is stored first, the top left one, comes to lie when shown. */
    private static String firstCorner(int orientation) {
        // Clockwise from the top left.
        String[] corners = {"top left", "top right", "bottom right", "bottom left"};
        int corner = ExifTurn.mirrored(orientation) ? 1 : 0;
        return corners[(corner + ExifTurn.degrees(orientation) / 90) % 4];
    }

    @Test
    public void theStoredCornersLieWhereExifPutsThem() {
        // Of Exif 2.3: the 0th row and the 0th column are at these sides.
        assertEquals("top left", firstCorner(1));
        assertEquals("top right", firstCorner(2));
        assertEquals("bottom right", firstCorner(3));
        assertEquals("bottom left", firstCorner(4));
        assertEquals("top left", firstCorner(5));
        assertEquals("top right", firstCorner(6));
        assertEquals("bottom right", firstCorner(7));
        assertEquals("bottom left", firstCorner(8));
    }

    @Test
    public void fourOfThemExchangeWidthAndHeight() {
        for (int orientation = 1; orientation <= 8; ++orientation) {
            assertEquals(orientation >= 5, ExifTurn.degrees(orientation) % 180 == 90);
        }
    }

    @Test
    public void anUnknownOrientationIsUpright() {
        for (int orientation : new int[] {-1, 0, 9, 1000}) {
            assertEquals("top left", firstCorner(orientation));
            assertEquals(0, ExifTurn.degrees(orientation));
        }
    }
}
