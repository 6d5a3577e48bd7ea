package android.content;

import android.content.pm.ApplicationInfo;
import android.content.res.AssetManager;
import android.content.res.Resources;
import android.content.res.TypedArray;
import android.hardware.SensorManager;
import android.hardware.display.DisplayManager;
import android.os.Handler;
import android.os.PowerManager;
import android.util.AttributeSet;
import android.view.Display;
import android.view.WindowManager;
import java.io.File;
import java.util.Collections;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.ConcurrentHashMap;
import java.util.concurrent.CopyOnWriteArrayList;

/** A context with sensors, a display and a folder. */
public final class Phone extends Context {
    /** Who hears which broadcast. */
    public final Map<String, BroadcastReceiver> receivers = new ConcurrentHashMap<>();
    private final Map<String, Handler> schedulers = new ConcurrentHashMap<>();
    /** The permission that a sender of each needs. */
    public final Map<String, String> permissions = new ConcurrentHashMap<>();
    /** Who hears that memory is wanted; those of the process. */
    private static final List<ComponentCallbacks> CALLBACKS = new CopyOnWriteArrayList<>();
    public File folder;
    /** The values of its styles, by the style's and the attribute's number. */
    public final Map<Integer, Map<Integer, Object>> styles = new HashMap<>();
    /** The styles that the theme's attributes name. */
    public final Map<Integer, Integer> theme = new HashMap<>();
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
    public Resources.Theme getTheme() {
        return getResources().new Theme() {
            @Override
            public TypedArray obtainStyledAttributes(
                    AttributeSet set, int[] attributes, int style, int otherwise) {
                Map<Integer, Object> layout =
                        set == null ? Collections.emptyMap() : ((Layout) set).values;
                Map<Integer, Object> byDefault =
                        styles.getOrDefault(theme.getOrDefault(style, otherwise), Collections.emptyMap());
                Object[] values = new Object[attributes.length];
                for (int i = 0; i < attributes.length; ++i) {
                    values[i] = layout.getOrDefault(attributes[i], byDefault.get(attributes[i]));
                }
                return new TypedArray(values);
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
        if (folder != null) {
            folder.mkdirs();
        }
        return folder;
    }

    @Override
    public Intent registerReceiver(BroadcastReceiver receiver, IntentFilter filter,
            String broadcastPermission, Handler scheduler) {
        receivers.put(filter.action, receiver);
        schedulers.put(filter.action, scheduler);
        if (broadcastPermission != null) {
            permissions.put(filter.action, broadcastPermission);
        }
        return null;
    }

    /** Sends a broadcast to who hears it, on that one's thread. */
    public void send(String action) {
        schedulers.get(action).post(() -> receivers.get(action).onReceive(this, null));
    }

    @Override
    public void unregisterReceiver(BroadcastReceiver gone) {
        receivers.values().remove(gone);
    }

    @Override
    public void registerComponentCallbacks(ComponentCallbacks callbacks) {
        CALLBACKS.add(callbacks);
    }

    public static void trim(int level) {
        for (ComponentCallbacks callbacks : CALLBACKS) {
            ((ComponentCallbacks2) callbacks).onTrimMemory(level);
        }
    }

    /** A view of a layout: values by the attribute's number. */
    public static final class Layout implements AttributeSet {
        final Map<Integer, Object> values = new HashMap<>();

        public Layout with(int attribute, Object value) {
            values.put(attribute, value);
            return this;
        }
    }
}
