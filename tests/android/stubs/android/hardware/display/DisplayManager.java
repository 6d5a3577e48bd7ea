package android.hardware.display;

import android.os.Handler;
import android.view.Display;

public final class DisplayManager {
    public Display getDisplay(int displayId) {
        throw new UnsupportedOperationException();
    }

    public void registerDisplayListener(DisplayListener listener, Handler handler) {}

    public void unregisterDisplayListener(DisplayListener listener) {}

    public interface DisplayListener {
        void onDisplayAdded(int displayId);

        void onDisplayRemoved(int displayId);

        void onDisplayChanged(int displayId);
    }
}
