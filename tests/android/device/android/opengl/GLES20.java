package android.opengl;

import java.nio.Buffer;

/** Android's calls on Mesa. */
public class GLES20 {
    public static final int GL_MAX_TEXTURE_SIZE = 0x0D33;
    public static final int GL_FRAMEBUFFER = 0x8D40;
    public static final int GL_DEPTH_TEST = 0x0B71;
    public static final int GL_TEXTURE0 = 0x84C0;
    public static final int GL_TEXTURE_2D = 0x0DE1;
    public static final int GL_ARRAY_BUFFER = 0x8892;
    public static final int GL_FLOAT = 0x1406;
    public static final int GL_TRIANGLE_STRIP = 0x0005;
    public static final int GL_VERTEX_SHADER = 0x8B31;
    public static final int GL_FRAGMENT_SHADER = 0x8B30;
    public static final int GL_LINK_STATUS = 0x8B82;

    static {
        System.loadLibrary("quorvane_device");
    }

    public static native void glGetIntegerv(int name, int[] values, int offset);

    public static native void glBindFramebuffer(int target, int framebuffer);

    public static native void glViewport(int x, int y, int width, int height);

    public static native void glDisable(int capability);

    public static native void glUseProgram(int program);

    public static native void glActiveTexture(int unit);

    public static native void glBindTexture(int target, int texture);

    public static native int glGetUniformLocation(int program, String name);

    public static native void glUniform1i(int location, int x);

    public static native void glBindBuffer(int target, int buffer);

    public static native void glVertexAttribPointer(int index, int size, int type,
            boolean normalized, int stride, Buffer pointer);

    public static native void glEnableVertexAttribArray(int index);

    public static native void glDrawArrays(int mode, int first, int count);

    public static native int glCreateProgram();

    public static native int glCreateShader(int type);

    public static native void glShaderSource(int shader, String source);

    public static native void glCompileShader(int shader);

    public static native void glAttachShader(int program, int shader);

    public static native void glDeleteShader(int shader);

    public static native void glBindAttribLocation(int program, int index, String name);

    public static native void glLinkProgram(int program);

    public static native void glGetProgramiv(int program, int name, int[] values, int offset);

    public static native String glGetProgramInfoLog(int program);
}
