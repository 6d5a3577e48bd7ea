package quorvane.sample;

import android.app.Activity;
import android.os.Bundle;
import android.util.Log;
import android.widget.Toast;
import quorvane.parallax.ParallaxPhotoView;

/** One screen: a photo that moves as the phone is tilted. */
public final class MainActivity extends Activity {
    @Override
    protected void onCreate(Bundle savedInstanceState) {
        super.onCreate(savedInstanceState);
        setContentView(R.layout.main);
        ParallaxPhotoView view = findViewById(R.id.photo);
        view.setOnErrorListener(
                sentence -> {
                    Log.w("QuorvaneSample", sentence);
                    Toast.makeText(this, sentence, Toast.LENGTH_LONG).show();
                });
    }
}
