package android.view;

public interface SurfaceHolder {
    /** Whether its surface has gone. */
    boolean gone();
}
