package android.opengl;

import java.nio.Buffer;

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

    public static void glGetIntegerv(int name, int[] values, int offset) {}

    public static void glBindFramebuffer(int target, int framebuffer) {}

    public static void glViewport(int x, int y, int width, int height) {}

    public static void glDisable(int capability) {}

    public static void glUseProgram(int program) {}

    public static void glActiveTexture(int unit) {}

    public static void glBindTexture(int target, int texture) {}

    public static int glGetUniformLocation(int program, String name) {
        throw new UnsupportedOperationException();
    }

    public static void glUniform1i(int location, int x) {}

    public static void glBindBuffer(int target, int buffer) {}

    public static void glVertexAttribPointer(int index, int size, int type, boolean normalized,
            int stride, Buffer pointer) {}

    public static void glEnableVertexAttribArray(int index) {}

    public static void glDrawArrays(int mode, int first, int count) {}

    public static int glCreateProgram() {
        throw new UnsupportedOperationException();
    }

    public static int glCreateShader(int type) {
        throw new UnsupportedOperationException();
    }

    public static void glShaderSource(int shader, String source) {}

    public static void glCompileShader(int shader) {}

    public static void glAttachShader(int program, int shader) {}

    public static void glDeleteShader(int shader) {}

    public static void glBindAttribLocation(int program, int index, String name) {}

    public static void glLinkProgram(int program) {}

    public static void glGetProgramiv(int program, int name, int[] values, int offset) {}

    public static String glGetProgramInfoLog(int program) {
        throw new UnsupportedOperationException();
    }
}
