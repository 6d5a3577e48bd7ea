package android.content;

import android.content.pm.ApplicationInfo;
import android.content.res.AssetManager;
import android.content.res.Resources;
import android.content.res.TypedArray;
import android.os.Handler;
import android.util.AttributeSet;
import androidx.annotation.RequiresApi;
import java.io.File;

public abstract class Context {
    public static final String SENSOR_SERVICE = "sensor";
    public static final String DISPLAY_SERVICE = "display";
    public static final String POWER_SERVICE = "power";
    public static final String WINDOW_SERVICE = "window";
    @RequiresApi(33)
    public static final int RECEIVER_EXPORTED = 2;

    public abstract Object getSystemService(String name);

    public abstract ContentResolver getContentResolver();

    public abstract AssetManager getAssets();

    public Context getApplicationContext() {
        throw new UnsupportedOperationException();
    }

    public ApplicationInfo getApplicationInfo() {
        throw new UnsupportedOperationException();
    }

    public Resources getResources() {
        throw new UnsupportedOperationException();
    }

    public final String getString(int resource) {
        return getResources().getString(resource);
    }

    public Resources.Theme getTheme() {
        throw new UnsupportedOperationException();
    }

    public final TypedArray obtainStyledAttributes(
            AttributeSet set, int[] attributes, int style, int otherwise) {
        return getTheme().obtainStyledAttributes(set, attributes, style, otherwise);
    }

    public final CharSequence getText(int resource) {
        throw new UnsupportedOperationException();
    }

    public File getFilesDir() {
        throw new UnsupportedOperationException();
    }

    public File getExternalFilesDir(String type) {
        throw new UnsupportedOperationException();
    }

    public Intent registerReceiver(BroadcastReceiver receiver, IntentFilter filter,
            String broadcastPermission, Handler scheduler) {
        throw new UnsupportedOperationException();
    }

    @RequiresApi(26)
    public Intent registerReceiver(BroadcastReceiver receiver, IntentFilter filter,
            String broadcastPermission, Handler scheduler, int flags) {
        throw new UnsupportedOperationException();
    }

    public void unregisterReceiver(BroadcastReceiver receiver) {}

    public void registerComponentCallbacks(ComponentCallbacks callback) {}
}
