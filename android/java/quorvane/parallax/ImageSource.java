package quorvane.parallax;

import androidx.annotation.NonNull;
import androidx.annotation.WorkerThread;
import java.io.IOException;
import java.io.InputStream;

/** Where an image file comes from: a file, an asset, a content provider. */
public interface ImageSource {
    /**
     * Opens the file at its first byte. Called several times, on another thread than the app's
     * first one.
     *
     * @return the file, which the caller closes
     * @throws IOException where it cannot be opened; its message is told to the app
     */
    @NonNull
    @WorkerThread
    InputStream open() throws IOException;
}
