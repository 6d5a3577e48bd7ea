package android.provider;

import android.content.ContentResolver;

public final class Settings {
    public static final class Global {
        public static final String ANIMATOR_DURATION_SCALE = "animator_duration_scale";
        public static volatile float scale = 1f;

        public static float getFloat(ContentResolver resolver, String name, float fallback) {
            return scale;
        }
    }
}
