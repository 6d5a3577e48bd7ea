package android.graphics;

import java.util.Arrays;

/** Draws each pixel from the four nearest ones. */
public class Canvas {
    private final Bitmap target;

    public Canvas(Bitmap bitmap) {
        target = bitmap;
    }

    public void drawColor(int color) {
        Arrays.fill(target.argb, color);
    }

    public void drawBitmap(Bitmap bitmap, Matrix m, Paint paint) {
        if (bitmap.isRecycled()) {
            throw new IllegalStateException("a recycled bitmap is drawn");
        }
        double size = m.a * m.d - m.b * m.c;
        for (int y = 0; y < target.getHeight(); ++y) {
            for (int x = 0; x < target.getWidth(); ++x) {
                double right = x + 0.5 - m.e;
                double down = y + 0.5 - m.f;
                target.argb[y * target.getWidth() + x] = at(bitmap,
                        (m.d * right - m.c * down) / size - 0.5,
                        (m.a * down - m.b * right) / size - 0.5);
            }
        }
    }

    private static int at(Bitmap bitmap, double x, double y) {
        double left = Math.max(0, Math.min(bitmap.getWidth() - 1, x));
        double top = Math.max(0, Math.min(bitmap.getHeight() - 1, y));
        int column = (int) left;
        int row = (int) top;
        int next = Math.min(column + 1, bitmap.getWidth() - 1);
        int below = Math.min(row + 1, bitmap.getHeight() - 1);
        int wide = bitmap.getWidth();
        int pixel = 0;
        for (int shift = 0; shift < 32; shift += 8) {
            double upper = between(bitmap.argb[row * wide + column], bitmap.argb[row * wide + next],
                    shift, left - column);
            double lower = between(bitmap.argb[below * wide + column],
                    bitmap.argb[below * wide + next], shift, left - column);
            pixel |= (int) Math.round(upper + (top - row) * (lower - upper)) << shift;
        }
        return pixel;
    }

    private static double between(int one, int other, int shift, double part) {
        int first = one >> shift & 0xff;
        return first + part * ((other >> shift & 0xff) - first);
    }
}
