package android.view;

public interface ViewParent {
    void requestDisallowInterceptTouchEvent(boolean disallowIntercept);
}
