package quorvane.parallax;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertNull;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import android.content.Phone;
import android.content.pm.ApplicationInfo;
import android.content.res.AssetManager;
import android.content.res.TypedArray;
import android.graphics.Bitmap;
import android.graphics.Canvas;
import android.graphics.SurfaceTexture;
import android.hardware.SensorManager;
import android.os.Handler;
import android.os.HandlerThread;
import android.os.Looper;
import android.os.PowerManager;
import android.provider.Settings;
import android.view.Choreographer;
import android.view.MotionEvent;
import android.view.View;
import android.view.ViewTreeObserver;
import java.io.ByteArrayInputStream;
import java.io.File;
import java.io.FileNotFoundException;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.util.Collections;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.function.BooleanSupplier;
import org.junit.After;
import org.junit.Before;
import org.junit.Test;

/** The view's life on fakes of Android's classes; frames and decoding have their real thread. */
public final class ParallaxPhotoViewTest {
    private static final String RELOAD = "quorvane.parallax.RELOAD_PROFILE";

    private final List<String> errors = new CopyOnWriteArrayList<>();
    private final SurfaceTexture surface = new SurfaceTexture();
    private final Phone phone = new Phone();
    private final ParallaxPhotoView view = new ParallaxPhotoView(phone);
    private final AtomicInteger firstFrames = new AtomicInteger();

    @Before
    public void reset() {
        Screen.FRAMES.set(0);
        Screen.LOSSES.set(0);
        Screen.FAULT.set(null);
        Settings.Global.scale = 1f;
        ParallaxRenderer.SET.clear();
        ParallaxRenderer.absent = null;
        ParallaxRenderer.CREATED.set(0);
        ParallaxRenderer.PHOTOS.set(0);
        ParallaxRenderer.DEPTHS.set(0);
        Pixels.OPENED.set(0);
        PixelCache.SHARED.clear();
        PicturePlan.asked = null;
        PicturePlan.showsFarther = false;
        PicturePlan.LOOKED.set(0);
        SensorManager.present = false;
        PowerManager.saving = false;
        Handler.UNCAUGHT.clear();
        view.setOnErrorListener(errors::add);
        view.setOnFirstFrameListener(firstFrames::incrementAndGet);
    }

    @After
    public void everythingIsFreed() {
        if (!surface.released) {
            leave();
        }
        until(() -> surface.released && Screen.OPEN.get() == 0 && ParallaxRenderer.OPEN.get() == 0
                && HandlerThread.RUNNING.get() == 0);
        assertFalse("drawn into a surface that had gone", Screen.afterRelease);
        assertFalse("renderer closed after its context", ParallaxRenderer.closedTooLate);
        assertEquals("nothing ends the app", Collections.emptyList(), Handler.UNCAUGHT);
        assertEquals(0, SensorManager.LISTENERS.get());
        assertEquals(0, ViewTreeObserver.LISTENERS.size());
        assertTrue("nobody hears broadcasts any more", phone.receivers.isEmpty());
    }

    private static void until(BooleanSupplier condition) {
        long end = System.nanoTime() + 10_000_000_000L;
        while (!condition.getAsBoolean()) {
            assertTrue("it did not happen in 10 s", System.nanoTime() < end);
            Thread.yield();
        }
    }

    private static void moreFrames() {
        int before = Screen.FRAMES.get();
        until(() -> Screen.FRAMES.get() > before + 3);
    }

    private static void noMoreFrames() {
        // What was under way may end.
        pause();
        int before = Screen.FRAMES.get();
        pause();
        assertEquals(before, Screen.FRAMES.get());
    }

    private static void preDraw() {
        for (ViewTreeObserver.OnPreDrawListener listener : ViewTreeObserver.LISTENERS) {
            listener.onPreDraw();
        }
    }

    private static void pause() {
        sleep(60);
    }

    private static void sleep(int millis) {
        try {
            Thread.sleep(millis);
        } catch (InterruptedException e) {
            throw new AssertionError(e);
        }
    }

    private void enter() {
        view.onAttachedToWindow();
        view.onVisibilityAggregated(true);
        view.told.onSurfaceTextureAvailable(surface, 200, 100);
    }

    /** In Android's order: the surface goes after the view. */
    private void leave() {
        view.onVisibilityAggregated(false);
        view.onDetachedFromWindow();
        assertFalse("the view releases it", view.told.onSurfaceTextureDestroyed(surface));
    }

    /** For tests of another one: this one never has a surface. */
    private void noView() {
        surface.released = true;
    }

    private void enterWithImages() {
        view.setImages(new Bitmap(400, 300), new Bitmap(80, 60));
        enter();
        until(() -> Screen.FRAMES.get() > 0);
    }

    /** A view that is not {@link #view}, from entering to leaving. */
    private void seen(ParallaxPhotoView inflated, Runnable checks) {
        noView();
        SurfaceTexture another = new SurfaceTexture();
        inflated.onAttachedToWindow();
        inflated.onVisibilityAggregated(true);
        inflated.told.onSurfaceTextureAvailable(another, 200, 100);
        try {
            until(() -> Screen.FRAMES.get() > 0);
            checks.run();
        } finally {
            inflated.onDetachedFromWindow();
            inflated.told.onSurfaceTextureDestroyed(another);
        }
        assertEquals("what was read of a layout is given back", 0, TypedArray.open);
    }

    @Test
    public void aLayoutNamesAssetsAndFadesIn() {
        AssetManager.OPENED.clear();
        SensorManager.present = true;
        ParallaxPhotoView inflated = new ParallaxPhotoView(phone, new Phone.Layout()
                .with(R.attr.quorvanePhoto, "photo.jpg").with(R.attr.quorvaneDepth, "depth.png")
                .with(R.attr.quorvaneFadeIn, 100).with(R.attr.quorvaneReducedMotion, true)
                .with(R.attr.quorvaneDraggable, false));
        seen(inflated, () -> {
            assertTrue(AssetManager.OPENED.contains("photo.jpg"));
            assertTrue(AssetManager.OPENED.contains("depth.png"));
            assertEquals("motion is reduced", 0, SensorManager.LISTENERS.get());
            until(() -> inflated.fadedMillis == 100);
            inflated.onTouchEvent(new MotionEvent(MotionEvent.ACTION_DOWN, 0, 100f));
            inflated.onTouchEvent(new MotionEvent(MotionEvent.ACTION_MOVE, 0, 60f));
            pause();
            assertEquals("no finger moves it", 0f, ParallaxRenderer.x, 0f);
        });
    }

    @Test
    public void aThemesStyleSaysWhatTheLayoutDoesNot() {
        AssetManager.OPENED.clear();
        SensorManager.present = true;
        Map<Integer, Object> card = new HashMap<>();
        card.put(R.attr.quorvanePhoto, "styled.jpg");
        card.put(R.attr.quorvaneDepth, "depth.png");
        card.put(R.attr.quorvaneFullSwing, 30f);
        phone.styles.put(7, card);
        phone.theme.put(R.attr.quorvanePhotoViewStyle, 7);
        ParallaxPhotoView inflated = new ParallaxPhotoView(
                phone, new Phone.Layout().with(R.attr.quorvanePhoto, "own.jpg"));
        seen(inflated, () -> {
            assertTrue(AssetManager.OPENED.contains("own.jpg"));
            assertTrue(AssetManager.OPENED.contains("depth.png"));
            assertFalse(AssetManager.OPENED.contains("styled.jpg"));
            // By 14 degrees, not half of its full swing.
            SensorManager.turn(0.5f, 0f, 100);
            until(() -> ParallaxRenderer.x < -0.4f);
            sleep(400);
            assertEquals(-0.46f, ParallaxRenderer.x, 0.05f);
        });
    }

    @Test
    public void aStyleOfTheAppsOwnCountsWhereTheThemeHasNone() {
        AssetManager.OPENED.clear();
        phone.styles.put(9, Collections.singletonMap(R.attr.quorvanePhoto, "plain.jpg"));
        seen(new ParallaxPhotoView(phone, null, 0, 9),
                () -> assertTrue(AssetManager.OPENED.contains("plain.jpg")));
    }

    @Test
    public void aLayoutsMistakesAreRefused() {
        noView();
        assertThrows(IllegalArgumentException.class, () -> new ParallaxPhotoView(phone,
                new Phone.Layout().with(R.attr.quorvaneDepth, "depth.png")));
        assertThrows(IllegalArgumentException.class, () -> new ParallaxPhotoView(phone,
                new Phone.Layout().with(R.attr.quorvaneFullSwing, 90f)));
        assertEquals(0, TypedArray.open);
    }

    @Test
    public void aLayoutsEditorNeedsNothingOfAPhone() {
        noView();
        View.editing = true;
        try {
            ParallaxRenderer.absent = new UnsatisfiedLinkError("libquorvane_jni.so");
            ParallaxPhotoView drawn = new ParallaxPhotoView(
                    phone, new Phone.Layout().with(R.attr.quorvanePhoto, "photo.jpg"));
            assertTrue("asks for what lies in it", drawn.skipsItself);
            drawn.onAttachedToWindow();
            drawn.onVisibilityAggregated(true);
            // No editor's classes here decode a file: it is gray.
            drawn.dispatchDraw(new Canvas(null));
            drawn.setPortraitPhoto(() -> null);
            drawn.dispatchDraw(new Canvas(null));
            assertEquals(0, HandlerThread.RUNNING.get());
            drawn.onDetachedFromWindow();
        } finally {
            View.editing = false;
        }
        assertFalse("on a phone it draws itself", new ParallaxPhotoView(phone).skipsItself);
    }

    @Test
    public void showsThePhotoCutToItsShape() {
        enterWithImages();
        assertEquals("200 x 100", ParallaxRenderer.size);
        // Of 400 x 300 the middle 400 x 200, and of 80 x 60 the middle 80 x 40.
        // In cells of 8 pixels those are 50 x 25.
        assertEquals("400 x 200", ParallaxRenderer.photo);
        assertEquals("200 x 100", ParallaxRenderer.depth);
        assertTrue(errors.isEmpty());
    }

    private static void untilAsked(String words) {
        until(() -> words.equals(PicturePlan.asked));
    }

    @Test
    public void choosesFramePivotAndCleanEdgesUnlessTold() {
        enterWithImages();
        // The map's own samples: edges are found in them.
        untilAsked("200 x 100, clean, depth 80 x 40");
        view.setFrame(0.75);
        untilAsked("200 x 100, clean, frame 0.75, depth 80 x 40");
        view.setFrameAuto();
        // Of 400 x 300 the 200 rows from 50 on are shown.
        view.setPivot(0.5, 0.25);
        untilAsked("200 x 100, clean, pivot 0.5 0.125, depth 80 x 40");
        view.setPivot(1.0, 0.0);
        untilAsked("200 x 100, clean, pivot 1.0 0.0, depth 80 x 40");
        view.setPivotOff();
        untilAsked("200 x 100, clean, pivot off, depth 80 x 40");
        view.setPivotAuto();
        untilAsked("200 x 100, clean, depth 80 x 40");
        view.setParameter("fov_scale", 0.7);
        untilAsked("200 x 100, clean, fov_scale = 0.7, depth 80 x 40");
        view.setCleanEdges(false);
        // 25 x 13 cells of 16 pixels, of 4 samples each.
        untilAsked("200 x 100, soft, fov_scale = 0.7, depth 100 x 52");
        moreFrames();
        assertTrue(errors.isEmpty());
    }

    @Test
    public void keepsWhatWasChosenBeforeItEnters() {
        view.setFrame(0.5);
        view.setPivotOff();
        view.setCleanEdges(false);
        enterWithImages();
        assertEquals("200 x 100, soft, frame 0.5, pivot off, depth 100 x 52", PicturePlan.asked);
    }

    @Test
    public void swingsAsFarAsThePlanAllows() {
        view.setReducedMotion(true);
        enterWithImages();
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_DOWN, 0, 100f));
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_MOVE, 0, 60f));
        // It nears 0.379 and, held, is moved by nothing else.
        until(() -> ParallaxRenderer.x > 0.37f);
        view.setFrame(1.0);
        until(() -> ParallaxRenderer.x < 0.2f);
        assertEquals(0.5f * 0.379f, ParallaxRenderer.x, 0.005f);
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_UP, 0, 60f));
    }

    @Test
    public void refusesWhatIsNoFrameOrPivot() {
        assertThrows(IllegalArgumentException.class, () -> view.setFrame(0.04));
        assertThrows(IllegalArgumentException.class, () -> view.setFrame(Double.NaN));
        assertThrows(IllegalArgumentException.class, () -> view.setPivot(-0.1, 0.5));
        assertThrows(IllegalArgumentException.class, () -> view.setPivot(0.5, Double.NaN));
        enterWithImages();
        assertEquals("200 x 100, clean, depth 80 x 40", PicturePlan.asked);
    }

    @Test
    public void followsANewSizeAndNewImages() {
        enterWithImages();
        view.told.onSurfaceTextureSizeChanged(surface, 100, 200);
        until(() -> "100 x 200".equals(ParallaxRenderer.size));
        moreFrames();
        view.setImages(new Bitmap(640, 1280), new Bitmap(640, 1280));
        until(() -> "640 x 1280".equals(ParallaxRenderer.photo));
        moreFrames();
    }

    @Test
    public void makesEverythingAnewAfterALostContext() {
        enterWithImages();
        ParallaxRenderer.photo = null;
        Screen.LOSSES.set(1);
        until(() -> ParallaxRenderer.photo != null);
        moreFrames();
        assertTrue(errors.isEmpty());
        assertEquals(1, Screen.OPEN.get());
    }

    @Test
    public void saysOnceThatNothingCanBeShown() {
        enterWithImages();
        Screen.LOSSES.set(Integer.MAX_VALUE);
        until(() -> !errors.isEmpty());
        noMoreFrames();
        assertEquals(Collections.singletonList("lost"), errors);
        // Something new is tried again.
        Screen.LOSSES.set(0);
        view.setImages(new Bitmap(40, 30), new Bitmap(40, 30));
        moreFrames();
    }

    @Test
    public void restsWhileNobodySeesIt() {
        enterWithImages();
        view.onVisibilityAggregated(false);
        noMoreFrames();
        view.onVisibilityAggregated(true);
        moreFrames();
        view.inSight = false;
        preDraw();
        noMoreFrames();
        view.inSight = true;
        preDraw();
        moreFrames();
    }

    @Test
    public void leavesAndReturns() {
        enterWithImages();
        leave();
        until(() -> surface.released);
        noMoreFrames();
        surface.released = false;
        enter();
        moreFrames();
        assertTrue(errors.isEmpty());
    }

    @Test
    public void aSurfaceThatIsThereBeforeTheViewIsUsed() {
        view.setImages(new Bitmap(400, 300), new Bitmap(80, 60));
        view.surface = surface;
        view.onAttachedToWindow();
        view.onVisibilityAggregated(true);
        until(() -> Screen.FRAMES.get() > 0);
    }

    @Test
    public void theSurfaceMayGoWhileTheViewStays() {
        enterWithImages();
        assertFalse(view.told.onSurfaceTextureDestroyed(surface));
        until(() -> surface.released);
        noMoreFrames();
        // Whatever is set meanwhile is drawn on the next one.
        view.onVisibilityAggregated(false);
        view.onVisibilityAggregated(true);
        view.setFrame(0.9);
        noMoreFrames();
        assertEquals(0, Screen.OPEN.get());
        surface.released = false;
        view.told.onSurfaceTextureAvailable(surface, 200, 100);
        moreFrames();
    }

    @Test
    public void aRefusedParameterIsSaidAtOnceAndTheOthersCount() {
        IllegalArgumentException refused = assertThrows(
                IllegalArgumentException.class, () -> view.setParameter("nonsense", 1));
        assertEquals("unknown parameter 'nonsense'", refused.getMessage());
        view.setParameter("fov_scale", 0.5);
        enterWithImages();
        untilSet("fov_scale", 0.5);
        view.setParameter("fov_scale", 0.6);
        untilSet("fov_scale", 0.6);
        moreFrames();
        assertTrue(errors.isEmpty());
    }

    private static void untilSet(String name, double value) {
        until(() -> Double.valueOf(value).equals(ParallaxRenderer.SET.get(name)));
    }

    @Test
    public void aSliderRebuildsNothing() {
        enterWithImages();
        for (int i = 1; i <= 60; ++i) {
            view.setParameter("fov_scale", 0.3 + 0.01 * i);
            sleep(5);
        }
        untilSet("fov_scale", 0.3 + 0.01 * 60);
        untilAsked("200 x 100, clean, fov_scale = 0.8999999999999999, depth 80 x 40");
        assertEquals(1, ParallaxRenderer.CREATED.get());
        assertEquals(1, ParallaxRenderer.PHOTOS.get());
        assertEquals("it shapes no depth", 1, ParallaxRenderer.DEPTHS.get());
        view.setParameter("depth_contrast", 7);
        until(() -> ParallaxRenderer.DEPTHS.get() == 2);
        assertEquals(1, ParallaxRenderer.PHOTOS.get());
    }

    @Test
    public void aLayoutAnimationEndsInOneNewSize() {
        enterWithImages();
        for (int i = 1; i <= 30; ++i) {
            view.told.onSurfaceTextureSizeChanged(surface, 200, 100 + i);
            sleep(8);
        }
        until(() -> "200 x 130".equals(ParallaxRenderer.size));
        untilAsked("200 x 130, clean, depth 80 x 52");
        moreFrames();
        assertEquals(1, ParallaxRenderer.CREATED.get());
        assertEquals("cut to the new shape", 2, ParallaxRenderer.PHOTOS.get());
    }

    @Test
    public void aSizeOfTheSameShapeKeepsThePhoto() {
        enterWithImages();
        view.told.onSurfaceTextureSizeChanged(surface, 220, 110);
        until(() -> "220 x 110".equals(ParallaxRenderer.size));
        untilAsked("220 x 110, clean, depth 80 x 40");
        moreFrames();
        assertEquals(1, ParallaxRenderer.PHOTOS.get());
    }

    @Test
    public void scrollingOutAndBackDecodesNothing() {
        ImageSource photo = () -> new ByteArrayInputStream(new byte[1]);
        ImageSource depth = () -> new ByteArrayInputStream(new byte[1]);
        view.setImages(photo, depth);
        enter();
        until(() -> Screen.FRAMES.get() > 0);
        int opened = Pixels.OPENED.get();
        for (int i = 1; i <= 20; ++i) {
            leave();
            until(() -> surface.released);
            surface.released = false;
            Screen.FRAMES.set(0);
            enter();
            view.setImages(photo, depth);
            until(() -> Screen.FRAMES.get() > 0);
        }
        assertEquals(opened, Pixels.OPENED.get());
    }

    @Test
    public void settingTheSameAgainDoesNothingUntilItIsReloaded() {
        ImageSource photo = () -> new ByteArrayInputStream(new byte[1]);
        view.setPortraitPhoto(photo);
        enter();
        until(() -> Screen.FRAMES.get() > 0);
        assertEquals("read once for the depth, once for the photo", 2, Pixels.OPENED.get());
        for (int i = 0; i < 10; ++i) {
            view.setPortraitPhoto(photo);
        }
        pause();
        assertEquals(2, Pixels.OPENED.get());
        assertEquals(1, ParallaxRenderer.PHOTOS.get());
        view.reload();
        until(() -> ParallaxRenderer.PHOTOS.get() == 2);
        assertEquals(4, Pixels.OPENED.get());
        assertEquals(1, ParallaxRenderer.CREATED.get());
    }

    @Test
    public void settingWhatIsOnItsWayAlreadyStartsNothingAnew() {
        CountDownLatch there = new CountDownLatch(1);
        AtomicInteger opened = new AtomicInteger();
        ImageSource photo = () -> {
            opened.incrementAndGet();
            try {
                there.await();
            } catch (InterruptedException e) {
                throw new IOException(e);
            }
            return new ByteArrayInputStream(new byte[1]);
        };
        view.setPortraitPhoto(photo);
        enter();
        until(() -> opened.get() == 1);
        view.setPortraitPhoto(photo);
        pause();
        assertEquals(1, opened.get());
        there.countDown();
        until(() -> Screen.FRAMES.get() > 0);
        assertEquals("for the depth and for the photo", 2, opened.get());
    }

    @Test
    public void whateverASourceThrowsIsToldAndEndsNothing() {
        Throwable[] thrown = {new IllegalArgumentException("Unknown URL"), new SecurityException("no"),
            new NullPointerException(), new OutOfMemoryError(), new NoClassDefFoundError("x"),
            new StackOverflowError(), new AssertionError("own")};
        enter();
        for (Throwable one : thrown) {
            errors.clear();
            view.setImages(() -> rethrown(one), () -> new ByteArrayInputStream(new byte[1]));
            until(() -> errors.size() == 1);
            view.setImages(new Bitmap(40, 30), Depth.of(() -> rethrown(one)));
            until(() -> errors.size() == 2);
        }
        view.setImages(() -> null, () -> null);
        until(() -> errors.size() == 3);
        view.setImages(new Bitmap(40, 30), new Bitmap(40, 30));
        moreFrames();
    }

    private static java.io.InputStream rethrown(Throwable thrown) {
        if (thrown instanceof Error) {
            throw (Error) thrown;
        }
        throw (RuntimeException) thrown;
    }

    @Test
    public void whateverTheDriverThrowsIsToldAndEndsNothing() {
        enterWithImages();
        Screen.FAULT.set(new IllegalStateException("driver"));
        view.setParameter("fov_scale", 0.5);
        until(() -> !errors.isEmpty());
        assertEquals(Collections.singletonList(
                "unexpected: java.lang.IllegalStateException: driver"), errors);
    }

    @Test
    public void aMissingLibraryIsASentence() {
        ParallaxRenderer.absent = new UnsatisfiedLinkError("libquorvane_jni.so");
        view.setImages(new Bitmap(40, 30), new Bitmap(40, 30));
        enter();
        until(() -> !errors.isEmpty());
        assertTrue(errors.get(0), errors.get(0).contains("isSupported"));
    }

    @Test
    public void settersRefuseOnTheCallersThread() {
        Bitmap gone = new Bitmap(4, 3);
        gone.recycle();
        Bitmap here = new Bitmap(4, 3);
        Runnable[] wrong = {() -> view.setImages(here, (Bitmap) null),
            () -> view.setImages((Bitmap) null, here), () -> view.setImages(gone, here),
            () -> view.setImages(here, gone), () -> view.setImages(here, (Depth) null),
            () -> view.setImages((ImageSource) null, () -> null),
            () -> view.setImages(() -> null, (ImageSource) null),
            () -> view.setAssets(null, "b"), () -> view.setAssets("a", null),
            () -> view.setPortraitPhoto((ImageSource) null),
            () -> view.setPortraitPhoto((android.net.Uri) null), () -> view.setProfile(null),
            () -> view.setFadeIn(-1), () -> view.setMaxFps(-1),
            () -> Depth.of(new float[11], 4, 3), () -> Depth.of(new float[12], 0, 3)};
        for (int i = 0; i < wrong.length; ++i) {
            Runnable one = wrong[i];
            assertThrows("setter " + i, IllegalArgumentException.class, one::run);
        }
        assertThrows(UnsupportedOperationException.class,
                () -> view.setSurfaceTextureListener(null));
        enterWithImages();
    }

    @Test
    public void nothingIsToldAfterTheViewHasGone() throws InterruptedException {
        CountDownLatch opened = new CountDownLatch(1);
        CountDownLatch close = new CountDownLatch(1);
        view.setImages(() -> {
            opened.countDown();
            try {
                close.await();
            } catch (InterruptedException e) {
                throw new FileNotFoundException("interrupted");
            }
            throw new FileNotFoundException("late");
        }, () -> new ByteArrayInputStream(new byte[1]));
        enter();
        opened.await();
        // The surface goes though a file is still being opened.
        leave();
        until(() -> surface.released);
        close.countDown();
        pause();
        assertTrue(errors.isEmpty());
    }

    @Test
    public void whatWasOnItsWayWhenTheViewWentIsNotTold() {
        enter();
        new Handler(Looper.getMainLooper()).post(() -> {
            view.setImages(() -> {
                throw new FileNotFoundException("x");
            }, () -> new ByteArrayInputStream(new byte[1]));
            // Told by now, behind what this thread is doing.
            pause();
            leave();
        });
        until(() -> surface.released);
        pause();
        assertTrue(errors.isEmpty());
    }

    @Test
    public void tellsTheFirstFrameOfEverySetOfImages() {
        view.setFadeIn(150);
        enter();
        assertEquals(0f, view.getAlpha(), 0f);
        pause();
        assertEquals(0, firstFrames.get());
        view.setImages(new Bitmap(400, 300), new Bitmap(80, 60));
        until(() -> firstFrames.get() == 1 && view.getAlpha() == 1f);
        assertEquals(150, view.fadedMillis);
        moreFrames();
        assertEquals(1, firstFrames.get());
        view.setImages(new Bitmap(300, 300), new Bitmap(80, 80));
        until(() -> firstFrames.get() == 2);
    }

    @Test
    public void nothingWakesAPhoneThatLiesStill() {
        SensorManager.present = true;
        enterWithImages();
        noMoreFrames();
        int before = Choreographer.WAKES.get();
        // Noise below the dead zone.
        SensorManager.turn(0.01f, -0.01f, 40);
        pause();
        assertEquals(before, Choreographer.WAKES.get());
        // The screen is in landscape: about its y, by 14 degrees.
        SensorManager.turn(0.5f, 0f, 100);
        until(() -> ParallaxRenderer.x < -0.7f);
        assertEquals(1, SensorManager.LISTENERS.get());
        view.setReducedMotion(true);
        until(() -> SensorManager.LISTENERS.get() == 0 && ParallaxRenderer.x > -0.01f);
        sleep(400);
        noMoreFrames();
    }

    @Test
    public void theBatterySaverLeavesItToTheFinger() {
        SensorManager.present = true;
        PowerManager.saving = true;
        enterWithImages();
        noMoreFrames();
        assertEquals(0, SensorManager.LISTENERS.get());
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_DOWN, 0, 100f));
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_MOVE, 0, 60f));
        until(() -> ParallaxRenderer.x > 0.37f);
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_UP, 0, 60f));
        PowerManager.saving = false;
        phone.send(PowerManager.ACTION_POWER_SAVE_MODE_CHANGED);
        until(() -> SensorManager.LISTENERS.get() == 1);
    }

    @Test
    public void whatAHiddenViewHoldsIsFreedWhenTheSystemWantsMemory() {
        enterWithImages();
        Phone.trim(20);
        moreFrames();
        assertEquals("nothing is freed while it is seen", 1, ParallaxRenderer.CREATED.get());
        view.onVisibilityAggregated(false);
        Phone.trim(20);
        until(() -> ParallaxRenderer.OPEN.get() == 0 && Screen.OPEN.get() == 0);
        view.onVisibilityAggregated(true);
        moreFrames();
        assertEquals(2, ParallaxRenderer.CREATED.get());
        assertTrue(errors.isEmpty());
    }

    @Test
    public void framesCanBeFewer() {
        enterWithImages();
        view.setMaxFps(20);
        pause();
        int before = Screen.FRAMES.get();
        sleep(500);
        int drawn = Screen.FRAMES.get() - before;
        assertTrue(drawn + " frames in half a second", drawn <= 12);
    }

    @Test
    public void aDragToTheSideIsTheViews() {
        enterWithImages();
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_DOWN, 0, 100f, 50f));
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_MOVE, 0, 105f, 50f));
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_MOVE, 0, 109f, 80f));
        assertFalse("up and down scrolls a list", view.ownsFinger);
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_MOVE, 0, 140f, 55f));
        assertTrue(view.ownsFinger);
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_UP, 0, 140f, 55f));
    }

    private static ImageSource text(String text) {
        return () -> new ByteArrayInputStream(text.getBytes(StandardCharsets.UTF_8));
    }

    @Test
    public void aProfileTakesThePlaceOfWhatWasSet() {
        view.setParameter("fov_scale", 0.5);
        view.setPivotOff();
        enterWithImages();
        untilSet("fov_scale", 0.5);
        view.setProfile(text("{\"quorvane_profile\": 1, \"parameters\": {\"depth_contrast\": 20},"
                + "\"options\": {\"frame\": 0.9, \"pivot\": \"0.5,0.25\", \"edges\": \"clean\","
                + "\"motion\": \"circle\", \"invert-depth\": \"yes\", \"amount\": 0.5}}"));
        untilAsked("200 x 100, clean, depth_contrast = 20.0, frame 0.9, pivot 0.5 0.125, depth 80 x 40");
        for (String wrong : new String[] {"nonsense", "{}", "{\"quorvane_profile\": 2}",
            "{\"quorvane_profile\": 1, \"parameters\": {\"nonsense\": 1}}",
            "{\"quorvane_profile\": 1, \"parameters\": {\"fov_scale\": \"x\"}}",
            "{\"quorvane_profile\": 1, \"options\": {\"frame\": 2}}",
            "{\"quorvane_profile\": 1, \"options\": {\"pivot\": \"1\"}}",
            "{\"quorvane_profile\": 1, \"options\": {\"edges\": \"blunt\"}}"}) {
            errors.clear();
            view.setProfile(text(wrong));
            until(() -> errors.size() == 1);
            assertTrue(errors.get(0), errors.get(0).startsWith("profile: ")
                    || errors.get(0).startsWith("unknown parameter"));
        }
        moreFrames();
    }

    private void profileSays(String nearEnd, double frame) {
        view.setProfile(text("{\"quorvane_profile\": 1, \"options\": {\"invert-depth\": \"" + nearEnd
                + "\", \"frame\": " + frame + "}}"));
        untilAsked("200 x 100, clean, frame " + frame + ", depth 400 x 200");
    }

    @Test
    public void aProfileSaysWhichEndIsNear() {
        ImageSource photo = () -> new ByteArrayInputStream(new byte[1]);
        ImageSource depth = () -> new ByteArrayInputStream(new byte[1]);
        view.setImages(photo, depth);
        enter();
        until(() -> Screen.FRAMES.get() > 0);
        assertEquals(0, PicturePlan.firstSample);
        profileSays("yes", 0.9);
        assertEquals(255, PicturePlan.firstSample);
        profileSays("no", 0.8);
        assertEquals(0, PicturePlan.firstSample);
        assertEquals("nobody has asked for it", 0, PicturePlan.LOOKED.get());
        PicturePlan.showsFarther = true;
        profileSays("auto", 0.7);
        assertEquals(255, PicturePlan.firstSample);
        view.setFrame(0.6);
        untilAsked("200 x 100, clean, frame 0.6, depth 400 x 200");
        assertEquals("once is enough", 1, PicturePlan.LOOKED.get());
        assertEquals(255, PicturePlan.firstSample);
        // What the app itself says needs no look.
        view.setImages(photo, Depth.of(depth).largerIsFarther());
        view.setFrame(0.5);
        untilAsked("200 x 100, clean, frame 0.5, depth 400 x 200");
        assertEquals(1, PicturePlan.LOOKED.get());
        assertTrue(errors.isEmpty());
    }

    @Test
    public void aDebuggableAppReloadsItsProfileWhenTheShellSaysSo() throws IOException {
        phone.info.flags = ApplicationInfo.FLAG_DEBUGGABLE;
        phone.folder = new File(Files.createTempDirectory("profile").toFile(), "files");
        File profile = new File(phone.folder, "profile.json");
        enterWithImages();
        assertEquals("android.permission.DUMP", phone.permissions.get(RELOAD));
        until(() -> phone.folder.isDirectory());
        Files.write(profile.toPath(), "{\"quorvane_profile\": 1, \"options\": {\"frame\": \"0.7\"}}"
                .getBytes(StandardCharsets.UTF_8));
        phone.send(RELOAD);
        untilAsked("200 x 100, clean, frame 0.7, depth 80 x 40");
        leave();
        assertNull(phone.receivers.get(RELOAD));
        Files.delete(profile.toPath());
        Files.delete(phone.folder.toPath());
        Files.delete(phone.folder.getParentFile().toPath());
    }

    @Test
    public void otherAppsHearNoBroadcast() {
        enterWithImages();
        assertNull(phone.receivers.get(RELOAD));
    }

    @Test
    public void movesAsARecordedHandDid() {
        SensorManager.present = true;
        view.setReplay(text("{\"t\": 0, \"x\": 0.6, \"y\": 0}\n\n{\"t\": 0.2, \"x\": 0.8, \"y\": 0}\n"));
        enterWithImages();
        until(() -> ParallaxRenderer.x > 0.7f);
        assertEquals("no sensor is needed", 0, SensorManager.LISTENERS.get());
        until(() -> ParallaxRenderer.x < 0.65f && ParallaxRenderer.x > 0.59f);
        view.setReplay(null);
        until(() -> SensorManager.LISTENERS.get() == 1);
        for (String wrong : new String[] {"", "{\"t\": 0}", "{\"t\": 0, \"x\": 2, \"y\": 0}",
            "{\"t\": 1, \"x\": 0, \"y\": 0}\n{\"t\": 1, \"x\": 0, \"y\": 0}"}) {
            errors.clear();
            view.setReplay(text(wrong));
            until(() -> errors.size() == 1);
            assertTrue(errors.get(0), errors.get(0).startsWith("recorded hand: "));
        }
    }

    @Test
    public void anImageThatCannotBeReadIsTold() {
        view.setImages(() -> new ByteArrayInputStream(new byte[1]), () -> {
            throw new FileNotFoundException("depth.png");
        });
        enter();
        until(() -> !errors.isEmpty());
        assertEquals(Collections.singletonList("file: cannot be read (depth.png)"), errors);
        noMoreFrames();
    }

    @Test
    public void aFingerMovesThePictureAndAnotherOneTakesOver() {
        view.setReducedMotion(true);
        enterWithImages();
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_DOWN, 0, 100f));
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_MOVE, 0, 60f));
        until(() -> ParallaxRenderer.x > 0.37f);
        // The finger beside it is left alone on the screen.
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_MOVE, 1, 190f));
        pause();
        assertEquals(0.379f, ParallaxRenderer.x, 0.005f);
        view.onTouchEvent(new MotionEvent(MotionEvent.ACTION_UP, 1, 190f));
    }

    @Test
    public void withTheDevicesAnimationsOffOnePictureIsEnough() {
        Settings.Global.scale = 0f;
        enterWithImages();
        noMoreFrames();
        assertEquals(1, Screen.FRAMES.get());
        assertEquals(0f, ParallaxRenderer.x, 0f);
    }
}
