package android.app;

import android.content.ContextWrapper;
import android.os.Bundle;
import android.view.View;

public class Activity extends ContextWrapper {
    protected void onCreate(Bundle savedInstanceState) {}

    public void setContentView(View view) {}
}
