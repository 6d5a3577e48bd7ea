package android.service.wallpaper;

import android.app.Service;
import android.app.WallpaperColors;
import android.content.Context;
import android.view.SurfaceHolder;
import androidx.annotation.RequiresApi;

public abstract class WallpaperService extends Service {
    public abstract Engine onCreateEngine();

    public class Engine {
        public void onCreate(SurfaceHolder holder) {}

        public void onDestroy() {}

        public void onVisibilityChanged(boolean visible) {}

        public void onSurfaceChanged(SurfaceHolder holder, int format, int width, int height) {}

        public void onSurfaceRedrawNeeded(SurfaceHolder holder) {}

        public void onSurfaceDestroyed(SurfaceHolder holder) {}

        public void onOffsetsChanged(float xOffset, float yOffset, float xOffsetStep,
                float yOffsetStep, int xPixelOffset, int yPixelOffset) {}

        @RequiresApi(27)
        public WallpaperColors onComputeColors() {
            throw new UnsupportedOperationException();
        }

        @RequiresApi(27)
        public void notifyColorsChanged() {}

        public boolean isPreview() {
            throw new UnsupportedOperationException();
        }

        @RequiresApi(29)
        public Context getDisplayContext() {
            throw new UnsupportedOperationException();
        }
    }
}
