package android.graphics;

/** A window's surface of some size, which keeps the picture that was swapped in last. */
public class SurfaceTexture {
    public volatile boolean released;
    public volatile int width;
    public volatile int height;
    /** 4 bytes a pixel, the bottom row first, as OpenGL reads them; null before the first one. */
    public volatile byte[] picture;

    public void release() {
        released = true;
    }
}
