package android.app;

import android.graphics.Bitmap;

public final class WallpaperColors {
    public static WallpaperColors fromBitmap(Bitmap bitmap) {
        throw new UnsupportedOperationException();
    }
}
