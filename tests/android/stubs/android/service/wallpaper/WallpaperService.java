package android.service.wallpaper;

import android.app.Service;
import android.view.SurfaceHolder;

public abstract class WallpaperService extends Service {
    public abstract Engine onCreateEngine();

    public class Engine {
        public void onCreate(SurfaceHolder holder) {}

        public void onDestroy() {}

        public void onVisibilityChanged(boolean visible) {}

        public void onSurfaceChanged(SurfaceHolder holder, int format, int width, int height) {}

        public void onSurfaceDestroyed(SurfaceHolder holder) {}
    }
}
