package android.content.res;

import java.io.IOException;
import java.io.InputStream;

public final class AssetManager {
    public InputStream open(String fileName) throws IOException {
        throw new UnsupportedOperationException();
    }
}
