package android.graphics;

import androidx.annotation.RequiresApi;

@RequiresApi(26)
public abstract class ColorSpace {
    public enum Named { SRGB }

    public static ColorSpace get(Named name) {
        throw new UnsupportedOperationException();
    }
}
