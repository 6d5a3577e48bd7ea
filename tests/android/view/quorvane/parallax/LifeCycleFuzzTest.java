package quorvane.parallax;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertTrue;

import android.content.Phone;
import android.graphics.Bitmap;
import android.graphics.SurfaceTexture;
import android.hardware.SensorManager;
import android.os.Handler;
import android.os.HandlerThread;
import android.view.MotionEvent;
import android.view.ViewTreeObserver;
import java.io.ByteArrayInputStream;
import java.io.FileNotFoundException;
import java.io.InputStream;
import java.util.Collections;
import java.util.Random;
import java.util.function.BooleanSupplier;
import org.junit.Test;

/**
 * Many lives of a view, each of random events in any order that Android allows, with sources and
 * drivers that fail: nothing is left, and nothing ends the app. A life is known by its seed.
 */
public final class LifeCycleFuzzTest {
    private static final int LIVES = 60;
    private static final int EVENTS = 60;

    @Test
    public void nothingIsLeftOfAnyLife() {
        PixelCache.SHARED.clear();
        Handler.UNCAUGHT.clear();
        for (int seed = 1; seed <= LIVES; ++seed) {
            SensorManager.present = seed % 2 == 0;
            new Life(seed).run();
        }
    }

    private static final class Life {
        private final String name;
        private final Random random;
        private final ParallaxPhotoView view = new ParallaxPhotoView(new Phone());
        private SurfaceTexture surface;
        private boolean inWindow;
        private boolean visible;
        private volatile boolean toldTooLate;

        Life(int seed) {
            name = "seed " + seed;
            random = new Random(seed);
            view.setOnErrorListener(sentence -> {
                toldTooLate |= !inWindow;
                assertFalse(name, sentence == null || sentence.isEmpty() || sentence.contains("\n"));
            });
            view.setOnFirstFrameListener(() -> toldTooLate |= !inWindow);
        }

        void run() {
            for (int i = 0; i < EVENTS; ++i) {
                // Like every call of a view, on the app's first thread.
                onMain(this::event);
                if (random.nextInt(4) == 0) {
                    pause();
                }
            }
            onMain(() -> {
                leave();
                removeSurface();
            });
            until("everything is freed", () -> Screen.OPEN.get() == 0
                    && ParallaxRenderer.OPEN.get() == 0 && HandlerThread.RUNNING.get() == 0);
            assertEquals(name, Collections.emptyList(), Handler.UNCAUGHT);
            assertEquals(name, 0, SensorManager.LISTENERS.get());
            assertTrue(name, ViewTreeObserver.LISTENERS.isEmpty());
            assertFalse(name + ": drawn after the surface had gone", Screen.afterRelease);
            assertFalse(name + ": closed after its context", ParallaxRenderer.closedTooLate);
            assertFalse(name + ": told after it had left", toldTooLate);
        }

        private void event() {
            switch (random.nextInt(17)) {
                case 0:
                case 1:
                    if (!inWindow) {
                        inWindow = true;
                        view.onAttachedToWindow();
                    }
                    break;
                case 2:
                    leave();
                    break;
                case 3:
                case 4:
                    if (inWindow && surface == null) {
                        surface = new SurfaceTexture();
                        view.told.onSurfaceTextureAvailable(surface, size(), size());
                    }
                    break;
                case 5:
                    removeSurface();
                    break;
                case 6:
                    if (surface != null) {
                        view.told.onSurfaceTextureSizeChanged(surface, size(), size());
                    }
                    break;
                case 7:
                case 8:
                    visible = !visible;
                    view.onVisibilityAggregated(visible);
                    break;
                case 9:
                    view.inSight = random.nextInt(3) > 0;
                    ViewTreeObserver.LISTENERS.forEach(ViewTreeObserver.OnPreDrawListener::onPreDraw);
                    break;
                case 10:
                    view.setImages(source(), source());
                    break;
                case 11:
                    view.setPortraitPhoto(source());
                    break;
                case 12:
                    view.setImages(new Bitmap(40, 30), Depth.of(new float[12], 4, 3));
                    break;
                case 13:
                    view.setParameter("depth_contrast", random.nextInt(10));
                    view.setFrame(0.5);
                    break;
                case 14:
                    if (random.nextBoolean()) {
                        Screen.LOSSES.set(random.nextInt(3));
                    } else {
                        Screen.FAULT.set(new IllegalStateException("driver"));
                    }
                    break;
                case 15:
                    view.onTouchEvent(new MotionEvent(random.nextInt(4), random.nextInt(2),
                            size(), size()));
                    SensorManager.turn(0.5f, 0.5f, 5);
                    break;
                default:
                    view.reload();
                    view.setReducedMotion(random.nextBoolean());
                    view.setMaxFps(30 * random.nextInt(3));
                    break;
            }
        }

        private int size() {
            return 20 + random.nextInt(300);
        }

        private ImageSource source() {
            int kind = random.nextInt(6);
            return () -> opened(kind);
        }

        private static InputStream opened(int kind) throws FileNotFoundException {
            switch (kind) {
                case 0:
                    throw new FileNotFoundException("none");
                case 1:
                    throw new IllegalArgumentException("Unknown URL");
                case 2:
                    throw new OutOfMemoryError();
                case 3:
                    pause();
                    return new ByteArrayInputStream(new byte[1]);
                default:
                    return new ByteArrayInputStream(new byte[1]);
            }
        }

        private void leave() {
            if (inWindow) {
                view.onVisibilityAggregated(false);
                visible = false;
                view.onDetachedFromWindow();
                inWindow = false;
                removeSurface();
            }
        }

        private void removeSurface() {
            if (surface != null) {
                SurfaceTexture gone = surface;
                surface = null;
                if (!view.told.onSurfaceTextureDestroyed(gone)) {
                    until("the view releases it", () -> gone.released);
                }
            }
        }

        private void onMain(Runnable work) {
            boolean[] done = {false};
            new Handler(android.os.Looper.getMainLooper()).post(() -> {
                work.run();
                synchronized (done) {
                    done[0] = true;
                }
            });
            until("the main thread waits for nothing", () -> {
                synchronized (done) {
                    return done[0] || !Handler.UNCAUGHT.isEmpty();
                }
            });
            assertEquals(name, Collections.emptyList(), Handler.UNCAUGHT);
        }

        private void until(String what, BooleanSupplier condition) {
            long end = System.nanoTime() + 10_000_000_000L;
            while (!condition.getAsBoolean()) {
                assertTrue(name + ": " + what, System.nanoTime() < end);
                Thread.yield();
            }
        }

        private static void pause() {
            try {
                Thread.sleep(3);
            } catch (InterruptedException e) {
                throw new AssertionError(e);
            }
        }
    }
}
