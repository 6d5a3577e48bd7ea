package quorvane.parallax;

import android.content.BroadcastReceiver;
import android.content.ComponentCallbacks2;
import android.content.Context;
import android.content.Intent;
import android.content.IntentFilter;
import android.content.res.Configuration;
import android.hardware.display.DisplayManager;
import android.os.Handler;
import android.os.HandlerThread;
import android.os.Looper;
import android.os.PowerManager;
import android.os.Process;
import android.provider.Settings;
import android.view.Choreographer;
import android.view.Display;
import java.nio.ByteBuffer;
import java.util.HashMap;
import java.util.HashSet;
import java.util.LinkedHashMap;
import java.util.Map;
import java.util.Set;
import java.util.concurrent.CopyOnWriteArraySet;
import java.util.concurrent.LinkedBlockingQueue;
import java.util.concurrent.ThreadPoolExecutor;
import java.util.concurrent.TimeUnit;

/**
 * A moving photo on a surface: what {@link ParallaxPhotoView} and {@link ParallaxWallpaperService}
 * share. It has a thread of its own, on which the sensor's samples arrive and every frame is drawn,
 * so that nothing needs a lock. Images are decoded on other threads, so that it never waits for a
 * file. All calls may come from any thread and return at once; {@link #quit} comes from the app's
 * first one. Nothing that is thrown on these threads leaves them: it becomes a sentence.
 */
final class ParallaxStage implements Choreographer.FrameCallback {
    /** Is told on the app's first thread, and no more after {@link #quit}. */
    interface Listener {
        void onError(String sentence);

        /** What was set is on the surface. */
        void onFirstFrame();
    }

    /** What is chosen for a picture unless the app says it. */
    static final class Composition {
        boolean cleanEdges = true;
        /** The visible part of each side; NaN: as much as shows no border. */
        double frame = Double.NaN;
        boolean pivotOff;
        /** The point of the photo that stays in place; null: the subject. */
        double[] pivot;
        /** Whether the depth map is taken the other way round. */
        boolean inverted;
        /** Whether the photo shows that, unless the app or the photo's file says it. */
        boolean nearEndShows;
        /** What every view position is multiplied by. */
        double amount = 1.0;

        void setFrame(double part) {
            if (!(part >= 0.05 && part <= 1.0)) {
                throw new IllegalArgumentException("frame: " + part + "; it is from 0.05 to 1");
            }
            frame = part;
        }

        void setPivot(double x, double y) {
            if (!(x >= 0.0 && x <= 1.0 && y >= 0.0 && y <= 1.0)) {
                throw new IllegalArgumentException(
                        "pivot: " + x + ", " + y + "; both are from 0 to 1");
            }
            pivot = new double[] {x, y};
            pivotOff = false;
        }

        Composition copy() {
            Composition copy = new Composition();
            copy.cleanEdges = cleanEdges;
            copy.frame = frame;
            copy.pivotOff = pivotOff;
            copy.pivot = pivot;
            copy.inverted = inverted;
            copy.nearEndShows = nearEndShows;
            copy.amount = amount;
            return copy;
        }
    }

    // A change of the view position that no eye sees: a few hundredths of a pixel.
    private static final float INVISIBLE = 0.0005f;
    // So long has a size to stay before it is drawn: an animation goes through many.
    private static final long SETTLE_MILLIS = 100;
    // So long is what a hidden one holds kept: people look away and come back.
    private static final long KEPT_MILLIS = 5000;
    private static final ThreadPoolExecutor DECODERS = decoders();
    private static final Set<ParallaxStage> STAGES = new CopyOnWriteArraySet<>();
    private static boolean trims;

    private final Context context;
    private final Listener listener;
    private final HandlerThread thread =
            new HandlerThread("parallax", Process.THREAD_PRIORITY_DISPLAY);
    private final Handler handler;
    private final Handler main = new Handler(Looper.getMainLooper());
    private volatile boolean ended;

    // From here on for the stage's thread only.
    private final TiltTracker tracker = new TiltTracker();
    private final MotionSensor sensor;
    private final DisplayManager.DisplayListener turning;
    private final Map<String, Double> parameters = new LinkedHashMap<>();
    private final Runnable resize = () -> guarded(this::resize);
    private final Runnable free = () -> guarded(this::freeWhileHidden);
    private final BroadcastReceiver saver = new BroadcastReceiver() {
        @Override
        public void onReceive(Context received, Intent intent) {
            guarded(ParallaxStage.this::restart);
        }
    };
    private Display display;
    private Composition composition = new Composition();
    private HandReplay replay;
    private long replayStart;
    private boolean reducedMotion;
    private long frameNanos;
    private boolean shown;
    private boolean failed;
    /** The sensor is on, and frames are drawn when something moves. */
    private boolean running;
    /** Neither a sensor nor a recording moves it: reduced motion, or the battery saver is on. */
    private boolean still;
    private boolean framePosted;
    private Images images;
    private Object surface;
    private int width;
    private int height;
    private int drawnWidth;
    private int drawnHeight;
    private Screen screen;
    private ParallaxRenderer renderer;
    /** What the renderer shows; null until it shows something. */
    private Preparation inUse;
    /** Under way; null where nothing is. */
    private Preparation coming;
    private boolean outdated;
    private Map<String, Double> shaping;
    private ByteBuffer shapedDepth;
    private boolean changed;
    private boolean lost;
    private boolean announced;
    /** Added to the view position's x. */
    private float offset;
    private float drawnX;
    private float drawnY;
    private long drawnAt;

    ParallaxStage(Context context, Display display, Listener listener) {
        this.context = context;
        this.listener = listener;
        trimWithSystem(context);
        thread.start();
        handler = new Handler(thread.getLooper());
        sensor = new MotionSensor(context, tracker, () -> guarded(this::onMotion));
        turning = new DisplayManager.DisplayListener() {
            @Override
            public void onDisplayAdded(int id) {}

            @Override
            public void onDisplayRemoved(int id) {}

            @Override
            public void onDisplayChanged(int id) {
                guarded(ParallaxStage.this::readRotation);
            }
        };
        setDisplay(display);
        context.registerReceiver(saver,
                new IntentFilter(PowerManager.ACTION_POWER_SAVE_MODE_CHANGED), null, handler);
        STAGES.add(this);
    }

    /** The display that shows the surface, whose turning the sensor's axes follow. */
    void setDisplay(Display newDisplay) {
        post(() -> {
            display = newDisplay;
            readRotation();
        });
    }

    void setImages(Images newImages) {
        post(() -> {
            if (newImages.equals(images) && !failed) {
                return;
            }
            images = newImages;
            failed = false;
            coming = null;
            update();
        });
    }

    /** Reads the files again, which may be others now. */
    void reload() {
        post(() -> {
            if (images == null) {
                return;
            }
            if (images.file != null) {
                PixelCache.SHARED.forget(images.file);
            }
            if (images.depth != null && images.depth.file() != null) {
                PixelCache.SHARED.forget(images.depth.file());
            }
            failed = false;
            coming = null;
            inUse = null;
            update();
        });
    }

    /** Shows on a surface of some size; the surface stays alive until {@link #removeSurface}. */
    void setSurface(Object newSurface, int newWidth, int newHeight) {
        post(() -> {
            width = newWidth;
            height = newHeight;
            handler.removeCallbacks(resize);
            if (surface == newSurface && screen != null) {
                handler.postDelayed(resize, SETTLE_MILLIS);
                return;
            }
            close();
            surface = newSurface;
            failed = false;
            coming = null;
            update();
        });
    }

    /** Calls {@code afterwards} when the surface is no longer used; after {@link #quit} too. */
    void removeSurface(Runnable afterwards) {
        post(this::dropSurface);
        // A thread that has ended takes nothing more, and uses nothing.
        if (!handler.post(afterwards)) {
            afterwards.run();
        }
    }

    /**
     * Says whether anyone can see it; nobody needs the sensor or a frame otherwise. Hidden for
     * long, or when the system wants memory, it frees the context and all that was made in it until
     * it is shown again.
     */
    void setShown(boolean newShown) {
        post(() -> {
            shown = newShown;
            handler.removeCallbacks(free);
            if (!shown) {
                handler.postDelayed(free, KEPT_MILLIS);
            }
            update();
        });
    }

    /** Sets a parameter that {@link ParallaxRenderer#checkParameter} takes. */
    void setParameter(String name, double value) {
        post(() -> {
            Double before = parameters.put(name, value);
            if (before != null && before == value) {
                return;
            }
            failed = false;
            if (inUse != null) {
                renderer.setParameter(name, value);
                changed = true;
            }
            recompose();
        });
    }

    /** Takes these parameters instead of all that were set. */
    void setParameters(Map<String, Double> newParameters) {
        Map<String, Double> copy = new LinkedHashMap<>(newParameters);
        post(() -> {
            if (copy.equals(parameters)) {
                return;
            }
            parameters.clear();
            parameters.putAll(copy);
            failed = false;
            // The renderer keeps what it was given once.
            close();
            recompose();
        });
    }

    void setComposition(Composition newComposition) {
        Composition copy = newComposition.copy();
        post(() -> {
            composition = copy;
            failed = false;
            recompose();
        });
    }

    /** Shifts the view position: -1 to the left, 1 to the right. */
    void setOffset(float x) {
        post(() -> {
            offset = x;
            wake();
        });
    }

    /** Draws a frame though nothing moves. */
    void redraw() {
        post(() -> {
            changed = true;
            wake();
        });
    }

    void setFullSwing(float degrees) {
        post(() -> tracker.setRange(Math.min(0.5f, degrees / 2f), degrees));
    }

    void setReducedMotion(boolean reduced) {
        post(() -> {
            reducedMotion = reduced;
            restart();
        });
    }

    /** Draws at most so many frames a second; 0 for as many as the display shows. */
    void setMaxFps(int framesPerSecond) {
        // A little less: frames come at times that are not quite even.
        post(() -> frameNanos = framesPerSecond == 0 ? 0 : 900_000_000L / framesPerSecond);
    }

    /** Moves as a recorded hand did, over and over, instead of with the sensor; null: the sensor. */
    void setReplay(HandReplay newReplay) {
        post(() -> {
            replay = newReplay;
            replayStart = 0;
            restart();
        });
    }

    void setHeld(boolean held) {
        post(() -> {
            tracker.setHeld(held);
            onMotion();
        });
    }

    void drag(float right, float down) {
        post(() -> {
            tracker.drag(right, down);
            onMotion();
        });
    }

    /** Ends the thread when all is freed; the listener hears nothing from now on. */
    void quit() {
        ended = true;
        STAGES.remove(this);
        context.unregisterReceiver(saver);
        post(() -> {
            handler.removeCallbacks(free);
            dropSurface();
            displays().unregisterDisplayListener(turning);
        });
        handler.post(thread::quitSafely);
    }

    @Override
    public void doFrame(long frameTimeNanos) {
        framePosted = false;
        // Not guarded(): a frame allocates nothing.
        try {
            frame(frameTimeNanos);
        } catch (Throwable e) {
            fail(sentence(e));
        }
    }

    /**
     * Whether there is a renderer that takes a value for a parameter.
     *
     * @throws IllegalArgumentException for an unknown name, or a value out of its range
     */
    static boolean takes(String name, double value) {
        try {
            ParallaxRenderer.checkParameter(name, value);
            return true;
        } catch (ParallaxException refused) {
            throw new IllegalArgumentException(refused.getMessage());
        } catch (LinkageError absent) {
            // Nothing will be drawn, which the listener is told.
            return false;
        }
    }

    static void requireMaxFps(int framesPerSecond) {
        if (framesPerSecond < 0 || framesPerSecond > 1000) {
            throw new IllegalArgumentException(
                    "frames a second: " + framesPerSecond + "; it is 0, or 1 to 1000");
        }
    }

    /** Runs work where files are decoded; it throws nothing. */
    static void inBackground(Runnable work) {
        DECODERS.execute(work);
    }

    /** What to tell the app of anything that was thrown. */
    static String sentence(Throwable thrown) {
        if (thrown instanceof ParallaxException) {
            return thrown.getMessage();
        }
        if (thrown instanceof OutOfMemoryError) {
            return "too little memory for the picture; a smaller photo will do";
        }
        if (thrown instanceof LinkageError) {
            return "the native library is not there for this device's processor; "
                    + "ParallaxPhotoView.isSupported tells before";
        }
        return "unexpected: " + thrown;
    }

    private interface Step {
        void run();
    }

    private void post(Step step) {
        handler.post(() -> guarded(step));
    }

    // Nothing that is thrown here may end the app.
    private void guarded(Step step) {
        try {
            step.run();
        } catch (Throwable e) {
            fail(sentence(e));
        }
    }

    private void update() {
        boolean wanted = shown && surface != null && images != null && !failed;
        if (!wanted) {
            if (running) {
                stop();
            }
            return;
        }
        if (!running) {
            start();
        }
        boolean onItsWay = coming != null && coming.images.equals(images);
        if (!onItsWay && (inUse == null || !inUse.images.equals(images) || outdated)) {
            prepare();
        }
        wake();
    }

    private void start() {
        running = true;
        still = reducedMotion || animationsAreOff() || savesPower();
        tracker.setReducedMotion(still);
        if (!still && replay == null) {
            displays().registerDisplayListener(turning, handler);
            readRotation();
            sensor.start(handler);
        }
        changed = true;
    }

    // What moves it may be another thing now.
    private void restart() {
        if (running) {
            stop();
        }
        update();
    }

    private void stop() {
        running = false;
        framePosted = false;
        Choreographer.getInstance().removeFrameCallback(this);
        sensor.stop();
        displays().unregisterDisplayListener(turning);
    }

    // Parameters, frame, pivot or edges have changed.
    private void recompose() {
        if (!running) {
            // What it shows when it is seen again.
            if (inUse != null) {
                outdated = true;
            }
            update();
        } else {
            prepare();
            wake();
        }
    }

    private void prepare() {
        if (coming != null && coming.images.equals(images)) {
            // One at a time: what changes meanwhile is taken together afterwards.
            outdated = true;
            return;
        }
        if (renderer == null) {
            open();
        }
        outdated = false;
        Preparation next = new Preparation(images, width, height, screen.largestTexture(),
                composition, parameters, inUse);
        coming = next;
        inBackground(() -> {
            next.run();
            if (!ended) {
                post(() -> prepared(next));
            }
        });
    }

    private void prepared(Preparation done) {
        if (done != coming) {
            return;
        }
        coming = null;
        if (done.failure != null) {
            throw new ParallaxException(done.failure);
        }
        if (surface == null || ended) {
            return;
        }
        if (renderer == null) {
            if (!shown) {
                return;
            }
            open();
        }
        if (done.rgba == null && (inUse == null || done.fit != inUse.fit)) {
            // The renderer has lost the photo meanwhile.
            prepare();
            return;
        }
        show(done);
        if (outdated && running) {
            prepare();
        }
        wake();
    }

    private void show(Preparation done) {
        boolean newPhoto = inUse == null || done.fit != inUse.fit;
        if (newPhoto) {
            renderer.setPhotoRgba(done.fit.photoWidth, done.fit.photoHeight, done.rgba);
            announced &= inUse != null && inUse.images.equals(done.images);
        }
        done.rgba = null;
        Map<String, Double> wanted = done.plan.parameters();
        for (Map.Entry<String, Double> parameter : wanted.entrySet()) {
            renderer.setParameter(parameter.getKey(), parameter.getValue());
        }
        // A parameter that was set while this was prepared is newer.
        for (Map.Entry<String, Double> parameter : parameters.entrySet()) {
            renderer.setParameter(parameter.getKey(), parameter.getValue());
        }
        Map<String, Double> shapes = new HashMap<>(wanted);
        shapes.putAll(parameters);
        shapes.keySet().retainAll(Shaping.NAMES);
        ByteBuffer depth = done.plan.depth();
        if (newPhoto || !shapes.equals(shaping) || !depth.equals(shapedDepth)) {
            renderer.setDepth(done.plan.depthWidth(), done.plan.depthHeight(), depth);
            shaping = shapes;
            shapedDepth = depth;
        }
        inUse = done;
        changed = true;
    }

    /** The parameters that count when the depth map is set. */
    private static final class Shaping {
        static final Set<String> NAMES = new HashSet<>();

        static {
            for (ParallaxParameter parameter : ParallaxRenderer.parameters()) {
                if (parameter.takesEffect == ParallaxParameter.TakesEffect.NEXT_DEPTH) {
                    NAMES.add(parameter.name);
                }
            }
        }
    }

    private void resize() {
        if (screen == null || surface == null || (width == drawnWidth && height == drawnHeight)) {
            return;
        }
        screen.resized(surface);
        renderer.resize(width, height);
        drawnWidth = width;
        drawnHeight = height;
        failed = false;
        recompose();
    }

    private void open() {
        screen = new Screen(surface);
        renderer = ParallaxRenderer.create(width, height, Preparation.ORIENTATION);
        drawnWidth = width;
        drawnHeight = height;
    }

    private void freeWhileHidden() {
        if (!shown) {
            close();
        }
    }

    private void dropSurface() {
        handler.removeCallbacks(resize);
        surface = null;
        coming = null;
        if (running) {
            stop();
        }
        close();
    }

    private void close() {
        inUse = null;
        shaping = null;
        shapedDepth = null;
        announced = false;
        try {
            // Before the context, and before anything is made in another one.
            if (renderer != null) {
                renderer.close();
            }
        } finally {
            renderer = null;
            if (screen != null) {
                screen.close();
                screen = null;
            }
        }
    }

    private void fail(String sentence) {
        failed = true;
        coming = null;
        if (running) {
            stop();
        }
        try {
            close();
        } catch (RuntimeException | LinkageError e) {
            // The first sentence is the one that helps.
        }
        tell(() -> listener.onError(sentence));
    }

    private void tell(Runnable words) {
        main.post(() -> {
            if (!ended) {
                words.run();
            }
        });
    }

    private void onMotion() {
        if (running && tracker.moving()) {
            wake();
        }
    }

    private void wake() {
        if (running && !framePosted) {
            framePosted = true;
            tracker.resume();
            Choreographer.getInstance().postFrameCallback(this);
        }
    }

    private void frame(long now) {
        if (!running) {
            return;
        }
        if (frameNanos > 0 && now - drawnAt < frameNanos && now > drawnAt) {
            again();
            return;
        }
        drawnAt = now;
        tracker.advance(now);
        float x = tracker.x();
        float y = tracker.y();
        boolean replays = replay != null && !still;
        if (replays) {
            if (replayStart == 0) {
                replayStart = now;
            }
            double seconds = (now - replayStart) * 1e-9;
            x = replay.xAt(seconds);
            y = replay.yAt(seconds);
        }
        x = Math.max(-1f, Math.min(1f, x + offset));
        boolean moved = Math.abs(x - drawnX) > INVISIBLE || Math.abs(y - drawnY) > INVISIBLE;
        if (inUse != null && (changed || moved)) {
            draw(x, y);
        }
        if (replays || tracker.moving()) {
            again();
        }
    }

    private void again() {
        if (running && !framePosted) {
            framePosted = true;
            Choreographer.getInstance().postFrameCallback(this);
        }
    }

    private void draw(float x, float y) {
        float swing = (float) (inUse.plan.swing * composition.amount);
        try {
            renderer.lookAt(swing * x, swing * y);
            screen.show(renderer.render(), drawnWidth, drawnHeight);
        } catch (ParallaxException e) {
            // A context is lost when the device sleeps or another app takes the memory. What is
            // made anew and fails again fails for another reason.
            if (lost) {
                throw e;
            }
            lost = true;
            close();
            prepare();
            return;
        }
        lost = false;
        changed = false;
        drawnX = x;
        drawnY = y;
        if (!announced) {
            announced = true;
            tell(listener::onFirstFrame);
        }
    }

    private void readRotation() {
        if (display != null) {
            tracker.setDisplayRotation(90 * display.getRotation());
        }
    }

    private DisplayManager displays() {
        return (DisplayManager) context.getSystemService(Context.DISPLAY_SERVICE);
    }

    private boolean animationsAreOff() {
        return Settings.Global.getFloat(context.getContentResolver(),
                Settings.Global.ANIMATOR_DURATION_SCALE, 1f) == 0f;
    }

    private boolean savesPower() {
        PowerManager power = (PowerManager) context.getSystemService(Context.POWER_SERVICE);
        return power != null && power.isPowerSaveMode();
    }

    private static ThreadPoolExecutor decoders() {
        // Two, so that a slow provider holds up one card of a list and not all of them.
        ThreadPoolExecutor pool = new ThreadPoolExecutor(2, 2, 5, TimeUnit.SECONDS,
                new LinkedBlockingQueue<>(), work -> {
            Thread decoder = new Thread(() -> {
                // Whoever waits for a picture waits for the views around it first.
                Process.setThreadPriority(Process.THREAD_PRIORITY_LESS_FAVORABLE);
                work.run();
            }, "parallax-decoder");
            decoder.setDaemon(true);
            return decoder;
        });
        pool.allowCoreThreadTimeOut(true);
        return pool;
    }

    private static synchronized void trimWithSystem(Context context) {
        Context app = context.getApplicationContext();
        if (trims || app == null) {
            return;
        }
        trims = true;
        app.registerComponentCallbacks(new ComponentCallbacks2() {
            @Override
            public void onTrimMemory(int level) {
                if (level >= TRIM_MEMORY_RUNNING_LOW) {
                    PixelCache.SHARED.clear();
                }
                for (ParallaxStage stage : STAGES) {
                    stage.post(stage::freeWhileHidden);
                }
            }

            @Override
            public void onLowMemory() {
                onTrimMemory(TRIM_MEMORY_RUNNING_LOW);
            }

            @Override
            public void onConfigurationChanged(Configuration configuration) {}
        });
    }
}
