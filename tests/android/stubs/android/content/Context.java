package android.content;

import android.content.res.AssetManager;

public abstract class Context {
    public static final String SENSOR_SERVICE = "sensor";
    public static final String DISPLAY_SERVICE = "display";
    public abstract Object getSystemService(String name);
    public abstract ContentResolver getContentResolver();
    public abstract AssetManager getAssets();
}
