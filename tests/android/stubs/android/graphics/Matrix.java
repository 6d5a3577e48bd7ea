package android.graphics;

public class Matrix {
    public boolean postScale(float sx, float sy) {
        throw new UnsupportedOperationException();
    }

    public boolean postRotate(float degrees) {
        throw new UnsupportedOperationException();
    }

    public boolean postTranslate(float dx, float dy) {
        throw new UnsupportedOperationException();
    }
}
