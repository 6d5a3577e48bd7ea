package android.view;

public interface WindowManager {
    Display getDefaultDisplay();
}
