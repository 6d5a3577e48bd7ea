package quorvane.parallax;

import android.app.WallpaperColors;
import android.content.Context;
import android.graphics.Bitmap;
import android.hardware.display.DisplayManager;
import android.os.Build;
import android.os.Handler;
import android.os.Looper;
import android.service.wallpaper.WallpaperService;
import android.view.Display;
import android.view.SurfaceHolder;
import android.view.WindowManager;
import androidx.annotation.MainThread;
import androidx.annotation.NonNull;
import androidx.annotation.Nullable;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;

/**
 * A live wallpaper that moves in depth as the phone is tilted and as the home screen's pages are
 * turned. An app's own service says which photo:
 *
 * <pre>
 *     public final class LakeWallpaper extends ParallaxWallpaperService {
 *         protected ImageSource photo() { return () -&gt; getAssets().open("lake.jpg"); }
 *         protected ImageSource depth() { return () -&gt; getAssets().open("lake-depth.png"); }
 *     }
 * </pre>
 *
 * <p>The manifest names that class as android/README.md shows. The wallpaper rests while nobody sees
 * it, and gives back what it has of the graphics processor's memory 5 seconds later. While the
 * battery saver is on, only the pages move it. From Android 8.1 on it tells the system its colours.
 */
public abstract class ParallaxWallpaperService extends WallpaperService {
    // A frame under way takes less. What takes longer does not hold up the app: the driver has a
    // reference of its own to the surface.
    private static final long LONGEST_WAIT_MILLIS = 100;
    // Android looks at no more pixels than a square of this side has.
    private static final int COLOURS_SIDE = 112;
    /** Of the app's first thread. */
    private static final List<PhotoEngine> ENGINES = new ArrayList<>();

    /** How a wallpaper looks and moves; what is not set is as in a view. */
    public static final class Settings {
        private final Map<String, Double> parameters = new LinkedHashMap<>();
        private final ParallaxStage.Composition composition = new ParallaxStage.Composition();
        private float fullSwing = 15f;
        private float pageSwing = 0.5f;
        private int maxFps;
        private boolean reducedMotion;

        private Settings() {}

        /** As {@link ParallaxPhotoView#setParameter}. */
        public void setParameter(@NonNull String name, double value) {
            if (ParallaxStage.takes(name, value)) {
                parameters.put(name, value);
            }
        }

        /** As {@link ParallaxPhotoView#setFrame}. */
        public void setFrame(double part) {
            composition.setFrame(part);
        }

        /** As {@link ParallaxPhotoView#setPivot}. */
        public void setPivot(double x, double y) {
            composition.setPivot(x, y);
        }

        /** As {@link ParallaxPhotoView#setPivotOff}. */
        public void setPivotOff() {
            composition.pivotOff = true;
        }

        /** As {@link ParallaxPhotoView#setCleanEdges}. */
        public void setCleanEdges(boolean clean) {
            composition.cleanEdges = clean;
        }

        /** As {@link ParallaxPhotoView#setFullSwing}. */
        public void setFullSwing(float degrees) {
            TiltTracker.requireFullSwing(degrees);
            fullSwing = degrees;
        }

        /**
         * Sets how far the view goes from the middle to the home screen's last page, 0.5 at first;
         * with 0 the pages do not move it.
         *
         * @throws IllegalArgumentException unless it is from 0 to 1
         */
        public void setPageSwing(float swing) {
            if (!(swing >= 0f && swing <= 1f)) {
                throw new IllegalArgumentException("page swing: " + swing + "; it is from 0 to 1");
            }
            pageSwing = swing;
        }

        /** As {@link ParallaxPhotoView#setMaxFps}. */
        public void setMaxFps(int framesPerSecond) {
            ParallaxStage.requireMaxFps(framesPerSecond);
            maxFps = framesPerSecond;
        }

        /** Lets only the pages move it. */
        public void setReducedMotion(boolean reduced) {
            reducedMotion = reduced;
        }
    }

    /**
     * The photo, asked for on the app's first thread once a wallpaper and at every {@link
     * #reloadAll}.
     *
     * @return null where none has been chosen yet: nothing is drawn
     */
    @Nullable
    @MainThread
    protected abstract ImageSource photo();

    /**
     * What the photo shows, larger = nearer; asked for as the photo is.
     *
     * @return null, as here, where it is inside the photo's file
     */
    @Nullable
    @MainThread
    protected ImageSource depth() {
        return null;
    }

    /** Says how it looks and moves; asked as for the photo. */
    @MainThread
    protected void configure(@NonNull Settings settings) {}

    /**
     * Is told what went wrong, on the app's first thread.
     *
     * @param sentence what failed and what would work, in English
     */
    @MainThread
    protected void onError(@NonNull String sentence) {}

    /**
     * Asks all wallpapers of this process for their photo and settings again, and reads the files
     * anew: what a screen calls on which people choose a photo. On the app's first thread.
     */
    @MainThread
    public static void reloadAll() {
        for (PhotoEngine engine : ENGINES) {
            engine.reload();
        }
    }

    @Override
    @NonNull
    public Engine onCreateEngine() {
        return new PhotoEngine();
    }

    private final class PhotoEngine extends Engine {
        private ParallaxStage stage;
        private final Handler main = new Handler(Looper.getMainLooper());
        private Images images;
        private Settings settings;
        private WallpaperColors colours;
        private boolean ended;

        @Override
        public void onCreate(SurfaceHolder holder) {
            super.onCreate(holder);
            stage = new ParallaxStage(
                    ParallaxWallpaperService.this, display(), new ParallaxStage.Listener() {
                        @Override
                        public void onError(String sentence) {
                            ParallaxWallpaperService.this.onError(sentence);
                        }

                        @Override
                        public void onFirstFrame() {}
                    });
            ENGINES.add(this);
            reload();
        }

        @Override
        public void onSurfaceChanged(SurfaceHolder holder, int format, int width, int height) {
            super.onSurfaceChanged(holder, format, width, height);
            stage.setSurface(holder, width, height);
        }

        /** The system shows the surface anew. */
        @Override
        public void onSurfaceRedrawNeeded(SurfaceHolder holder) {
            super.onSurfaceRedrawNeeded(holder);
            stage.redraw();
        }

        @Override
        public void onVisibilityChanged(boolean visible) {
            stage.setShown(visible);
        }

        @Override
        public void onOffsetsChanged(float xOffset, float yOffset, float xStep, float yStep,
                int xPixels, int yPixels) {
            // Who has one page, or shows a preview, says 0, which is no page's place.
            boolean pages = xStep > 0f && xStep <= 1f && !isPreview();
            stage.setOffset(pages ? settings.pageSwing * (2f * xOffset - 1f) : 0f);
        }

        @Override
        public WallpaperColors onComputeColors() {
            return colours;
        }

        @Override
        public void onSurfaceDestroyed(SurfaceHolder holder) {
            CountDownLatch unused = new CountDownLatch(1);
            stage.removeSurface(unused::countDown);
            try {
                unused.await(LONGEST_WAIT_MILLIS, TimeUnit.MILLISECONDS);
            } catch (InterruptedException e) {
                Thread.currentThread().interrupt();
            }
            super.onSurfaceDestroyed(holder);
        }

        @Override
        public void onDestroy() {
            ended = true;
            ENGINES.remove(this);
            stage.quit();
            super.onDestroy();
        }

        void reload() {
            try {
                Settings wanted = new Settings();
                configure(wanted);
                settings = wanted;
                stage.setReducedMotion(settings.reducedMotion);
                stage.setFullSwing(settings.fullSwing);
                stage.setMaxFps(settings.maxFps);
                stage.setComposition(settings.composition);
                stage.setParameters(settings.parameters);
                ImageSource photo = photo();
                if (photo == null) {
                    return;
                }
                ImageSource depth = depth();
                Images now = depth == null ? new Images(photo) : new Images(photo, Depth.of(depth));
                if (now.equals(images)) {
                    stage.reload();
                } else {
                    images = now;
                    stage.setImages(now);
                }
                findColours(photo);
            } catch (RuntimeException e) {
                if (settings == null) {
                    settings = new Settings();
                }
                onError(ParallaxStage.sentence(e));
            }
        }

        private Display display() {
            Context shown = Build.VERSION.SDK_INT >= 29 ? getDisplayContext() : null;
            if (shown != null) {
                return ((WindowManager) shown.getSystemService(WINDOW_SERVICE)).getDefaultDisplay();
            }
            DisplayManager displays = (DisplayManager) getSystemService(DISPLAY_SERVICE);
            return displays.getDisplay(Display.DEFAULT_DISPLAY);
        }

        private void findColours(ImageSource photo) {
            if (Build.VERSION.SDK_INT < 27) {
                return;
            }
            ParallaxStage.inBackground(() -> {
                WallpaperColors found;
                try {
                    found = WallpaperColors.fromBitmap(small(photo));
                } catch (RuntimeException | OutOfMemoryError e) {
                    // The stage says what is wrong with the photo.
                    return;
                }
                main.post(() -> {
                    if (!ended) {
                        colours = found;
                        notifyColorsChanged();
                    }
                });
            });
        }
    }

    /** As small as colours need. */
    private static Bitmap small(ImageSource photo) {
        Pixels.Bounds bounds = Pixels.bounds(photo);
        double scale =
                Math.min(1.0, (double) COLOURS_SIDE / Math.max(bounds.width, bounds.height));
        int[] whole = {0, 0, bounds.width, bounds.height};
        return Pixels.photo(photo, bounds, whole, Math.max(1, (int) (bounds.width * scale)),
                Math.max(1, (int) (bounds.height * scale)));
    }
}
