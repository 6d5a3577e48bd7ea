package quorvane.parallax;

import android.content.BroadcastReceiver;
import android.content.Context;
import android.content.Intent;
import android.content.IntentFilter;
import android.content.pm.ApplicationInfo;
import android.content.res.TypedArray;
import android.graphics.Bitmap;
import android.graphics.Canvas;
import android.graphics.Rect;
import android.graphics.SurfaceTexture;
import android.net.Uri;
import android.os.Build;
import android.os.Handler;
import android.os.Looper;
import android.util.AttributeSet;
import android.view.Display;
import android.view.MotionEvent;
import android.view.TextureView;
import android.view.ViewConfiguration;
import android.view.ViewTreeObserver;
import androidx.annotation.AnyThread;
import androidx.annotation.AttrRes;
import androidx.annotation.NonNull;
import androidx.annotation.Nullable;
import androidx.annotation.StyleRes;
import androidx.annotation.UiThread;
import java.io.File;
import java.io.FileInputStream;
import java.util.LinkedHashMap;
import java.util.Map;
import java.util.function.Consumer;

/**
 * Shows a photo that moves in depth as the phone is tilted or a finger drags it.
 *
 * <pre>
 *     ParallaxPhotoView view = new ParallaxPhotoView(context);
 *     view.setOnErrorListener(sentence -&gt; Log.w("App", sentence));
 *     view.setPortraitPhoto(uri);                              // the depth is in the photo's file
 *     view.setImages(uri, Depth.of(samples, 518, 392));        // or comes from elsewhere
 * </pre>
 *
 * <p>The photo fills the view; what its shape does not hold is cut off on both sides. The depth map
 * shows what the photo shows, in any size, larger = nearer unless it says otherwise; of a colour
 * picture red counts. Sensors and frames rest while nobody sees the view, and while nothing moves.
 * What was set lasts: it is drawn again whenever the view returns to a window or the driver loses
 * its context. The pixels of small views are kept for a while, so that a list's card that is
 * scrolled out and back decodes nothing; setting what is set already does nothing.
 *
 * <p>A layout says the same by {@code app:quorvanePhoto} and {@code app:quorvaneDepth}, names of
 * assets, {@code app:quorvaneFullSwing}, {@code app:quorvaneDraggable}, {@code
 * app:quorvaneReducedMotion} and {@code app:quorvaneFadeIn}; so does a style, or the theme by
 * {@code quorvanePhotoViewStyle}. A layout's editor shows the photo at rest, or gray.
 *
 * <p>All calls come from the app's first thread, as for every view, and refuse at once what cannot
 * be; nothing that goes wrong later ends the app, the listener is told. It is a TextureView and not
 * a GLSurfaceView: it scrolls, fades, turns and is clipped as other views are, which a surface
 * behind or before the window is not. As every TextureView it has no background and no foreground:
 * what shows until the first frame lies under it, such as an ImageView in the same FrameLayout.
 */
@UiThread
public class ParallaxPhotoView extends TextureView {
    /** Is told what went wrong. */
    public interface OnErrorListener {
        /**
         * Called on the app's first thread, never after the view has left its window; nothing is
         * drawn until something else is set.
         *
         * @param sentence what failed and what would work, in English
         */
        @UiThread
        void onError(@NonNull String sentence);
    }

    /** Is told that there is something to see. */
    public interface OnFirstFrameListener {
        /** Called on the app's first thread, for every set of images and after each return. */
        @UiThread
        void onFirstFrame();
    }

    /**
     * What makes views of a debuggable app read {@code profile.json} from the app's external files
     * folder.
     */
    public static final String ACTION_RELOAD_PROFILE = "quorvane.parallax.RELOAD_PROFILE";
    private static final String PROFILE_FILE = "profile.json";
    // The shell has it, other apps have not.
    private static final String SHELLS_PERMISSION = "android.permission.DUMP";

    private final Rect visiblePart = new Rect();
    private final Handler main = new Handler(Looper.getMainLooper());
    private final Events events = new Events();
    private final Map<String, Double> parameters = new LinkedHashMap<>();
    private final float touchSlop;
    private Images images;
    private OnErrorListener errorListener;
    private OnFirstFrameListener firstFrameListener;
    private ParallaxStage.Composition composition = new ParallaxStage.Composition();
    private HandReplay replay;
    private long fadeMillis;
    private float fullSwing = 15f;
    private int maxFps;
    private boolean reducedMotion;
    private boolean draggable = true;
    private boolean aggregatedVisible;
    private boolean shown;
    private int finger;
    private float touchX;
    private float touchY;
    private float downX;
    private float downY;
    private Display display;
    /** While the view is in a window. */
    private ParallaxStage stage;
    /** The one that was given the surface: a view leaves its window before its surface goes. */
    private ParallaxStage surfaceUser;

    public ParallaxPhotoView(@NonNull Context context) {
        this(context, null);
    }

    public ParallaxPhotoView(@NonNull Context context, @Nullable AttributeSet attributes) {
        this(context, attributes, R.attr.quorvanePhotoViewStyle);
    }

    /** @param style the theme's attribute that names a style, or 0 */
    public ParallaxPhotoView(
            @NonNull Context context, @Nullable AttributeSet attributes, @AttrRes int style) {
        this(context, attributes, style, 0);
    }

    /**
     * @param style the theme's attribute that names a style, or 0
     * @param otherwise the style where the theme names none, or 0
     */
    public ParallaxPhotoView(@NonNull Context context, @Nullable AttributeSet attributes,
            @AttrRes int style, @StyleRes int otherwise) {
        super(context, attributes, style, otherwise);
        touchSlop = ViewConfiguration.get(context).getScaledTouchSlop();
        setOpaque(true);
        super.setSurfaceTextureListener(events);
        TypedArray given = context.obtainStyledAttributes(
                attributes, R.styleable.ParallaxPhotoView, style, otherwise);
        try {
            take(given);
        } finally {
            given.recycle();
        }
        // Editors draw in software, which a TextureView does not do for itself, only for what lies
        // in it.
        setWillNotDraw(isInEditMode());
    }

    /**
     * Tells whether this device can draw it: whether the native library is there for its processor,
     * and whether the driver has what OpenGL ES 3 promises, or OpenGL ES 2 with a texture unit for
     * vertices and indices of 32 bits. The first call takes some ten milliseconds; any thread may
     * ask.
     */
    @AnyThread
    public static boolean isSupported() {
        return Supported.ANSWER;
    }

    /**
     * Shows a phone's portrait photo with the depth that is inside its file.
     *
     * @throws IllegalArgumentException for null, as for all images
     */
    public void setPortraitPhoto(@NonNull Uri photo) {
        setPortraitPhoto(source("photo", photo));
    }

    /** The same for a file from anywhere. */
    public void setPortraitPhoto(@NonNull ImageSource photo) {
        show(new Images(photo));
    }

    /**
     * Shows bitmaps, which the app leaves as they are as long as the view has them.
     *
     * @throws IllegalArgumentException for a bitmap that was recycled
     */
    public void setImages(@NonNull Bitmap photo, @NonNull Bitmap depth) {
        setImages(photo, Depth.of(depth));
    }

    /** Shows a bitmap with a depth map from anywhere. */
    public void setImages(@NonNull Bitmap photo, @NonNull Depth depth) {
        show(new Images(photo, depth));
    }

    /** Shows image files of a content provider or the file system. */
    public void setImages(@NonNull Uri photo, @NonNull Uri depth) {
        setImages(photo, Depth.of(source("depth map", depth)));
    }

    /** Shows an image file with a depth map from anywhere. */
    public void setImages(@NonNull Uri photo, @NonNull Depth depth) {
        setImages(source("photo", photo), depth);
    }

    /** Shows image files among the app's assets. */
    public void setAssets(@NonNull String photo, @NonNull String depth) {
        setImages(new NamedSource(getContext(), Images.given("photo", photo)),
                Depth.of(new NamedSource(getContext(), Images.given("depth map", depth))));
    }

    /**
     * Shows image files from anywhere. A source is known again by its identity: who binds a view
     * again and again gives the same object.
     */
    public void setImages(@NonNull ImageSource photo, @NonNull ImageSource depth) {
        setImages(photo, Depth.of(depth));
    }

    /** Shows an image file with a depth map from anywhere. */
    public void setImages(@NonNull ImageSource photo, @NonNull Depth depth) {
        show(new Images(photo, depth));
    }

    /** Reads the files again, which are others now under the same names. */
    public void reload() {
        if (stage != null) {
            stage.reload();
        }
    }

    /** Without one, errors go unheard and the view stays as it is. */
    public void setOnErrorListener(@Nullable OnErrorListener listener) {
        errorListener = listener;
    }

    /** Null: nobody is told. */
    public void setOnFirstFrameListener(@Nullable OnFirstFrameListener listener) {
        firstFrameListener = listener;
    }

    /**
     * Fades the view in over what lies under it when its first frame is there, by its alpha, which
     * the app leaves alone then. 0, as at first, shows it at once.
     *
     * @throws IllegalArgumentException below 0
     */
    public void setFadeIn(long millis) {
        if (millis < 0) {
            throw new IllegalArgumentException("fade-in: " + millis + " ms; it is 0 or more");
        }
        fadeMillis = millis;
    }

    /**
     * Tunes the picture, at once. A value that is taken is kept: what the view would choose for that
     * parameter no longer counts.
     *
     * @param name of {@link ParallaxRenderer#parameters}
     * @throws IllegalArgumentException for an unknown name, or a value out of its range
     */
    public void setParameter(@NonNull String name, double value) {
        if (!ParallaxStage.takes(name, value)) {
            return;
        }
        parameters.put(name, value);
        if (stage != null) {
            stage.setParameter(name, value);
        }
    }

    /**
     * Shows a fixed part of each side of the photo. At first as much is shown as leaves no border
     * however the view swings.
     *
     * @throws IllegalArgumentException unless it is from 0.05 to 1
     */
    public void setFrame(double part) {
        composition.setFrame(part);
        compose();
    }

    /** Shows as much of the photo as leaves no border, as at first. */
    public void setFrameAuto() {
        composition.frame = Double.NaN;
        compose();
    }

    /**
     * Keeps in place what the photo shows at a point. At first the subject stays in place: the
     * nearest large thing near the middle.
     *
     * @param x from 0 at the photo's left to 1
     * @param y from 0 at its top to 1
     * @throws IllegalArgumentException unless both are from 0 to 1
     */
    public void setPivot(double x, double y) {
        composition.setPivot(x, y);
        compose();
    }

    /** Keeps the subject in place, as at first. */
    public void setPivotAuto() {
        composition.pivot = null;
        composition.pivotOff = false;
        compose();
    }

    /** Keeps in place the depth that the parameters give. */
    public void setPivotOff() {
        composition.pivotOff = true;
        compose();
    }

    /**
     * Says whether near things stay whole where they meet far ones, as at first. Otherwise the
     * depth map is only smoothed along the photo's edges.
     */
    public void setCleanEdges(boolean clean) {
        composition.cleanEdges = clean;
        compose();
    }

    /**
     * Takes parameters, frame, pivot, edges, near end and swing from a profile, instead of all that
     * was set of these; docs/profile.md has the file's form. It is read on another thread. What is
     * no profile is told to the listener and changes nothing.
     *
     * <p>While a debuggable app has the view in a window, {@code adb shell am broadcast -a
     * quorvane.parallax.RELOAD_PROFILE} takes {@code profile.json} from the folder that {@code
     * getExternalFilesDir(null)} names.
     */
    public void setProfile(@NonNull ImageSource file) {
        Images.given("profile", file);
        read(() -> Profile.read(file), this::take);
    }

    /**
     * Moves as a recorded hand did, over and over, instead of with the sensor: a line for each view
     * position, {@code {"t": 0.25, "x": -0.1, "y": 0.4}}, t in seconds that rise, x and y from -1 to
     * 1. It is read on another thread; what is no recording is told to the listener.
     *
     * @param file null: the sensor again
     */
    public void setReplay(@Nullable ImageSource file) {
        if (file == null) {
            take((HandReplay) null);
        } else {
            read(() -> HandReplay.read(file), this::take);
        }
    }

    /**
     * Sets the degrees of tilt that bring the view to its end, 15 at first.
     *
     * @throws IllegalArgumentException unless it is from 1 to 60
     */
    public void setFullSwing(float degrees) {
        TiltTracker.requireFullSwing(degrees);
        fullSwing = degrees;
        if (stage != null) {
            stage.setFullSwing(degrees);
        }
    }

    /**
     * Lets only a finger move the picture. So it is anyway while the device's animations are
     * switched off, or its battery saver is on.
     */
    public void setReducedMotion(boolean reduced) {
        reducedMotion = reduced;
        if (stage != null) {
            stage.setReducedMotion(reduced);
        }
    }

    /**
     * Draws at most so many frames a second, which saves the battery; 0, as at first, for as many as
     * the display shows.
     *
     * @throws IllegalArgumentException unless it is 0 or 1 to 1000
     */
    public void setMaxFps(int framesPerSecond) {
        ParallaxStage.requireMaxFps(framesPerSecond);
        maxFps = framesPerSecond;
        if (stage != null) {
            stage.setMaxFps(framesPerSecond);
        }
    }

    /**
     * Says whether a finger moves the picture; on at first. A drag to the side belongs to the view
     * then, one up or down to a list around it.
     */
    public void setDraggable(boolean draggable) {
        this.draggable = draggable;
    }

    @Override
    public boolean onTouchEvent(@NonNull MotionEvent event) {
        boolean handled = super.onTouchEvent(event);
        if (!draggable || stage == null) {
            return handled;
        }
        switch (event.getActionMasked()) {
            case MotionEvent.ACTION_DOWN:
                downX = event.getX();
                downY = event.getY();
                stage.setHeld(true);
                break;
            case MotionEvent.ACTION_MOVE:
                float aside = Math.abs(event.getX() - downX);
                if (aside > touchSlop && aside > Math.abs(event.getY() - downY)
                        && getParent() != null) {
                    getParent().requestDisallowInterceptTouchEvent(true);
                }
                // Another finger takes over when the first is lifted.
                if (event.getPointerId(0) == finger) {
                    stage.drag((event.getX() - touchX) / getWidth(),
                            (event.getY() - touchY) / getHeight());
                }
                break;
            case MotionEvent.ACTION_UP:
            case MotionEvent.ACTION_CANCEL:
                stage.setHeld(false);
                break;
            default:
                return handled;
        }
        finger = event.getPointerId(0);
        touchX = event.getX();
        touchY = event.getY();
        return true;
    }

    @Override
    protected void onAttachedToWindow() {
        super.onAttachedToWindow();
        if (isInEditMode()) {
            return;
        }
        display = getDisplay();
        stage = new ParallaxStage(getContext(), display, events);
        stage.setFullSwing(fullSwing);
        stage.setReducedMotion(reducedMotion);
        stage.setMaxFps(maxFps);
        stage.setReplay(replay);
        stage.setComposition(composition);
        stage.setParameters(parameters);
        if (images != null) {
            stage.setImages(images);
        }
        if (fadeMillis > 0) {
            setAlpha(0f);
        }
        if (isAvailable()) {
            events.onSurfaceTextureAvailable(getSurfaceTexture(), getWidth(), getHeight());
        }
        shown = false;
        getViewTreeObserver().addOnPreDrawListener(events);
        listenForReloads();
    }

    @Override
    protected void onDetachedFromWindow() {
        if (stage == null) {
            super.onDetachedFromWindow();
            return;
        }
        getViewTreeObserver().removeOnPreDrawListener(events);
        if (isDebuggable()) {
            getContext().unregisterReceiver(events.reload);
        }
        stage.quit();
        stage = null;
        super.onDetachedFromWindow();
    }

    /** In a layout's editor: the photo, or gray. */
    @Override
    protected void dispatchDraw(@NonNull Canvas canvas) {
        super.dispatchDraw(canvas);
        if (isInEditMode()) {
            LayoutPreview.draw(canvas, images, getWidth(), getHeight());
        }
    }

    @Override
    public void onVisibilityAggregated(boolean isVisible) {
        super.onVisibilityAggregated(isVisible);
        aggregatedVisible = isVisible;
        updateShown();
    }

    /** Is a picture for those who hear what is on the screen. */
    @Override
    @NonNull
    public CharSequence getAccessibilityClassName() {
        return "android.widget.ImageView";
    }

    /** Not for apps: the view needs it itself. */
    @Override
    public void setSurfaceTextureListener(@Nullable SurfaceTextureListener listener) {
        throw new UnsupportedOperationException(
                "the view draws on its surface itself; setOnFirstFrameListener tells when");
    }

    private ImageSource source(String what, Uri file) {
        return new NamedSource(getContext(), Images.given(what, file));
    }

    private void show(Images newImages) {
        images = newImages;
        if (stage != null) {
            stage.setImages(newImages);
        }
    }

    private void compose() {
        if (stage != null) {
            stage.setComposition(composition);
        }
    }

    private void take(TypedArray given) {
        setFullSwing(given.getFloat(R.styleable.ParallaxPhotoView_quorvaneFullSwing, fullSwing));
        setDraggable(given.getBoolean(R.styleable.ParallaxPhotoView_quorvaneDraggable, draggable));
        setReducedMotion(given.getBoolean(
                R.styleable.ParallaxPhotoView_quorvaneReducedMotion, reducedMotion));
        setFadeIn(given.getInt(R.styleable.ParallaxPhotoView_quorvaneFadeIn, 0));
        String photo = given.getString(R.styleable.ParallaxPhotoView_quorvanePhoto);
        String depth = given.getString(R.styleable.ParallaxPhotoView_quorvaneDepth);
        if (photo != null && depth != null) {
            setAssets(photo, depth);
        } else if (photo != null) {
            setPortraitPhoto(new NamedSource(getContext(), photo));
        } else if (depth != null) {
            throw new IllegalArgumentException(
                    "quorvaneDepth: " + depth + "; quorvanePhoto is missing, which it belongs to");
        }
    }

    private void take(Profile profile) {
        parameters.clear();
        parameters.putAll(profile.parameters);
        composition = profile.composition;
        if (stage != null) {
            stage.setParameters(parameters);
        }
        compose();
    }

    private void take(HandReplay newReplay) {
        replay = newReplay;
        if (stage != null) {
            stage.setReplay(newReplay);
        }
    }

    private interface Reading<T> {
        T read();
    }

    private <T> void read(Reading<T> reading, Consumer<T> use) {
        ParallaxStage.inBackground(() -> {
            try {
                T found = reading.read();
                main.post(() -> use.accept(found));
            } catch (Throwable e) {
                String sentence = ParallaxStage.sentence(e);
                main.post(() -> {
                    if (stage != null) {
                        events.onError(sentence);
                    }
                });
            }
        });
    }

    private boolean isDebuggable() {
        return (getContext().getApplicationInfo().flags & ApplicationInfo.FLAG_DEBUGGABLE) != 0;
    }

    private void listenForReloads() {
        if (!isDebuggable()) {
            return;
        }
        Context context = getContext();
        ParallaxStage.inBackground(() -> {
            try {
                // Asking makes it; adb would make one that the app cannot read.
                context.getExternalFilesDir(null);
            } catch (RuntimeException e) {
                // The listener is told when a profile is to be read there.
            }
        });
        IntentFilter filter = new IntentFilter(ACTION_RELOAD_PROFILE);
        if (Build.VERSION.SDK_INT >= 33) {
            getContext().registerReceiver(events.reload, filter, SHELLS_PERMISSION, main,
                    Context.RECEIVER_EXPORTED);
        } else {
            getContext().registerReceiver(events.reload, filter, SHELLS_PERMISSION, main);
        }
    }

    private void updateShown() {
        boolean now = aggregatedVisible && getGlobalVisibleRect(visiblePart);
        if (stage != null && now != shown) {
            shown = now;
            stage.setShown(now);
        }
    }

    private static final class Supported {
        static final boolean ANSWER = answer();

        private static boolean answer() {
            try {
                ParallaxRenderer.createOffscreen(1, 1, Preparation.ORIENTATION).close();
                return true;
            } catch (ParallaxException | LinkageError e) {
                return false;
            }
        }
    }

    /** What the system and the stage tell, which is nobody else's to call. */
    private final class Events implements TextureView.SurfaceTextureListener,
            ViewTreeObserver.OnPreDrawListener, ParallaxStage.Listener {
        final BroadcastReceiver reload = new BroadcastReceiver() {
            @Override
            public void onReceive(Context context, Intent intent) {
                setProfile(() -> new FileInputStream(
                        new File(context.getExternalFilesDir(null), PROFILE_FILE)));
            }
        };

        /** Sees whether the view was scrolled out of sight, or went to another display. */
        @Override
        public boolean onPreDraw() {
            updateShown();
            if (stage != null && getDisplay() != display) {
                display = getDisplay();
                stage.setDisplay(display);
            }
            return true;
        }

        @Override
        public void onSurfaceTextureAvailable(SurfaceTexture surface, int width, int height) {
            if (stage != null && width > 0 && height > 0) {
                stage.setSurface(surface, width, height);
                surfaceUser = stage;
            }
        }

        @Override
        public void onSurfaceTextureSizeChanged(SurfaceTexture surface, int width, int height) {
            onSurfaceTextureAvailable(surface, width, height);
        }

        @Override
        public boolean onSurfaceTextureDestroyed(SurfaceTexture surface) {
            if (surfaceUser == null) {
                return true;
            }
            surfaceUser.removeSurface(surface::release);
            surfaceUser = null;
            return false;
        }

        @Override
        public void onSurfaceTextureUpdated(SurfaceTexture surface) {}

        @Override
        public void onError(String sentence) {
            if (errorListener != null) {
                errorListener.onError(sentence);
            }
        }

        @Override
        public void onFirstFrame() {
            if (fadeMillis > 0 && getAlpha() < 1f) {
                animate().alpha(1f).setDuration(fadeMillis);
            }
            if (firstFrameListener != null) {
                firstFrameListener.onFirstFrame();
            }
        }
    }
}
