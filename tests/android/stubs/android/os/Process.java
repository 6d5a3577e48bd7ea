package android.os;

public class Process {
    public static final int THREAD_PRIORITY_DISPLAY = -4;
}
