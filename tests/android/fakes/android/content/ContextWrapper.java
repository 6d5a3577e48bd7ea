package android.content;

import android.content.res.AssetManager;
import android.os.Handler;

/** Of a phone. */
public class ContextWrapper extends Context {
    public final Phone phone = new Phone();

    @Override
    public Object getSystemService(String name) {
        return phone.getSystemService(name);
    }

    @Override
    public ContentResolver getContentResolver() {
        return phone.getContentResolver();
    }

    @Override
    public AssetManager getAssets() {
        return phone.getAssets();
    }

    @Override
    public Context getApplicationContext() {
        return phone;
    }

    @Override
    public Intent registerReceiver(BroadcastReceiver receiver, IntentFilter filter,
            String broadcastPermission, Handler scheduler) {
        return phone.registerReceiver(receiver, filter, broadcastPermission, scheduler);
    }

    @Override
    public void unregisterReceiver(BroadcastReceiver receiver) {
        phone.unregisterReceiver(receiver);
    }
}
