package quorvane.sample;

import android.content.Context;
import java.io.File;
import java.io.FileInputStream;
import quorvane.parallax.ImageSource;
import quorvane.parallax.ParallaxWallpaperService;

/** The photo that was chosen, as a wallpaper; ours until one is. */
public final class ChosenWallpaper extends ParallaxWallpaperService {
    /** Where the chosen photo is kept, with the depth inside it. */
    static File file(Context context) {
        return new File(context.getFilesDir(), "wallpaper.jpg");
    }

    @Override
    protected ImageSource photo() {
        File chosen = file(this);
        return chosen.exists() ? () -> new FileInputStream(chosen)
                               : () -> getAssets().open("photo.jpg");
    }

    @Override
    protected ImageSource depth() {
        return file(this).exists() ? null : () -> getAssets().open("depth.png");
    }
}
