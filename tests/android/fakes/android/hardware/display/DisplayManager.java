package android.hardware.display;

import android.os.Handler;
import android.view.Display;

/** Of a display that nobody turns. */
public final class DisplayManager {
    public Display getDisplay(int displayId) {
        return new Display();
    }

    public void registerDisplayListener(DisplayListener listener, Handler handler) {}

    public void unregisterDisplayListener(DisplayListener listener) {}

    public interface DisplayListener {
        void onDisplayAdded(int displayId);

        void onDisplayRemoved(int displayId);

        void onDisplayChanged(int displayId);
    }
}
