package quorvane.parallax;

import android.content.Context;
import android.net.Uri;
import java.io.FileNotFoundException;
import java.io.IOException;
import java.io.InputStream;

/** A file that has a name, by which it is known again: two of the same name are equal. */
final class NamedSource implements ImageSource {
    // Not an activity's: images outlive that.
    private final Context app;
    private final Object name;

    /** A file of a content provider or the file system. */
    NamedSource(Context context, Uri uri) {
        this(context, (Object) uri);
    }

    /** A file among the app's assets. */
    NamedSource(Context context, String asset) {
        this(context, (Object) asset);
    }

    private NamedSource(Context context, Object name) {
        Context outer = context.getApplicationContext();
        app = outer != null ? outer : context;
        this.name = name;
    }

    @Override
    public InputStream open() throws IOException {
        if (name instanceof String) {
            return app.getAssets().open((String) name);
        }
        InputStream file = app.getContentResolver().openInputStream((Uri) name);
        if (file == null) {
            throw new FileNotFoundException(name.toString());
        }
        return file;
    }

    @Override
    public boolean equals(Object other) {
        return other instanceof NamedSource && ((NamedSource) other).name.equals(name);
    }

    @Override
    public int hashCode() {
        return name.hashCode();
    }
}
