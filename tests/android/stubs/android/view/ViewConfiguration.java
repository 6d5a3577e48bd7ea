package android.view;

import android.content.Context;

public class ViewConfiguration {
    public static ViewConfiguration get(Context context) {
        throw new UnsupportedOperationException();
    }

    public int getScaledTouchSlop() {
        throw new UnsupportedOperationException();
    }
}
