package android.view;

import android.content.Context;
import android.graphics.Rect;
import android.util.AttributeSet;

/** 200 x 100 pixels. */
public class View {
    /** Whether a part of it is not scrolled out of sight. */
    public boolean inSight = true;

    private final Context context;

    public View(Context context, AttributeSet attributes) {
        this.context = context;
    }

    public final Context getContext() {
        return context;
    }

    public Display getDisplay() {
        return new Display();
    }

    public final int getWidth() {
        return 200;
    }

    public final int getHeight() {
        return 100;
    }

    public final boolean getGlobalVisibleRect(Rect rect) {
        return inSight;
    }

    public ViewTreeObserver getViewTreeObserver() {
        return new ViewTreeObserver();
    }

    public boolean onTouchEvent(MotionEvent event) {
        return false;
    }

    public void onVisibilityAggregated(boolean isVisible) {}

    protected void onAttachedToWindow() {}

    protected void onDetachedFromWindow() {}
}
