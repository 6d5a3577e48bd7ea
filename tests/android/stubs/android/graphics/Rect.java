package android.graphics;

public final class Rect {}
