package android.view;

public final class ViewTreeObserver {
    public void addOnPreDrawListener(OnPreDrawListener listener) {}

    public void removeOnPreDrawListener(OnPreDrawListener victim) {}

    public interface OnPreDrawListener {
        boolean onPreDraw();
    }
}
