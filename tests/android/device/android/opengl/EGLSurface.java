package android.opengl;

public class EGLSurface {
    final long handle;

    EGLSurface(long handle) {
        this.handle = handle;
    }
}
