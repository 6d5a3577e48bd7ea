package quorvane.parallax;

import android.hardware.display.DisplayManager;
import android.service.wallpaper.WallpaperService;
import android.view.Display;
import android.view.SurfaceHolder;
import java.util.concurrent.CountDownLatch;

/**
 * A live wallpaper that moves in depth as the phone is tilted. An app's own service says which
 * photo:
 *
 * <pre>
 *     public final class LakeWallpaper extends ParallaxWallpaperService {
 *         protected ImageSource photo() { return () -&gt; getAssets().open("lake.jpg"); }
 *         protected ImageSource depth() { return () -&gt; getAssets().open("lake-depth.png"); }
 *     }
 * </pre>
 *
 * <p>The manifest names that class, with the permission {@code
 * android.permission.BIND_WALLPAPER}.
 */
public abstract class ParallaxWallpaperService extends WallpaperService {
    /** The photo; asked for once a wallpaper. */
    protected abstract ImageSource photo();

    /** What the photo shows, larger = nearer; asked for once a wallpaper. */
    protected abstract ImageSource depth();

    /**
     * Is told what went wrong, on the app's first thread.
     *
     * @param sentence what failed and what would work, in English
     */
    protected void onError(String sentence) {}

    @Override
    public Engine onCreateEngine() {
        return new PhotoEngine();
    }

    private final class PhotoEngine extends Engine {
        private ParallaxStage stage;

        @Override
        public void onCreate(SurfaceHolder holder) {
            super.onCreate(holder);
            DisplayManager displays = (DisplayManager) getSystemService(DISPLAY_SERVICE);
            stage = new ParallaxStage(ParallaxWallpaperService.this,
                    displays.getDisplay(Display.DEFAULT_DISPLAY), new ParallaxStage.Listener() {
                        @Override
                        public void onError(String sentence) {
                            ParallaxWallpaperService.this.onError(sentence);
                        }

                        @Override
                        public void onFirstFrame() {}
                    });
            stage.setImages(new Images(photo(), Depth.of(depth())));
        }

        @Override
        public void onSurfaceChanged(SurfaceHolder holder, int format, int width, int height) {
            super.onSurfaceChanged(holder, format, width, height);
            stage.setSurface(holder, width, height);
        }

        @Override
        public void onVisibilityChanged(boolean visible) {
            stage.setShown(visible);
        }

        /** The surface is gone when this returns. */
        @Override
        public void onSurfaceDestroyed(SurfaceHolder holder) {
            CountDownLatch unused = new CountDownLatch(1);
            stage.removeSurface(unused::countDown);
            boolean interrupted = false;
            while (unused.getCount() > 0) {
                try {
                    unused.await();
                } catch (InterruptedException e) {
                    interrupted = true;
                }
            }
            if (interrupted) {
                Thread.currentThread().interrupt();
            }
            super.onSurfaceDestroyed(holder);
        }

        @Override
        public void onDestroy() {
            stage.quit();
            super.onDestroy();
        }
    }
}
