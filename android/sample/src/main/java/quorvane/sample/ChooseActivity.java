package quorvane.sample;

import android.app.Activity;
import android.app.WallpaperManager;
import android.content.ActivityNotFoundException;
import android.content.ComponentName;
import android.content.Intent;
import android.net.Uri;
import android.os.Bundle;
import android.widget.Toast;
import java.io.ByteArrayOutputStream;
import java.io.File;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.InputStream;
import java.io.OutputStream;
import quorvane.parallax.ParallaxWallpaperService;
import quorvane.parallax.PortraitPhoto;

/** Lets people choose a portrait photo for the wallpaper, and shows the system's preview of it. */
public final class ChooseActivity extends Activity {
    private static final int CHOOSE = 1;
    private static final int LARGEST_FILE = 64 << 20;

    @Override
    protected void onCreate(Bundle savedInstanceState) {
        super.onCreate(savedInstanceState);
        if (savedInstanceState == null) {
            Intent choose = new Intent(Intent.ACTION_GET_CONTENT);
            choose.addCategory(Intent.CATEGORY_OPENABLE);
            choose.setType("image/jpeg");
            startActivityForResult(choose, CHOOSE);
        }
    }

    @Override
    protected void onActivityResult(int request, int result, Intent data) {
        super.onActivityResult(request, result, data);
        if (request != CHOOSE || result != RESULT_OK || data == null || data.getData() == null) {
            finish();
            return;
        }
        Uri photo = data.getData();
        new Thread(() -> {
            int refusal = keep(photo);
            runOnUiThread(() -> kept(refusal));
        }, "keep").start();
    }

    // A copy, as this app may read the chosen file only for now. 0, or what to tell.
    private int keep(Uri photo) {
        File whole = ChosenWallpaper.file(this);
        File part = new File(whole.getPath() + ".part");
        try {
            byte[] bytes = bytes(photo);
            if (PortraitPhoto.read(bytes).container() == null) {
                return R.string.no_depth;
            }
            try (OutputStream file = new FileOutputStream(part)) {
                file.write(bytes);
            }
            return part.renameTo(whole) ? 0 : R.string.not_read;
        } catch (IOException | RuntimeException | LinkageError | OutOfMemoryError e) {
            // A content provider throws what it likes, and this thread is nobody else's to guard.
            return R.string.not_read;
        }
    }

    private byte[] bytes(Uri photo) throws IOException {
        try (InputStream file = getContentResolver().openInputStream(photo)) {
            if (file == null) {
                throw new IOException("no file");
            }
            ByteArrayOutputStream all = new ByteArrayOutputStream();
            byte[] piece = new byte[65_536];
            for (int count = file.read(piece); count >= 0; count = file.read(piece)) {
                all.write(piece, 0, count);
                if (all.size() > LARGEST_FILE) {
                    throw new IOException("too large");
                }
            }
            return all.toByteArray();
        }
    }

    private void kept(int refusal) {
        if (refusal != 0) {
            Toast.makeText(this, getText(refusal), Toast.LENGTH_LONG).show();
        } else {
            ParallaxWallpaperService.reloadAll();
            Intent preview = new Intent(WallpaperManager.ACTION_CHANGE_LIVE_WALLPAPER);
            preview.putExtra(WallpaperManager.EXTRA_LIVE_WALLPAPER_COMPONENT,
                    new ComponentName(this, ChosenWallpaper.class));
            try {
                startActivity(preview);
            } catch (ActivityNotFoundException e) {
                Toast.makeText(this, getText(R.string.no_wallpapers), Toast.LENGTH_LONG).show();
            }
        }
        finish();
    }
}
