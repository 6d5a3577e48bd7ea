package quorvane.parallax;

import android.graphics.Bitmap;
import android.graphics.BitmapFactory;
import android.graphics.Canvas;
import android.graphics.Color;
import android.graphics.Matrix;
import android.graphics.Paint;
import java.io.IOException;
import java.io.InputStream;

/** What a layout's editor shows, which has no native library and no Exif: the photo at rest. */
final class LayoutPreview {
    private LayoutPreview() {}

    /** Fills the view with the photo's middle, or with gray where there is none to show. */
    static void draw(Canvas canvas, Images images, int width, int height) {
        canvas.drawColor(Color.GRAY);
        try {
            Bitmap photo = images == null ? null
                    : images.bitmap != null ? images.bitmap : decoded(images.file);
            if (photo == null) {
                return;
            }
            float scale = Math.max(
                    width / (float) photo.getWidth(), height / (float) photo.getHeight());
            Matrix middle = new Matrix();
            middle.postScale(scale, scale);
            middle.postTranslate((width - scale * photo.getWidth()) / 2f,
                    (height - scale * photo.getHeight()) / 2f);
            canvas.drawBitmap(photo, middle, new Paint(Paint.FILTER_BITMAP_FLAG));
        } catch (IOException | RuntimeException | LinkageError | OutOfMemoryError e) {
            // An editor gets by without; the app will say what is wrong.
        }
    }

    private static Bitmap decoded(ImageSource file) throws IOException {
        try (InputStream stream = file.open()) {
            return BitmapFactory.decodeStream(stream, null, new BitmapFactory.Options());
        }
    }
}
