package android.view;

import android.content.Context;
import android.graphics.Canvas;
import android.graphics.Rect;
import android.util.AttributeSet;

public class View {
    public View(Context context, AttributeSet attributes, int style, int otherwise) {}

    public final Context getContext() {
        throw new UnsupportedOperationException();
    }

    public Display getDisplay() {
        throw new UnsupportedOperationException();
    }

    public final int getWidth() {
        throw new UnsupportedOperationException();
    }

    public final int getHeight() {
        throw new UnsupportedOperationException();
    }

    public final boolean getGlobalVisibleRect(Rect rect) {
        throw new UnsupportedOperationException();
    }

    public ViewTreeObserver getViewTreeObserver() {
        throw new UnsupportedOperationException();
    }

    public final ViewParent getParent() {
        throw new UnsupportedOperationException();
    }

    public float getAlpha() {
        throw new UnsupportedOperationException();
    }

    public void setAlpha(float alpha) {}

    public ViewPropertyAnimator animate() {
        throw new UnsupportedOperationException();
    }

    public CharSequence getAccessibilityClassName() {
        throw new UnsupportedOperationException();
    }

    public void setContentDescription(CharSequence description) {}

    public boolean isInEditMode() {
        throw new UnsupportedOperationException();
    }

    public void setWillNotDraw(boolean willNotDraw) {}

    protected void dispatchDraw(Canvas canvas) {}

    public boolean onTouchEvent(MotionEvent event) {
        throw new UnsupportedOperationException();
    }

    public void onVisibilityAggregated(boolean isVisible) {}

    protected void onAttachedToWindow() {}

    protected void onDetachedFromWindow() {}
}
