package android.app;

import android.content.ContextWrapper;
import android.content.Intent;
import android.os.Bundle;
import android.view.View;

public class Activity extends ContextWrapper {
    public static final int RESULT_OK = -1;

    protected void onCreate(Bundle savedInstanceState) {}

    protected void onActivityResult(int requestCode, int resultCode, Intent data) {}

    public void setContentView(int layout) {}

    public <T extends View> T findViewById(int id) {
        throw new UnsupportedOperationException();
    }

    public void startActivity(Intent intent) {}

    public void startActivityForResult(Intent intent, int requestCode) {}

    public final void runOnUiThread(Runnable action) {}

    public void finish() {}
}
