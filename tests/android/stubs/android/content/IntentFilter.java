package android.content;

public class IntentFilter {
    public IntentFilter(String action) {}
}
