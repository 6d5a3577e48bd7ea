package android.view;

import java.util.List;
import java.util.concurrent.CopyOnWriteArrayList;

/** Of the one window there is. */
public final class ViewTreeObserver {
    public static final List<OnPreDrawListener> LISTENERS = new CopyOnWriteArrayList<>();
    static final ViewTreeObserver ONLY = new ViewTreeObserver();

    public void addOnPreDrawListener(OnPreDrawListener listener) {
        LISTENERS.add(listener);
    }

    public void removeOnPreDrawListener(OnPreDrawListener victim) {
        LISTENERS.remove(victim);
    }

    public interface OnPreDrawListener {
        boolean onPreDraw();
    }
}
