package android.content.res;

import android.util.AttributeSet;

public class Resources {
    public String getString(int id) {
        throw new UnsupportedOperationException();
    }

    public class Theme {
        public TypedArray obtainStyledAttributes(
                AttributeSet set, int[] attributes, int style, int otherwise) {
            throw new UnsupportedOperationException();
        }
    }
}
