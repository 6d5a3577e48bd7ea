package android.content;

import android.os.Parcelable;

public final class ComponentName implements Parcelable {
    public ComponentName(Context context, Class<?> type) {}
}
