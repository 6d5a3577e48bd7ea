package android.app;

import android.graphics.Bitmap;

/** Of a picture's size. */
public final class WallpaperColors {
    public final String size;

    private WallpaperColors(String size) {
        this.size = size;
    }

    public static WallpaperColors fromBitmap(Bitmap bitmap) {
        return new WallpaperColors(bitmap.getWidth() + " x " + bitmap.getHeight());
    }
}
