package android.graphics;

public class SurfaceTexture {
    public volatile boolean released;

    public void release() {
        released = true;
    }
}
