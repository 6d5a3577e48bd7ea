package quorvane.parallax;

/** How a picture is to be turned upright, by its Exif orientation: mirrored first, then turned. */
final class ExifTurn {
    private ExifTurn() {}

    /** Whether left and right change places. Every value but 1 to 8 means upright. */
    static boolean mirrored(int orientation) {
        return orientation == 2 || orientation == 4 || orientation == 5 || orientation == 7;
    }

    /** Degrees to turn clockwise after that: 0, 90, 180 or 270. */
    static int degrees(int orientation) {
        switch (orientation) {
            case 3:
            case 4:
                return 180;
            case 6:
            case 7:
                return 90;
            case 5:
            case 8:
                return 270;
            default:
                return 0;
        }
    }
}
