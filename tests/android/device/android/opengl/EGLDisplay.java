package android.opengl;

public class EGLDisplay {
    final long handle;

    EGLDisplay(long handle) {
        this.handle = handle;
    }
}
