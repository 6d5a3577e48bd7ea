package quorvane.parallax;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import android.content.ContentResolver;
import android.content.Context;
import android.content.res.AssetManager;
import android.graphics.Bitmap;
import android.graphics.SurfaceTexture;
import android.hardware.SensorManager;
import android.os.HandlerThread;
import android.provider.Settings;
import android.view.MotionEvent;
import java.io.ByteArrayInputStream;
import java.io.FileNotFoundException;
import java.util.Collections;
import java.util.List;
import java.util.concurrent.CopyOnWriteArrayList;
import java.util.function.BooleanSupplier;
import org.junit.After;
import org.junit.Before;
import org.junit.Test;

/** The view's life on fakes of Android's classes; frames and decoding have their real thread. */
public final class ParallaxPhotoViewTest {
    private final List<String> errors = new CopyOnWriteArrayList<>();
    private final SurfaceTexture surface = new SurfaceTexture();
    private final ParallaxPhotoView view = new ParallaxPhotoView(new Phone());

    /** A context with nothing but a sensor manager. */
    private static final class Phone extends Context {
        @Override
        public Object getSystemService(String name) {
            return new SensorManager();
        }

        @Override
        public ContentResolver getContentResolver() {
            return new ContentResolver() {};
        }

        @Override
        public AssetManager getAssets() {
            return new AssetManager();
        }
    }

    @Before
    public void reset() {
        Screen.FRAMES.set(0);
        Screen.LOSSES.set(0);
        Settings.Global.scale = 1f;
        ParallaxRenderer.parameter = null;
        PicturePlan.asked = null;
        view.setOnErrorListener(errors::add);
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

    private static void pause() {
        try {
            Thread.sleep(60);
        } catch (InterruptedException e) {
            throw new AssertionError(e);
        }
    }

    private void enter() {
        view.onAttachedToWindow();
        view.onVisibilityAggregated(true);
        view.onSurfaceTextureAvailable(surface, 200, 100);
    }

    /** In Android's order: the surface goes after the view. */
    private void leave() {
        view.onVisibilityAggregated(false);
        view.onDetachedFromWindow();
        assertFalse("the view releases it", view.onSurfaceTextureDestroyed(surface));
    }

    private void enterWithImages() {
        view.setImages(new Bitmap(400, 300), new Bitmap(80, 60));
        enter();
        until(() -> Screen.FRAMES.get() > 0);
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
        view.onSurfaceTextureSizeChanged(surface, 100, 200);
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
        view.onPreDraw();
        noMoreFrames();
        view.inSight = true;
        view.onPreDraw();
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
    public void theSurfaceMayGoWhileTheViewStays() {
        enterWithImages();
        assertFalse(view.onSurfaceTextureDestroyed(surface));
        until(() -> surface.released);
        noMoreFrames();
        surface.released = false;
        view.onSurfaceTextureAvailable(surface, 200, 100);
        moreFrames();
    }

    @Test
    public void aRefusedParameterIsToldAndTheOthersCount() {
        view.setParameter("nonsense", 1);
        view.setParameter("fov_scale", 0.5);
        enterWithImages();
        until(() -> !errors.isEmpty());
        assertEquals("fov_scale = 0.5", ParallaxRenderer.parameter);
        assertEquals(Collections.singletonList("unknown parameter 'nonsense'"), errors);
        view.setParameter("fov_scale", 0.6);
        until(() -> "fov_scale = 0.6".equals(ParallaxRenderer.parameter));
        moreFrames();
        assertEquals(1, errors.size());
    }

    @Test
    public void anImageThatCannotBeReadIsTold() {
        view.setImages(() -> new ByteArrayInputStream(new byte[1]), () -> {
            throw new FileNotFoundException("depth.png");
        });
        enter();
        until(() -> !errors.isEmpty());
        assertEquals(Collections.singletonList("depth map: cannot be read (depth.png)"), errors);
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
