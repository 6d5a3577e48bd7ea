package android.graphics;

public class SurfaceTexture {
    public void release() {}
}
