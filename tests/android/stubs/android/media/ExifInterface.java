package android.media;

import java.io.IOException;
import java.io.InputStream;

public class ExifInterface {
    public static final String TAG_ORIENTATION = "Orientation";
    public static final int ORIENTATION_NORMAL = 1;

    public ExifInterface(InputStream stream) throws IOException {}

    public int getAttributeInt(String tag, int defaultValue) {
        throw new UnsupportedOperationException();
    }
}
