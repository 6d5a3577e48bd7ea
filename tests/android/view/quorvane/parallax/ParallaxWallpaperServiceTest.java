package quorvane.parallax;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertNotNull;
import static org.junit.Assert.assertNull;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import android.content.Phone;
import android.hardware.SensorManager;
import android.os.Build;
import android.os.Handler;
import android.os.HandlerThread;
import android.os.PowerManager;
import android.service.wallpaper.WallpaperService;
import android.view.SurfaceHolder;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.util.Collections;
import java.util.List;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.concurrent.CountDownLatch;
import java.util.function.BooleanSupplier;
import java.util.function.Consumer;
import org.junit.After;
import org.junit.Before;
import org.junit.Test;

/** A wallpaper's life on fakes of Android's classes. */
public final class ParallaxWallpaperServiceTest {
    private static final class Surface implements SurfaceHolder {
        volatile boolean gone;

        @Override
        public boolean gone() {
            return gone;
        }
    }

    private static final class Wallpaper extends ParallaxWallpaperService {
        final List<String> errors = new CopyOnWriteArrayList<>();
        ImageSource photo = () -> new ByteArrayInputStream(new byte[0]);
        ImageSource depth = () -> new ByteArrayInputStream(new byte[0]);
        Consumer<Settings> wanted = settings -> {};

        @Override
        protected ImageSource photo() {
            return photo;
        }

        @Override
        protected ImageSource depth() {
            return depth;
        }

        @Override
        protected void configure(Settings settings) {
            wanted.accept(settings);
        }

        @Override
        protected void onError(String sentence) {
            errors.add(sentence);
        }
    }

    private final Wallpaper wallpaper = new Wallpaper();
    private final Surface surface = new Surface();
    private WallpaperService.Engine engine;

    @Before
    public void reset() {
        Screen.FRAMES.set(0);
        Screen.LOSSES.set(0);
        Screen.FAULT.set(null);
        ParallaxRenderer.SET.clear();
        ParallaxRenderer.absent = null;
        ParallaxRenderer.PHOTOS.set(0);
        Pixels.OPENED.set(0);
        PixelCache.SHARED.clear();
        SensorManager.present = true;
        PowerManager.saving = false;
        Handler.UNCAUGHT.clear();
    }

    @After
    public void everythingIsFreed() {
        if (engine != null) {
            end();
        }
        until(() -> Screen.OPEN.get() == 0 && ParallaxRenderer.OPEN.get() == 0
                && HandlerThread.RUNNING.get() == 0);
        SensorManager.present = false;
        assertFalse("drawn into a surface that had gone", Screen.afterRelease);
        assertEquals("nothing ends the app", Collections.emptyList(), Handler.UNCAUGHT);
        assertTrue("nobody hears of the battery any more", wallpaper.phone.receivers.isEmpty());
    }

    private static void until(BooleanSupplier condition) {
        long end = System.nanoTime() + 10_000_000_000L;
        while (!condition.getAsBoolean()) {
            assertTrue("it did not happen in 10 s", System.nanoTime() < end);
            Thread.yield();
        }
    }

    private static void sleep(int millis) {
        try {
            Thread.sleep(millis);
        } catch (InterruptedException e) {
            throw new AssertionError(e);
        }
    }

    private void begin() {
        engine = wallpaper.onCreateEngine();
        engine.onCreate(surface);
        engine.onSurfaceChanged(surface, 1, 200, 400);
        engine.onVisibilityChanged(true);
    }

    private void end() {
        engine.onVisibilityChanged(false);
        engine.onSurfaceDestroyed(surface);
        surface.gone = true;
        engine.onDestroy();
        engine = null;
    }

    private void beginAndSee() {
        begin();
        until(() -> Screen.FRAMES.get() > 0);
    }

    @Test
    public void showsThePhotoAndRestsWhileHidden() {
        beginAndSee();
        assertEquals("200 x 400", ParallaxRenderer.size);
        until(() -> SensorManager.LISTENERS.get() == 1);
        engine.onVisibilityChanged(false);
        until(() -> SensorManager.LISTENERS.get() == 0);
        assertEquals("kept for a while", 1, ParallaxRenderer.OPEN.get());
    }

    @Test
    public void whatItHoldsIsFreedWhenHiddenAndComesBack() {
        beginAndSee();
        engine.onVisibilityChanged(false);
        // When the system wants memory at once, else 5 seconds later.
        Phone.trim(20);
        until(() -> ParallaxRenderer.OPEN.get() == 0 && Screen.OPEN.get() == 0);
        int frames = Screen.FRAMES.get();
        engine.onVisibilityChanged(true);
        until(() -> Screen.FRAMES.get() > frames);
        Phone.trim(20);
        int shown = Screen.FRAMES.get();
        engine.onSurfaceRedrawNeeded(surface);
        until(() -> Screen.FRAMES.get() > shown);
        assertEquals("nothing is freed while it is seen", 1, ParallaxRenderer.OPEN.get());
    }

    @Test
    public void fiveSecondsAfterItWasHiddenItIsFreed() {
        beginAndSee();
        engine.onVisibilityChanged(false);
        // A look in between starts the time anew.
        sleep(300);
        engine.onVisibilityChanged(true);
        long hidden = System.nanoTime();
        engine.onVisibilityChanged(false);
        until(() -> ParallaxRenderer.OPEN.get() == 0);
        assertTrue(System.nanoTime() - hidden >= 4_900_000_000L);
    }

    @Test
    public void thePagesMoveIt() {
        SensorManager.present = false;
        wallpaper.wanted = settings -> {
            settings.setReducedMotion(true);
            settings.setPageSwing(0.75f);
        };
        beginAndSee();
        engine.onOffsetsChanged(1f, 0f, 0.25f, 0f, 0, 0);
        until(() -> ParallaxRenderer.x > 0.2f);
        float last = ParallaxRenderer.x;
        engine.onOffsetsChanged(0f, 0f, 0.25f, 0f, 0, 0);
        until(() -> ParallaxRenderer.x < 0f);
        assertEquals("as far to the first page as to the last", -last, ParallaxRenderer.x, 1e-6f);
        // A home screen of one page says that it shows the first.
        engine.onOffsetsChanged(0f, 0f, 0f, 0f, 0, 0);
        until(() -> ParallaxRenderer.x == 0f);
    }

    @Test
    public void aPreviewHasNoPages() {
        wallpaper.preview = true;
        SensorManager.present = false;
        wallpaper.wanted = settings -> settings.setReducedMotion(true);
        beginAndSee();
        engine.onOffsetsChanged(1f, 0f, 0.25f, 0f, 0, 0);
        int frames = Screen.FRAMES.get();
        engine.onSurfaceRedrawNeeded(surface);
        until(() -> Screen.FRAMES.get() > frames);
        assertEquals(0f, ParallaxRenderer.x, 0f);
    }

    private void toldOfTheBattery() {
        wallpaper.phone.send(PowerManager.ACTION_POWER_SAVE_MODE_CHANGED);
    }

    @Test
    public void theBatterySaverStopsTheSensor() {
        beginAndSee();
        until(() -> SensorManager.LISTENERS.get() == 1);
        PowerManager.saving = true;
        toldOfTheBattery();
        until(() -> SensorManager.LISTENERS.get() == 0);
        PowerManager.saving = false;
        toldOfTheBattery();
        until(() -> SensorManager.LISTENERS.get() == 1);
    }

    @Test
    public void anotherPhotoAndOtherSettingsAreTakenOnReload() {
        beginAndSee();
        wallpaper.photo = () -> new ByteArrayInputStream(new byte[1]);
        wallpaper.wanted = settings -> settings.setParameter("depth_contrast", 3);
        int photos = ParallaxRenderer.PHOTOS.get();
        ParallaxWallpaperService.reloadAll();
        until(() -> ParallaxRenderer.PHOTOS.get() > photos
                && ParallaxRenderer.SET.getOrDefault("depth_contrast", 0.0) == 3.0);
        // The same file with other contents.
        int opened = Pixels.OPENED.get();
        ParallaxWallpaperService.reloadAll();
        until(() -> Pixels.OPENED.get() > opened);
    }

    @Test
    public void nothingIsShownUntilAPhotoIsChosen() {
        ImageSource chosen = wallpaper.photo;
        wallpaper.photo = null;
        begin();
        assertEquals(0, Pixels.OPENED.get());
        assertEquals("and nothing is wrong", Collections.emptyList(), wallpaper.errors);
        wallpaper.photo = chosen;
        // Its depth is inside.
        wallpaper.depth = null;
        ParallaxWallpaperService.reloadAll();
        until(() -> Screen.FRAMES.get() > 0);
    }

    @Test
    public void theColoursAreThePhotos() {
        beginAndSee();
        if (Build.VERSION.SDK_INT < 27) {
            assertNull(engine.onComputeColors());
            return;
        }
        until(() -> wallpaper.colourChanges == 1);
        assertNotNull(engine.onComputeColors());
        assertEquals("112 x 84", engine.onComputeColors().size);
    }

    @Test
    public void aSlowProviderHoldsUpNobody() {
        CountDownLatch there = new CountDownLatch(1);
        wallpaper.photo = () -> {
            try {
                there.await();
            } catch (InterruptedException e) {
                throw new IOException(e);
            }
            return new ByteArrayInputStream(new byte[0]);
        };
        long start = System.nanoTime();
        begin();
        end();
        long taken = System.nanoTime() - start;
        there.countDown();
        assertTrue(taken + " ns", taken < 2_000_000_000L);
    }

    @Test
    public void aDriverThatHangsHoldsUpTheAppForAShortTime() {
        beginAndSee();
        CountDownLatch there = new CountDownLatch(1);
        ParallaxRenderer.stuck = there;
        try {
            engine.onSurfaceRedrawNeeded(surface);
            sleep(50);
            long start = System.nanoTime();
            engine.onSurfaceDestroyed(surface);
            long taken = System.nanoTime() - start;
            assertTrue(taken + " ns", taken < 2_000_000_000L);
        } finally {
            ParallaxRenderer.stuck = null;
            there.countDown();
        }
    }

    @Test
    public void whatAnAppThrowsIsASentence() {
        wallpaper.photo = () -> {
            throw new IllegalStateException("no such album");
        };
        begin();
        until(() -> !wallpaper.errors.isEmpty());
        assertTrue(wallpaper.errors.get(0), wallpaper.errors.get(0).contains("no such album"));
        wallpaper.errors.clear();
        wallpaper.wanted = settings -> settings.setFrame(7.0);
        ParallaxWallpaperService.reloadAll();
        assertTrue(wallpaper.errors.get(0), wallpaper.errors.get(0).contains("frame: 7.0"));
        wallpaper.errors.clear();
        wallpaper.wanted = settings -> {
            throw new IllegalStateException("no settings");
        };
        ParallaxWallpaperService.reloadAll();
        assertTrue(wallpaper.errors.get(0), wallpaper.errors.get(0).contains("no settings"));
    }

    @Test
    public void settingsRefuseWhatCannotBe() {
        wallpaper.wanted = settings -> {
            assertThrows(IllegalArgumentException.class, () -> settings.setPageSwing(1.5f));
            assertThrows(IllegalArgumentException.class, () -> settings.setMaxFps(-1));
            assertThrows(IllegalArgumentException.class, () -> settings.setFullSwing(0f));
            assertThrows(IllegalArgumentException.class, () -> settings.setPivot(2.0, 0.0));
            assertThrows(IllegalArgumentException.class, () -> settings.setParameter("none", 1));
        };
        beginAndSee();
        assertEquals(Collections.emptyList(), wallpaper.errors);
    }
}
