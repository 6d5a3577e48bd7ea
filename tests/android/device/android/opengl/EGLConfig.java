package android.opengl;

public class EGLConfig {
    final long handle;

    EGLConfig(long handle) {
        this.handle = handle;
    }
}
