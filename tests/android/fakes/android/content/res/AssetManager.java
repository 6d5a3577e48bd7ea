package android.content.res;

import java.io.ByteArrayInputStream;
import java.io.InputStream;
import java.util.List;
import java.util.concurrent.CopyOnWriteArrayList;

/** Has every file. */
public final class AssetManager {
    public static final List<String> OPENED = new CopyOnWriteArrayList<>();

    public InputStream open(String fileName) {
        OPENED.add(fileName);
        return new ByteArrayInputStream(new byte[0]);
    }
}
