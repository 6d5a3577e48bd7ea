package android.content;

import android.net.Uri;
import android.os.Parcelable;

public class Intent {
    public static final String ACTION_GET_CONTENT = "android.intent.action.GET_CONTENT";
    public static final String CATEGORY_OPENABLE = "android.intent.category.OPENABLE";

    public Intent(String action) {}

    public Intent addCategory(String category) {
        throw new UnsupportedOperationException();
    }

    public Intent setType(String type) {
        throw new UnsupportedOperationException();
    }

    public Intent putExtra(String name, Parcelable value) {
        throw new UnsupportedOperationException();
    }

    public Uri getData() {
        throw new UnsupportedOperationException();
    }
}
