package android.opengl;

public class EGLDisplay {}
