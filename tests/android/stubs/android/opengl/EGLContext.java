package android.opengl;

public class EGLContext {}
