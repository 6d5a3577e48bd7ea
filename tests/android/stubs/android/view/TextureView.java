package android.view;

import android.content.Context;
import android.graphics.SurfaceTexture;
import android.util.AttributeSet;

public class TextureView extends View {
    public TextureView(Context context, AttributeSet attributes, int style, int otherwise) {
        super(context, attributes, style, otherwise);
    }

    public void setOpaque(boolean opaque) {}

    public void setSurfaceTextureListener(SurfaceTextureListener listener) {}

    public boolean isAvailable() {
        throw new UnsupportedOperationException();
    }

    public SurfaceTexture getSurfaceTexture() {
        throw new UnsupportedOperationException();
    }

    public interface SurfaceTextureListener {
        void onSurfaceTextureAvailable(SurfaceTexture surface, int width, int height);

        void onSurfaceTextureSizeChanged(SurfaceTexture surface, int width, int height);

        boolean onSurfaceTextureDestroyed(SurfaceTexture surface);

        void onSurfaceTextureUpdated(SurfaceTexture surface);
    }
}
