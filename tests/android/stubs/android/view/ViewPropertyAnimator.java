package android.view;

public class ViewPropertyAnimator {
    public ViewPropertyAnimator alpha(float value) {
        throw new UnsupportedOperationException();
    }

    public ViewPropertyAnimator setDuration(long duration) {
        throw new UnsupportedOperationException();
    }
}
