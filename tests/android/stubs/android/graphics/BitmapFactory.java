package android.graphics;

import androidx.annotation.RequiresApi;
import java.io.InputStream;

public class BitmapFactory {
    public static Bitmap decodeStream(InputStream stream, Rect outPadding, Options options) {
        throw new UnsupportedOperationException();
    }

    public static class Options {
        public boolean inJustDecodeBounds;
        public int inSampleSize;
        public int outWidth;
        public int outHeight;
        @RequiresApi(26)
        public ColorSpace inPreferredColorSpace;
    }
}
