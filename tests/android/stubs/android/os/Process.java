package android.os;

public class Process {
    public static final int THREAD_PRIORITY_DISPLAY = -4;
    public static final int THREAD_PRIORITY_LESS_FAVORABLE = 1;

    public static final void setThreadPriority(int priority) {}
}
