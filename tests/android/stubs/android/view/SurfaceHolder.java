package android.view;

public interface SurfaceHolder {}
