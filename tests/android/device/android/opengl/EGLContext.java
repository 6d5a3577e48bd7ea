package android.opengl;

public class EGLContext {
    final long handle;

    EGLContext(long handle) {
        this.handle = handle;
    }
}
