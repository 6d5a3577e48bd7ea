package android.content.pm;

public class ApplicationInfo {
    public static final int FLAG_DEBUGGABLE = 1 << 1;

    public int flags;
}
