package android.service.wallpaper;

import android.app.Service;
import android.app.WallpaperColors;
import android.content.Context;
import android.content.Phone;
import android.view.SurfaceHolder;

public abstract class WallpaperService extends Service {
    public boolean preview;
    public volatile int colourChanges;

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

        public WallpaperColors onComputeColors() {
            return null;
        }

        public void notifyColorsChanged() {
            ++colourChanges;
        }

        public boolean isPreview() {
            return preview;
        }

        public Context getDisplayContext() {
            return new Phone();
        }
    }
}
