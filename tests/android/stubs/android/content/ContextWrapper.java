package android.content;

import android.content.res.AssetManager;

public class ContextWrapper extends Context {
    @Override
    public Object getSystemService(String name) {
        throw new UnsupportedOperationException();
    }

    @Override
    public ContentResolver getContentResolver() {
        throw new UnsupportedOperationException();
    }

    @Override
    public AssetManager getAssets() {
        throw new UnsupportedOperationException();
    }
}
