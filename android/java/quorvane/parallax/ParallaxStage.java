package quorvane.parallax;

import android.content.Context;
import android.graphics.Bitmap;
import android.os.Handler;
import android.os.HandlerThread;
import android.os.Looper;
import android.os.Process;
import android.provider.Settings;
import android.view.Choreographer;
import android.view.Display;
import java.nio.ByteBuffer;
import java.util.Iterator;
import java.util.LinkedHashMap;
import java.util.Map;

/**
 * A moving photo on a surface: what {@link ParallaxPhotoView} and {@link ParallaxWallpaperService}
 * share. It has a thread of its own, on which the images are decoded, the sensor's samples arrive
 * and every frame is drawn, so that nothing needs a lock. All calls may come from any thread and
 * return at once.
 */
final class ParallaxStage implements Choreographer.FrameCallback {
    /** Gets an image for the stage's thread, its longer side about as asked for. */
    interface Picture {
        Bitmap get(int longest);
    }

    /** What is chosen for a picture unless the app says it. */
    static final class Composition {
        boolean cleanEdges = true;
        /** The visible part of each side; NaN: as much as shows no border. */
        double frame = Double.NaN;
        boolean pivotOff;
        /** The point of the photo that stays in place; null: the subject. */
        double[] pivot;

        Composition copy() {
            Composition copy = new Composition();
            copy.cleanEdges = cleanEdges;
            copy.frame = frame;
            copy.pivotOff = pivotOff;
            copy.pivot = pivot;
            return copy;
        }
    }

    /** The tuned parameters for a phone. */
    private static final int ORIENTATION = 4;
    // More than a phone's screen shows; the photo alone takes 20 MB then, and as much in the
    // driver.
    private static final int LONGEST_PHOTO = 2560;
    // The renderer smooths the depth map anyway.
    private static final int LONGEST_DEPTH = 1280;

    private final Context context;
    private final Display display;
    private final ParallaxPhotoView.OnErrorListener errors;
    private final HandlerThread thread =
            new HandlerThread("parallax", Process.THREAD_PRIORITY_DISPLAY);
    private final Handler handler;
    private final Handler main = new Handler(Looper.getMainLooper());

    // From here on for the stage's thread only.
    private final TiltTracker tracker = new TiltTracker();
    private final MotionSensor sensor;
    private final Map<String, Double> parameters = new LinkedHashMap<>();
    private Composition composition = new Composition();
    private boolean reducedMotion;
    private boolean shown;
    private boolean running;
    private Bitmap photo;
    private Bitmap depth;
    private Object surface;
    private int width;
    private int height;
    private Screen screen;
    private ParallaxRenderer renderer;
    private float swing;
    private float drawnX;
    private float drawnY;

    /** The listener is called on the app's first thread. */
    ParallaxStage(Context context, Display display, ParallaxPhotoView.OnErrorListener errors) {
        this.context = context;
        this.display = display;
        this.errors = errors;
        sensor = new MotionSensor(context, tracker);
        thread.start();
        handler = new Handler(thread.getLooper());
    }

    void setImages(Picture newPhoto, Picture newDepth) {
        change(() -> {
            photo = null;
            depth = null;
            Bitmap decoded = newPhoto.get(LONGEST_PHOTO);
            depth = newDepth.get(LONGEST_DEPTH);
            photo = decoded;
        });
    }

    /** Shows on a surface of some size; the surface stays alive until {@link #removeSurface}. */
    void setSurface(Object newSurface, int newWidth, int newHeight) {
        change(() -> {
            surface = newSurface;
            width = newWidth;
            height = newHeight;
        });
    }

    /** Calls {@code afterwards} when the surface is no longer used; after {@link #quit} too. */
    void removeSurface(Runnable afterwards) {
        change(() -> surface = null);
        // A thread that has ended takes nothing more, and uses nothing.
        if (!handler.post(afterwards)) {
            afterwards.run();
        }
    }

    /** Says whether anyone can see it; nobody needs the sensor or a frame otherwise. */
    void setShown(boolean newShown) {
        handler.post(() -> {
            shown = newShown;
            startOrStop();
        });
    }

    void setParameter(String name, double value) {
        change(() -> parameters.put(name, value));
    }

    void setComposition(Composition newComposition) {
        Composition copy = newComposition.copy();
        change(() -> composition = copy);
    }

    void setFullSwing(float degrees) {
        handler.post(() -> tracker.setRange(Math.min(0.5f, degrees / 2f), degrees));
    }

    void setReducedMotion(boolean reduced) {
        handler.post(() -> {
            reducedMotion = reduced;
            tracker.setReducedMotion(reduced || animationsAreOff());
        });
    }

    void setHeld(boolean held) {
        handler.post(() -> tracker.setHeld(held));
    }

    void drag(float right, float down) {
        handler.post(() -> tracker.drag(right, down));
    }

    /** Ends the thread when all is freed. */
    void quit() {
        change(() -> surface = null);
        handler.post(thread::quitSafely);
    }

    @Override
    public void doFrame(long frameTimeNanos) {
        if (!running) {
            return;
        }
        Choreographer.getInstance().postFrameCallback(this);
        tracker.setDisplayRotation(90 * display.getRotation());
        tracker.advance(frameTimeNanos);
        if (renderer != null && tracker.x() == drawnX && tracker.y() == drawnY) {
            return;
        }
        try {
            draw();
        } catch (ParallaxException lost) {
            // A context is lost when the device sleeps or another app takes the memory. What is
            // made anew and fails again fails for another reason.
            close();
            try {
                draw();
            } catch (ParallaxException e) {
                fail(e);
            }
        }
    }

    // For whatever the surface or the textures depend on.
    private void change(Runnable change) {
        handler.post(() -> {
            close();
            try {
                change.run();
                startOrStop();
            } catch (ParallaxException e) {
                fail(e);
            }
        });
    }

    private void startOrStop() {
        boolean wanted = shown && surface != null && photo != null;
        if (wanted && !running) {
            running = true;
            tracker.setReducedMotion(reducedMotion || animationsAreOff());
            sensor.start(handler);
            Choreographer.getInstance().postFrameCallback(this);
        } else if (!wanted && running) {
            stop();
        }
    }

    private void stop() {
        running = false;
        Choreographer.getInstance().removeFrameCallback(this);
        sensor.stop();
    }

    private void fail(ParallaxException e) {
        if (running) {
            stop();
        }
        close();
        tell(e);
    }

    private void tell(ParallaxException e) {
        main.post(() -> errors.onError(e.getMessage()));
    }

    private void draw() {
        if (renderer == null) {
            open();
        }
        drawnX = tracker.x();
        drawnY = tracker.y();
        renderer.lookAt(swing * drawnX, swing * drawnY);
        screen.show(renderer.render(), width, height);
    }

    private void open() {
        screen = new Screen(surface);
        renderer = ParallaxRenderer.create(width, height, ORIENTATION);
        setParameters();
        int largestSide = Math.min(LONGEST_PHOTO, screen.largestTexture());
        FitSizes fit = composition.cleanEdges
                ? FitSizes.forCleanEdges(photo.getWidth(), photo.getHeight(), depth.getWidth(),
                        depth.getHeight(), width, height, largestSide)
                : FitSizes.of(photo.getWidth(), photo.getHeight(), depth.getWidth(),
                        depth.getHeight(), width, height, largestSide);
        try {
            ByteBuffer pixels =
                    Pixels.rgba(photo, fit.photoPart(), fit.photoWidth, fit.photoHeight);
            renderer.setPhotoRgba(fit.photoWidth, fit.photoHeight, pixels);
            PicturePlan plan = plan(fit, pixels);
            renderer.use(plan);
            swing = (float) plan.swing;
        } catch (OutOfMemoryError e) {
            throw new ParallaxException("too little memory for a photo of " + fit.photoWidth + " x "
                    + fit.photoHeight + " pixels; a smaller one will do");
        }
    }

    private PicturePlan plan(FitSizes fit, ByteBuffer pixels) {
        PicturePlan.Request request = new PicturePlan.Request(fit, width, height)
                .orientation(ORIENTATION)
                .cleanEdges(composition.cleanEdges)
                .photoRgba(pixels);
        for (Map.Entry<String, Double> parameter : parameters.entrySet()) {
            request.parameter(parameter.getKey(), parameter.getValue());
        }
        if (!Double.isNaN(composition.frame)) {
            request.frame(composition.frame);
        }
        if (composition.pivotOff) {
            request.pivotOff();
        } else if (composition.pivot != null) {
            int[] part = fit.photoPart();
            request.pivotAt(within(composition.pivot[0], photo.getWidth(), part[0], part[2]),
                    within(composition.pivot[1], photo.getHeight(), part[1], part[3]));
        }
        // Clean edges keep the map's own samples.
        int[] part = fit.depthPart();
        int samplesWide = composition.cleanEdges ? part[2] : fit.depthWidth;
        int samplesHigh = composition.cleanEdges ? part[3] : fit.depthHeight;
        return request.plan(
                samplesWide, samplesHigh, Pixels.red(depth, part, samplesWide, samplesHigh));
    }

    /** Where a place of the whole photo lies on the part that is shown, or its nearest end. */
    private static double within(double place, int whole, int first, int length) {
        return Math.max(0.0, Math.min(1.0, (place * whole - first) / length));
    }

    // One that is refused is dropped, so that the picture shows without it.
    private void setParameters() {
        Iterator<Map.Entry<String, Double>> each = parameters.entrySet().iterator();
        while (each.hasNext()) {
            Map.Entry<String, Double> parameter = each.next();
            try {
                renderer.setParameter(parameter.getKey(), parameter.getValue());
            } catch (ParallaxException refused) {
                each.remove();
                tell(refused);
            }
        }
    }

    private void close() {
        // Before the context, and before anything is made in another one.
        if (renderer != null) {
            renderer.close();
            renderer = null;
        }
        if (screen != null) {
            screen.close();
            screen = null;
        }
    }

    private boolean animationsAreOff() {
        return Settings.Global.getFloat(context.getContentResolver(),
                Settings.Global.ANIMATOR_DURATION_SCALE, 1f) == 0f;
    }
}
