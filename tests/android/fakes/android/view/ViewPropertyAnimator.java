package android.view;

/** Ends at once. */
public class ViewPropertyAnimator {
    private final View view;

    ViewPropertyAnimator(View view) {
        this.view = view;
    }

    public ViewPropertyAnimator alpha(float value) {
        view.setAlpha(value);
        return this;
    }

    public ViewPropertyAnimator setDuration(long duration) {
        view.fadedMillis = duration;
        return this;
    }
}
