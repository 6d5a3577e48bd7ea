package android.media;

import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;

/** Knows the orientation that a test has written behind a picture's end. */
public class ExifInterface {
    public static final String TAG_ORIENTATION = "Orientation";
    public static final int ORIENTATION_NORMAL = 1;
    /** A test writes this and the code. */
    public static final String MARK = "orientation=";

    private final int orientation;

    public ExifInterface(InputStream stream) throws IOException {
        ByteArrayOutputStream all = new ByteArrayOutputStream();
        byte[] piece = new byte[1 << 14];
        for (int count = stream.read(piece); count >= 0; count = stream.read(piece)) {
            all.write(piece, 0, count);
        }
        String text = new String(all.toByteArray(), StandardCharsets.ISO_8859_1);
        int at = text.lastIndexOf(MARK);
        orientation = at < 0 ? 0 : text.charAt(at + MARK.length()) - '0';
    }

    public int getAttributeInt(String tag, int defaultValue) {
        return orientation == 0 ? defaultValue : orientation;
    }
}
