package android.view;

import android.content.Context;
import android.graphics.SurfaceTexture;
import android.util.AttributeSet;

/** Tells its listener nothing by itself: a test does. */
public class TextureView extends View {
    public SurfaceTextureListener told;
    /** One that is there before the view enters a window. */
    public SurfaceTexture surface;

    public TextureView(Context context, AttributeSet attributes, int style, int otherwise) {
        super(context, attributes, style, otherwise);
    }

    public void setOpaque(boolean opaque) {}

    public void setSurfaceTextureListener(SurfaceTextureListener listener) {
        told = listener;
    }

    public boolean isAvailable() {
        return surface != null;
    }

    public SurfaceTexture getSurfaceTexture() {
        return surface;
    }

    public interface SurfaceTextureListener {
        void onSurfaceTextureAvailable(SurfaceTexture surface, int width, int height);

        void onSurfaceTextureSizeChanged(SurfaceTexture surface, int width, int height);

        boolean onSurfaceTextureDestroyed(SurfaceTexture surface);

        void onSurfaceTextureUpdated(SurfaceTexture surface);
    }
}
