package quorvane.parallax;

/**
 * A phone in the hand, as its sensors feel it. The world's axes are Android's: x east, y north, z
 * up. The phone's are x to the right edge, y to the top edge, z out of the screen. Worked out with
 * rotation matrices, so that it shares no formula with the tracker.
 */
final class Phone {
    // Columns are the phone's axes in the world.
    private double[][] attitude;

    private Phone(double[][] attitude) {
        this.attitude = attitude;
    }

    /** On a table, screen up, top edge to the north. */
    static Phone flat() {
        return new Phone(new double[][] {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    }

    /** Upright before someone who looks north. */
    static Phone upright() {
        return flat().turn(90, 0, 0);
    }

    /** Above the head of someone who lies on the back, screen down. */
    static Phone overhead() {
        return flat().turn(180, 0, 0);
    }

    Phone copy() {
        return new Phone(multiply(attitude, flat().attitude));
    }

    /**
     * Turns about the phone's own axes, degrees by the right hand: a positive turn about x brings
     * the top edge towards who looks at the screen, one about y takes the right edge away, one
     * about z is to the left as with a steering wheel.
     */
    Phone turn(double aboutX, double aboutY, double aboutZ) {
        double angle = Math.sqrt(aboutX * aboutX + aboutY * aboutY + aboutZ * aboutZ);
        if (angle > 0) {
            attitude = multiply(attitude, rotation(
                    Math.toRadians(angle), aboutX / angle, aboutY / angle, aboutZ / angle));
        }
        return this;
    }

    /** Turns with the ground: degrees about the vertical, to the left. */
    Phone turnAround(double degrees) {
        attitude = multiply(rotation(Math.toRadians(degrees), 0, 0, 1), attitude);
        return this;
    }

    /** The quaternion x, y, z, w from the matrix, by the largest of its parts. */
    float[] rotationVector() {
        double[][] m = attitude;
        double[] squares = {
            1 + m[0][0] - m[1][1] - m[2][2], 1 - m[0][0] + m[1][1] - m[2][2],
            1 - m[0][0] - m[1][1] + m[2][2], 1 + m[0][0] + m[1][1] + m[2][2]};
        int largest = 0;
        for (int i = 1; i < 4; ++i) {
            if (squares[i] > squares[largest]) {
                largest = i;
            }
        }
        double xy = m[0][1] + m[1][0];
        double xz = m[0][2] + m[2][0];
        double yz = m[1][2] + m[2][1];
        double xw = m[2][1] - m[1][2];
        double yw = m[0][2] - m[2][0];
        double zw = m[1][0] - m[0][1];
        double[][] rows = {
            {squares[0], xy, xz, xw}, {xy, squares[1], yz, yw},
            {xz, yz, squares[2], zw}, {xw, yw, zw, squares[3]}};
        float[] values = new float[4];
        for (int i = 0; i < 4; ++i) {
            values[i] = (float) (rows[largest][i] / (2 * Math.sqrt(squares[largest])));
        }
        return values;
    }

    /** What the accelerometer of a phone at rest says: it is pushed up. */
    float[] gravity() {
        return new float[] {(float) (9.81 * attitude[2][0]), (float) (9.81 * attitude[2][1]),
            (float) (9.81 * attitude[2][2])};
    }

    private static double[][] rotation(double angle, double x, double y, double z) {
        double c = Math.cos(angle);
        double s = Math.sin(angle);
        return new double[][] {
            {c + x * x * (1 - c), x * y * (1 - c) - z * s, x * z * (1 - c) + y * s},
            {y * x * (1 - c) + z * s, c + y * y * (1 - c), y * z * (1 - c) - x * s},
            {z * x * (1 - c) - y * s, z * y * (1 - c) + x * s, c + z * z * (1 - c)}};
    }

    private static double[][] multiply(double[][] a, double[][] b) {
        double[][] product = new double[3][3];
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                for (int i = 0; i < 3; ++i) {
                    product[row][column] += a[row][i] * b[i][column];
                }
            }
        }
        return product;
    }
}
