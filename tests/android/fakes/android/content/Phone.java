package android.content;

import android.content.pm.ApplicationInfo;
import android.content.res.AssetManager;
import android.content.res.Resources;
import android.hardware.SensorManager;
import android.hardware.display.DisplayManager;
import android.os.Handler;
import android.os.PowerManager;
import android.view.Display;
import android.view.WindowManager;
import java.io.File;

/** A context with sensors, a display and a folder. */
public final class Phone extends Context {
    /** Who hears broadcasts; null where nobody does. */
    public BroadcastReceiver receiver;
    /** The name of the permission that a sender needs. */
    public String sendersPermission;
    public File folder;
    public final ApplicationInfo info = new ApplicationInfo();

    @Override
    public Object getSystemService(String name) {
        switch (name) {
            case DISPLAY_SERVICE:
                return new DisplayManager();
            case POWER_SERVICE:
                return new PowerManager();
            case WINDOW_SERVICE:
                return (WindowManager) Display::new;
            default:
                return new SensorManager();
        }
    }

    @Override
    public ContentResolver getContentResolver() {
        return new ContentResolver() {};
    }

    @Override
    public Resources getResources() {
        return new Resources() {
            @Override
            public String getString(int id) {
                return "string " + id;
            }
        };
    }

    @Override
    public AssetManager getAssets() {
        return new AssetManager();
    }

    @Override
    public Context getApplicationContext() {
        return this;
    }

    @Override
    public ApplicationInfo getApplicationInfo() {
        return info;
    }

    @Override
    public File getExternalFilesDir(String type) {
        return folder;
    }

    @Override
    public Intent registerReceiver(BroadcastReceiver newReceiver, IntentFilter filter,
            String broadcastPermission, Handler scheduler) {
        receiver = newReceiver;
        sendersPermission = broadcastPermission;
        return null;
    }

    @Override
    public void unregisterReceiver(BroadcastReceiver gone) {
        receiver = null;
    }
}
