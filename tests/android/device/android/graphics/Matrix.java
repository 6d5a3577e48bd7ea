package android.graphics;

/** x' = a x + c y + e, y' = b x + d y + f. */
public class Matrix {
    double a = 1;
    double b;
    double c;
    double d = 1;
    double e;
    double f;

    public boolean postScale(float sx, float sy) {
        a *= sx;
        c *= sx;
        e *= sx;
        b *= sy;
        d *= sy;
        f *= sy;
        return true;
    }

    /** By right angles. */
    public boolean postRotate(float degrees) {
        for (int quarter = 0; quarter < degrees / 90f; ++quarter) {
            double oldA = a;
            double oldC = c;
            double oldE = e;
            a = -b;
            c = -d;
            e = -f;
            b = oldA;
            d = oldC;
            f = oldE;
        }
        return true;
    }

    public boolean postTranslate(float dx, float dy) {
        e += dx;
        f += dy;
        return true;
    }
}
