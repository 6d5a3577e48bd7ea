package android.app;

import android.graphics.Bitmap;
import androidx.annotation.RequiresApi;

@RequiresApi(27)
public final class WallpaperColors {
    public static WallpaperColors fromBitmap(Bitmap bitmap) {
        throw new UnsupportedOperationException();
    }
}
