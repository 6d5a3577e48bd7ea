package quorvane.parallax;

import android.opengl.EGL14;
import android.opengl.EGLConfig;
import android.opengl.EGLContext;
import android.opengl.EGLDisplay;
import android.opengl.EGLSurface;
import android.opengl.GLES20;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.FloatBuffer;

/**
 * An OpenGL ES context that is current on the thread that opened it, and the surface that shows its
 * textures. A lost context is not mended: close this and open another one.
 */
final class Screen implements AutoCloseable {
    // The texture's first row is the picture's top.
    private static final String VERTEX_SHADER =
            "attribute vec2 position;\n"
            + "varying vec2 texel;\n"
            + "void main() {\n"
            + "    texel = vec2(0.5 + 0.5 * position.x, 0.5 - 0.5 * position.y);\n"
            + "    gl_Position = vec4(position, 0.0, 1.0);\n"
            + "}\n";
    private static final String FRAGMENT_SHADER =
            // A coarser one does not tell the pixels of a large view apart.
            "#ifdef GL_FRAGMENT_PRECISION_HIGH\n"
            + "precision highp float;\n"
            + "#else\n"
            + "precision mediump float;\n"
            + "#endif\n"
            + "uniform sampler2D picture;\n"
            + "varying vec2 texel;\n"
            + "void main() {\n"
            + "    gl_FragColor = texture2D(picture, texel);\n"
            + "}\n";
    private static final float[] CORNERS = {-1f, -1f, 1f, -1f, -1f, 1f, 1f, 1f};

    private final FloatBuffer corners = ByteBuffer.allocateDirect(4 * CORNERS.length)
            .order(ByteOrder.nativeOrder()).asFloatBuffer().put(CORNERS);
    private EGLDisplay display = EGL14.EGL_NO_DISPLAY;
    private EGLContext context = EGL14.EGL_NO_CONTEXT;
    private EGLSurface surface = EGL14.EGL_NO_SURFACE;
    private EGLConfig config;
    private int program;
    private int picture;

    /**
     * Opens a context for a {@code SurfaceTexture}, {@code Surface} or {@code SurfaceHolder}.
     *
     * @throws ParallaxException where the driver refuses
     */
    Screen(Object nativeWindow) {
        try {
            open(nativeWindow);
            program = link();
            picture = GLES20.glGetUniformLocation(program, "picture");
        } catch (ParallaxException e) {
            close();
            throw e;
        }
    }

    /** The longest side of a texture, in pixels. */
    int largestTexture() {
        int[] side = new int[1];
        GLES20.glGetIntegerv(GLES20.GL_MAX_TEXTURE_SIZE, side, 0);
        return side[0];
    }

    /**
     * Fills the surface of width x height pixels with a texture.
     *
     * @throws ParallaxException when the context was lost or the surface has gone
     */
    void show(int texture, int width, int height) {
        GLES20.glBindFramebuffer(GLES20.GL_FRAMEBUFFER, 0);
        GLES20.glViewport(0, 0, width, height);
        GLES20.glDisable(GLES20.GL_DEPTH_TEST);
        GLES20.glUseProgram(program);
        GLES20.glActiveTexture(GLES20.GL_TEXTURE0);
        GLES20.glBindTexture(GLES20.GL_TEXTURE_2D, texture);
        GLES20.glUniform1i(picture, 0);
        GLES20.glBindBuffer(GLES20.GL_ARRAY_BUFFER, 0);
        corners.rewind();
        GLES20.glVertexAttribPointer(0, 2, GLES20.GL_FLOAT, false, 0, corners);
        GLES20.glEnableVertexAttribArray(0);
        GLES20.glDrawArrays(GLES20.GL_TRIANGLE_STRIP, 0, 4);
        if (!EGL14.eglSwapBuffers(display, surface)) {
            throw failed("eglSwapBuffers");
        }
    }

    /**
     * Shows on the same window in its new size from now on; all that was made in the context stays.
     *
     * @throws ParallaxException where the driver refuses
     */
    void resized(Object nativeWindow) {
        EGL14.eglMakeCurrent(
                display, EGL14.EGL_NO_SURFACE, EGL14.EGL_NO_SURFACE, EGL14.EGL_NO_CONTEXT);
        // A window has one at a time.
        EGL14.eglDestroySurface(display, surface);
        surface = EGL14.EGL_NO_SURFACE;
        makeSurface(nativeWindow);
    }

    /** Destroys the context and all that was made in it. */
    @Override
    public void close() {
        if (display == EGL14.EGL_NO_DISPLAY) {
            return;
        }
        EGL14.eglMakeCurrent(
                display, EGL14.EGL_NO_SURFACE, EGL14.EGL_NO_SURFACE, EGL14.EGL_NO_CONTEXT);
        if (surface != EGL14.EGL_NO_SURFACE) {
            EGL14.eglDestroySurface(display, surface);
        }
        if (context != EGL14.EGL_NO_CONTEXT) {
            EGL14.eglDestroyContext(display, context);
        }
        EGL14.eglReleaseThread();
        EGL14.eglTerminate(display);
        display = EGL14.EGL_NO_DISPLAY;
    }

    private void open(Object nativeWindow) {
        display = EGL14.eglGetDisplay(EGL14.EGL_DEFAULT_DISPLAY);
        int[] version = new int[2];
        if (display == EGL14.EGL_NO_DISPLAY
                || !EGL14.eglInitialize(display, version, 0, version, 1)) {
            throw failed("eglInitialize");
        }
        int[] wanted = {
            EGL14.EGL_RENDERABLE_TYPE, EGL14.EGL_OPENGL_ES2_BIT,
            EGL14.EGL_SURFACE_TYPE, EGL14.EGL_WINDOW_BIT,
            EGL14.EGL_RED_SIZE, 8, EGL14.EGL_GREEN_SIZE, 8, EGL14.EGL_BLUE_SIZE, 8,
            EGL14.EGL_NONE};
        EGLConfig[] configs = new EGLConfig[256];
        int[] found = new int[1];
        if (!EGL14.eglChooseConfig(display, wanted, 0, configs, 0, configs.length, found, 0)
                || found[0] < 1) {
            throw failed("eglChooseConfig");
        }
        config = plainest(configs, found[0]);
        int[] es2 = {EGL14.EGL_CONTEXT_CLIENT_VERSION, 2, EGL14.EGL_NONE};
        context = EGL14.eglCreateContext(display, config, EGL14.EGL_NO_CONTEXT, es2, 0);
        if (context == EGL14.EGL_NO_CONTEXT) {
            throw failed("eglCreateContext");
        }
        makeSurface(nativeWindow);
    }

    // EGL puts deeper colours first, which cost more and which some drivers show wrongly.
    private EGLConfig plainest(EGLConfig[] configs, int count) {
        int[] rest = {EGL14.EGL_DEPTH_SIZE, EGL14.EGL_STENCIL_SIZE, EGL14.EGL_SAMPLES};
        for (int i = 0; i < count; ++i) {
            boolean plain = attribute(configs[i], EGL14.EGL_RED_SIZE) == 8
                    && attribute(configs[i], EGL14.EGL_GREEN_SIZE) == 8
                    && attribute(configs[i], EGL14.EGL_BLUE_SIZE) == 8
                    && attribute(configs[i], EGL14.EGL_ALPHA_SIZE) % 8 == 0
                    && attribute(configs[i], EGL14.EGL_CONFIG_CAVEAT) == EGL14.EGL_NONE;
            for (int name : rest) {
                plain &= attribute(configs[i], name) == 0;
            }
            if (plain) {
                return configs[i];
            }
        }
        return configs[0];
    }

    private int attribute(EGLConfig of, int name) {
        int[] value = new int[1];
        EGL14.eglGetConfigAttrib(display, of, name, value, 0);
        return value[0];
    }

    private void makeSurface(Object nativeWindow) {
        try {
            surface = EGL14.eglCreateWindowSurface(
                    display, config, nativeWindow, new int[] {EGL14.EGL_NONE}, 0);
        } catch (IllegalArgumentException e) {
            throw new ParallaxException("the view's surface has gone");
        }
        if (surface == EGL14.EGL_NO_SURFACE) {
            throw failed("eglCreateWindowSurface");
        }
        if (!EGL14.eglMakeCurrent(display, surface, surface, context)) {
            throw failed("eglMakeCurrent");
        }
    }

    private static int link() {
        int program = GLES20.glCreateProgram();
        attach(program, GLES20.GL_VERTEX_SHADER, VERTEX_SHADER);
        attach(program, GLES20.GL_FRAGMENT_SHADER, FRAGMENT_SHADER);
        GLES20.glBindAttribLocation(program, 0, "position");
        GLES20.glLinkProgram(program);
        int[] linked = new int[1];
        GLES20.glGetProgramiv(program, GLES20.GL_LINK_STATUS, linked, 0);
        if (linked[0] == 0) {
            throw new ParallaxException(
                    "the graphics driver cannot link the program that shows the picture: "
                            + GLES20.glGetProgramInfoLog(program));
        }
        return program;
    }

    private static void attach(int program, int kind, String source) {
        int shader = GLES20.glCreateShader(kind);
        GLES20.glShaderSource(shader, source);
        GLES20.glCompileShader(shader);
        GLES20.glAttachShader(program, shader);
        // It lives on as long as the program.
        GLES20.glDeleteShader(shader);
    }

    private static ParallaxException failed(String call) {
        return new ParallaxException("the graphics driver cannot show the picture (" + call
                + ", EGL error 0x" + Integer.toHexString(EGL14.eglGetError()) + ")");
    }
}
