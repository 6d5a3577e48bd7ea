package android.content;

public class IntentFilter {
    final String action;

    public IntentFilter(String action) {
        this.action = action;
    }
}
