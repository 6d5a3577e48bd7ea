package android.graphics;

public class Canvas {
    public Canvas(Bitmap bitmap) {}

    public void drawColor(int color) {}

    public void drawBitmap(Bitmap bitmap, Matrix matrix, Paint paint) {}
}
