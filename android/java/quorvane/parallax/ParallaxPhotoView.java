package quorvane.parallax;

import android.content.Context;
import android.graphics.Bitmap;
import android.graphics.Rect;
import android.graphics.SurfaceTexture;
import android.net.Uri;
import android.util.AttributeSet;
import android.view.MotionEvent;
import android.view.TextureView;
import android.view.ViewTreeObserver;
import java.util.LinkedHashMap;
import java.util.Map;

/**
 * Shows a photo that moves in depth as the phone is tilted or a finger drags it.
 *
 * <pre>
 *     ParallaxPhotoView view = new ParallaxPhotoView(context);
 *     view.setOnErrorListener(sentence -&gt; Log.w("App", sentence));
 *     view.setAssets("photo.jpg", "depth.png");
 * </pre>
 *
 * <p>The photo fills the view; what its shape does not hold is cut off on both sides. The depth map
 * shows what the photo shows, in any size, larger = nearer; of a colour picture red counts. Sensors
 * and frames rest while nobody sees the view. What was set lasts: it is decoded, uploaded and drawn
 * again whenever the view returns to a window or the driver loses its context.
 *
 * <p>All calls come from the app's first thread, as for every view. It is a TextureView and not a
 * GLSurfaceView: it scrolls, fades, turns and is clipped as other views are, which a surface behind
 * or before the window is not, and its frames are drawn on the thread that also takes the sensor's
 * samples.
 */
public class ParallaxPhotoView extends TextureView
        implements TextureView.SurfaceTextureListener, ViewTreeObserver.OnPreDrawListener {
    /** Is told what went wrong. */
    public interface OnErrorListener {
        /**
         * Called on the app's first thread; nothing is drawn until something else is set.
         *
         * @param sentence what failed and what would work, in English
         */
        void onError(String sentence);
    }

    private final Rect visiblePart = new Rect();
    private final Map<String, Double> parameters = new LinkedHashMap<>();
    private ParallaxStage.Picture photo;
    private ParallaxStage.Picture depth;
    private OnErrorListener listener;
    private final ParallaxStage.Composition composition = new ParallaxStage.Composition();
    private float fullSwing = 15f;
    private boolean reducedMotion;
    private boolean draggable = true;
    private boolean aggregatedVisible;
    private boolean shown;
    private int finger;
    private float touchX;
    private float touchY;
    /** While the view is in a window. */
    private ParallaxStage stage;
    /** The one that was given the surface: a view leaves its window before its surface goes. */
    private ParallaxStage surfaceUser;

    public ParallaxPhotoView(Context context) {
        this(context, null);
    }

    public ParallaxPhotoView(Context context, AttributeSet attributes) {
        super(context, attributes);
        setOpaque(true);
        setSurfaceTextureListener(this);
    }

    /** Shows bitmaps, which the app leaves as they are as long as the view has them. */
    public void setImages(Bitmap photo, Bitmap depth) {
        setPictures(longest -> photo, longest -> depth);
    }

    /** Shows image files of a content provider or the file system. */
    public void setImages(Uri photo, Uri depth) {
        setImages(() -> getContext().getContentResolver().openInputStream(photo),
                () -> getContext().getContentResolver().openInputStream(depth));
    }

    /** Shows image files among the app's assets. */
    public void setAssets(String photo, String depth) {
        setImages(() -> getContext().getAssets().open(photo),
                () -> getContext().getAssets().open(depth));
    }

    /** Shows image files from anywhere. */
    public void setImages(ImageSource photo, ImageSource depth) {
        setPictures(longest -> Pixels.decode("photo", photo, longest),
                longest -> Pixels.decode("depth map", depth, longest));
    }

    /** Without one, errors go unheard and the view stays as it is. */
    public void setOnErrorListener(OnErrorListener listener) {
        this.listener = listener;
    }

    /**
     * Tunes the picture. A value that is refused is told to the listener and changes nothing. One
     * that is taken is kept: what the view would choose for that parameter no longer counts. Takes
     * as long as uploading the images anew.
     *
     * @param name of {@link ParallaxRenderer#parameters}
     */
    public void setParameter(String name, double value) {
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
        if (!(part >= 0.05 && part <= 1.0)) {
            throw new IllegalArgumentException("frame: " + part + "; it is from 0.05 to 1");
        }
        composition.frame = part;
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
        if (!(x >= 0.0 && x <= 1.0 && y >= 0.0 && y <= 1.0)) {
            throw new IllegalArgumentException(
                    "pivot: " + x + ", " + y + "; both are from 0 to 1");
        }
        composition.pivot = new double[] {x, y};
        composition.pivotOff = false;
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
     * switched off.
     */
    public void setReducedMotion(boolean reduced) {
        reducedMotion = reduced;
        if (stage != null) {
            stage.setReducedMotion(reduced);
        }
    }

    /** Says whether a finger moves the picture; on at first. */
    public void setDraggable(boolean draggable) {
        this.draggable = draggable;
    }

    @Override
    public boolean onTouchEvent(MotionEvent event) {
        boolean handled = super.onTouchEvent(event);
        if (!draggable || stage == null) {
            return handled;
        }
        switch (event.getActionMasked()) {
            case MotionEvent.ACTION_DOWN:
                stage.setHeld(true);
                break;
            case MotionEvent.ACTION_MOVE:
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
        stage = new ParallaxStage(getContext(), getDisplay(), this::tell);
        stage.setFullSwing(fullSwing);
        stage.setReducedMotion(reducedMotion);
        stage.setComposition(composition);
        for (Map.Entry<String, Double> parameter : parameters.entrySet()) {
            stage.setParameter(parameter.getKey(), parameter.getValue());
        }
        if (photo != null) {
            stage.setImages(photo, depth);
        }
        if (isAvailable()) {
            onSurfaceTextureAvailable(getSurfaceTexture(), getWidth(), getHeight());
        }
        shown = false;
        getViewTreeObserver().addOnPreDrawListener(this);
    }

    @Override
    protected void onDetachedFromWindow() {
        getViewTreeObserver().removeOnPreDrawListener(this);
        stage.quit();
        stage = null;
        super.onDetachedFromWindow();
    }

    @Override
    public void onVisibilityAggregated(boolean isVisible) {
        super.onVisibilityAggregated(isVisible);
        aggregatedVisible = isVisible;
        updateShown();
    }

    /** Sees whether the view was scrolled out of sight. */
    @Override
    public boolean onPreDraw() {
        updateShown();
        return true;
    }

    @Override
    public void onSurfaceTextureAvailable(SurfaceTexture surface, int width, int height) {
        if (stage != null) {
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

    private void setPictures(ParallaxStage.Picture newPhoto, ParallaxStage.Picture newDepth) {
        photo = newPhoto;
        depth = newDepth;
        if (stage != null) {
            stage.setImages(photo, depth);
        }
    }

    private void compose() {
        if (stage != null) {
            stage.setComposition(composition);
        }
    }

    private void updateShown() {
        boolean now = aggregatedVisible && getGlobalVisibleRect(visiblePart);
        if (stage != null && now != shown) {
            shown = now;
            stage.setShown(now);
        }
    }

    private void tell(String sentence) {
        if (listener != null) {
            listener.onError(sentence);
        }
    }
}
