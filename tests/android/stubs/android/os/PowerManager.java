package android.os;

public final class PowerManager {
    public static final String ACTION_POWER_SAVE_MODE_CHANGED =
            "android.os.action.POWER_SAVE_MODE_CHANGED";

    public boolean isPowerSaveMode() {
        throw new UnsupportedOperationException();
    }
}
