package android.view;

import android.content.Context;
import android.graphics.Canvas;
import android.graphics.Rect;
import android.util.AttributeSet;

/** 200 x 100 pixels. */
public class View {
    /** Whether a layout's editor shows views. */
    public static boolean editing;

    /** Whether only what lies in it is drawn, with dispatchDraw. */
    public boolean skipsItself;
    /** Whether a part of it is not scrolled out of sight. */
    public boolean inSight = true;
    /** Whether the parent may no longer take the finger. */
    public boolean ownsFinger;
    public long fadedMillis;

    private final Context context;
    private final Display display = new Display();
    private volatile float alpha = 1f;

    public View(Context context, AttributeSet attributes, int style, int otherwise) {
        this.context = context;
    }

    public final Context getContext() {
        return context;
    }

    public Display getDisplay() {
        return display;
    }

    public final int getWidth() {
        return 200;
    }

    public final int getHeight() {
        return 100;
    }

    public final ViewParent getParent() {
        return disallow -> ownsFinger = disallow;
    }

    public float getAlpha() {
        return alpha;
    }

    public void setAlpha(float alpha) {
        this.alpha = alpha;
    }

    public ViewPropertyAnimator animate() {
        return new ViewPropertyAnimator(this);
    }

    public CharSequence getAccessibilityClassName() {
        return "android.view.View";
    }

    public final boolean getGlobalVisibleRect(Rect rect) {
        return inSight;
    }

    public ViewTreeObserver getViewTreeObserver() {
        return ViewTreeObserver.ONLY;
    }

    public boolean isInEditMode() {
        return editing;
    }

    public void setWillNotDraw(boolean willNotDraw) {
        skipsItself = willNotDraw;
    }

    protected void dispatchDraw(Canvas canvas) {}

    public boolean onTouchEvent(MotionEvent event) {
        return false;
    }

    public void onVisibilityAggregated(boolean isVisible) {}

    protected void onAttachedToWindow() {}

    protected void onDetachedFromWindow() {}
}
