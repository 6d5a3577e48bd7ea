// ParallaxView in an OpenGL ES 3 context whose app has set everything there is to set: picture and bytes
// stay.

#include <GLES3/gl32.h>
// After gl32.h, which it extends.
#include <GLES2/gl2ext.h>

#include <functional>

#include "host_test.h"

namespace quorvane::test {
namespace {

// Odd, so that no alignment fits a row by chance.
constexpr int kWidth = 47, kHeight = 33;
constexpr int kPhoto = 63;
constexpr int kDepth = 4 * kPhoto;

/// Objects of the app's, made when first asked for and left to their context.
class App {
  public:
    GLuint buffer(GLsizeiptr bytes = 16) {
        GLuint name = 0;
        glGenBuffers(1, &name);
        glBindBuffer(GL_COPY_WRITE_BUFFER, name);
        const Bytes content(static_cast<size_t>(bytes), 0x5c);
        glBufferData(GL_COPY_WRITE_BUFFER, bytes, content.data(), GL_STATIC_DRAW);
        glBindBuffer(GL_COPY_WRITE_BUFFER, 0);
        return name;
    }

    GLuint texture(GLenum target) {
        GLuint name = 0;
        glGenTextures(1, &name);
        glBindTexture(target, name);
        return name;
    }

    /// A sampler that would show: no filter, repeated, and for depth comparison only.
    GLuint sampler() {
        if (m_sampler != 0) return m_sampler;
        glGenSamplers(1, &m_sampler);
        glSamplerParameteri(m_sampler, GL_TEXTURE_MIN_FILTER, GL_NEAREST_MIPMAP_NEAREST);
        glSamplerParameteri(m_sampler, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glSamplerParameteri(m_sampler, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glSamplerParameteri(m_sampler, GL_TEXTURE_WRAP_T, GL_MIRRORED_REPEAT);
        glSamplerParameterf(m_sampler, GL_TEXTURE_MIN_LOD, 4.0f);
        return m_sampler;
    }

    /// A vertex array object with everything in it.
    GLuint vertexArray() {
        if (m_vertex_array != 0) return m_vertex_array;
        glGenVertexArrays(1, &m_vertex_array);
        glBindVertexArray(m_vertex_array);
        fillVertexArray();
        element_buffer = buffer();
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, element_buffer);
        glBindVertexArray(0);
        return m_vertex_array;
    }

    /// Switches all arrays of the vertex array object that is bound on, with too little in each.
    void fillVertexArray() {
        const GLuint small = buffer(8);
        glBindBuffer(GL_ARRAY_BUFFER, small);
        for (GLuint i = 0; i < 16; ++i) {
            glVertexAttribIPointer(i, 1, GL_INT, 4, nullptr);
            glEnableVertexAttribArray(i);
            glVertexAttribDivisor(i, i + 1);
        }
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    }

    /// A program with a varying to be captured.
    GLuint program() {
        if (m_program != 0) return m_program;
        const auto shader = [](GLenum type, const char* text) {
            const GLuint name = glCreateShader(type);
            glShaderSource(name, 1, &text, nullptr);
            glCompileShader(name);
            return name;
        };
        m_program = glCreateProgram();
        glAttachShader(m_program,
                       shader(GL_VERTEX_SHADER,
                              "#version 300 es\nout vec4 caught;\n"
                              "void main() { caught = vec4(1); gl_Position = vec4(0, 0, 0, 1); }"));
        glAttachShader(m_program, shader(GL_FRAGMENT_SHADER,
                                         "#version 300 es\nout lowp vec4 c;\nvoid main() { c = vec4(1); }"));
        const char* varying = "caught";
        glTransformFeedbackVaryings(m_program, 1, &varying, GL_INTERLEAVED_ATTRIBS);
        glLinkProgram(m_program);
        return m_program;
    }

    void beginTransformFeedback() {
        GLint active = 0, paused = 0;
        glGetIntegerv(GL_TRANSFORM_FEEDBACK_ACTIVE, &active);
        glGetIntegerv(GL_TRANSFORM_FEEDBACK_PAUSED, &paused);
        if (active != 0 && paused == 0) return;
        glUseProgram(program());
        if (paused != 0) return glResumeTransformFeedback();
        captured = buffer(4096);
        glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, captured);
        glBeginTransformFeedback(GL_TRIANGLES);
    }

    void beginQuery(GLenum target) {
        GLint running = 0;
        glGetQueryiv(target, GL_CURRENT_QUERY, &running);
        if (running != 0) return;
        GLuint query = 0;
        glGenQueries(1, &query);
        glBeginQuery(target, query);
    }

    /// A framebuffer with a texture of 4 x 4 pixels.
    GLuint framebuffer() {
        GLint unit = 0;
        glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        glActiveTexture(GL_TEXTURE7);
        const GLuint colour = texture(GL_TEXTURE_2D);
        glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, 4, 4);
        glActiveTexture(static_cast<GLenum>(unit));
        GLuint name = 0;
        glGenFramebuffers(1, &name);
        glBindFramebuffer(GL_FRAMEBUFFER, name);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, colour, 0);
        return name;
    }

    GLuint captured = 0, element_buffer = 0;

  private:
    GLuint m_sampler = 0, m_vertex_array = 0, m_program = 0;
};

/// One thing that an app may have done. `set` is called anew before every call of the view.
struct AppState {
    const char* name;
    std::function<void(App&)> set;
    const char* extension = "";  ///< that it takes
};

AppState pixelStore(const char* name, GLenum parameter, GLint value, const char* extension = "") {
    return {name, [=](App&) { glPixelStorei(parameter, value); }, extension};
}

AppState enabled(const char* name, GLenum capability, const char* extension = "") {
    return {name, [=](App&) { glEnable(capability); }, extension};
}

AppState boundBuffer(const char* name, GLenum target, GLsizeiptr bytes = 16) {
    return {name, [=](App& app) { glBindBuffer(target, app.buffer(bytes)); }};
}

AppState indexedBuffer(const char* name, GLenum target) {
    return {name, [=](App& app) { glBindBufferBase(target, 0, app.buffer()); }};
}

AppState runningQuery(const char* name, GLenum target) {
    return {name, [=](App& app) { app.beginQuery(target); }};
}

/// The state tables of OpenGL ES 3.2, in their order, and the extensions that add to them.
const std::vector<AppState>& appStates() {
    static const std::vector<AppState> states = {
        // Vertex arrays
        {"arrays of the default vertex array object, with divisors",
         [](App& app) {
             glBindVertexArray(0);
             app.fillVertexArray();
         }},
        {"divisors alone",
         [](App&) {
             for (GLuint i = 0; i < 16; ++i) glVertexAttribDivisor(i, 1);
         }},
        {"a vertex array object with attributes at other binding points",
         [](App& app) {
             glBindVertexArray(app.vertexArray());
             for (GLuint i = 0; i < 16; ++i) {
                 glVertexAttribFormat(i, 2, GL_BYTE, GL_TRUE, 16);
                 glVertexAttribBinding(i, 15 - i);
                 glBindVertexBuffer(i, app.buffer(), 4, 8);
                 glVertexBindingDivisor(i, 3);
             }
         }},
        {"a vertex array object", [](App& app) { glBindVertexArray(app.vertexArray()); }},
        {"attributes without arrays",
         [](App&) {
             for (GLuint i = 0; i < 16; ++i) glVertexAttrib4f(i, 9, 9, 9, 9);
         }},
        boundBuffer("an array buffer", GL_ARRAY_BUFFER),
        boundBuffer("an element array buffer", GL_ELEMENT_ARRAY_BUFFER),
        enabled("primitive restart", GL_PRIMITIVE_RESTART_FIXED_INDEX),
        {"patch vertices", [](App&) { glPatchParameteri(GL_PATCH_VERTICES, 7); }},
        {"a primitive bounding box", [](App&) { glPrimitiveBoundingBox(5, 5, 5, 1, 6, 6, 6, 1); }},

        // Buffers
        boundBuffer("a copy read buffer", GL_COPY_READ_BUFFER),
        boundBuffer("a copy write buffer", GL_COPY_WRITE_BUFFER),
        boundBuffer("a pixel pack buffer that is too small", GL_PIXEL_PACK_BUFFER),
        boundBuffer("a pixel pack buffer", GL_PIXEL_PACK_BUFFER, 1 << 20),
        boundBuffer("a pixel unpack buffer that is too small", GL_PIXEL_UNPACK_BUFFER),
        boundBuffer("a pixel unpack buffer", GL_PIXEL_UNPACK_BUFFER, 1 << 20),
        indexedBuffer("a uniform buffer", GL_UNIFORM_BUFFER),
        indexedBuffer("a transform feedback buffer", GL_TRANSFORM_FEEDBACK_BUFFER),
        indexedBuffer("an atomic counter buffer", GL_ATOMIC_COUNTER_BUFFER),
        indexedBuffer("a shader storage buffer", GL_SHADER_STORAGE_BUFFER),
        boundBuffer("a draw indirect buffer", GL_DRAW_INDIRECT_BUFFER),
        boundBuffer("a dispatch indirect buffer", GL_DISPATCH_INDIRECT_BUFFER),
        boundBuffer("a texture buffer", GL_TEXTURE_BUFFER),

        // Transformation and rasterization
        {"the viewport", [](App&) { glViewport(3, 4, 5, 6); }},
        {"the depth range", [](App&) { glDepthRangef(0.9f, 0.2f); }},
        enabled("discarded primitives", GL_RASTERIZER_DISCARD),
        {"the line width", [](App&) { glLineWidth(4); }},
        {"culling of front faces",
         [](App&) {
             glEnable(GL_CULL_FACE);
             glCullFace(GL_FRONT_AND_BACK);
             glFrontFace(GL_CW);
         }},
        {"a polygon offset",
         [](App&) {
             glEnable(GL_POLYGON_OFFSET_FILL);
             glPolygonOffset(100, 100);
         }},
        {"clipping to a depth of 0 to 1 and turned around",
         [](App&) {
             const auto control =
                 reinterpret_cast<PFNGLCLIPCONTROLEXTPROC>(eglGetProcAddress("glClipControlEXT"));
             control(GL_UPPER_LEFT_EXT, GL_ZERO_TO_ONE_EXT);
         },
         "GL_EXT_clip_control"},
        {"clip distances",
         [](App&) {
             for (GLenum i = 0; i < 8; ++i) glEnable(GL_CLIP_DISTANCE0_EXT + i);
         },
         "GL_EXT_clip_cull_distance"},
        enabled("clamped depths", GL_DEPTH_CLAMP_EXT, "GL_EXT_depth_clamp"),

        // Multisampling
        enabled("alpha as coverage", GL_SAMPLE_ALPHA_TO_COVERAGE),
        {"sample coverage",
         [](App&) {
             glEnable(GL_SAMPLE_COVERAGE);
             glSampleCoverage(0, GL_FALSE);
         }},
        {"a sample mask",
         [](App&) {
             glEnable(GL_SAMPLE_MASK);
             glSampleMaski(0, 0);
         }},
        {"no multisampling", [](App&) { glDisable(GL_MULTISAMPLE_EXT); }, "GL_EXT_multisample_compatibility"},
        {"sample shading",
         [](App&) {
             glEnable(GL_SAMPLE_SHADING);
             glMinSampleShading(1);
         }},

        // Textures and samplers
        {"another texture unit", [](App&) { glActiveTexture(GL_TEXTURE9); }},
        {"textures of every kind on every unit",
         [](App& app) {
             for (GLenum unit = 0; unit < 16; ++unit) {
                 glActiveTexture(GL_TEXTURE0 + unit);
                 for (const GLenum target :
                      {GL_TEXTURE_2D, GL_TEXTURE_3D, GL_TEXTURE_2D_ARRAY, GL_TEXTURE_CUBE_MAP,
                       GL_TEXTURE_CUBE_MAP_ARRAY, GL_TEXTURE_2D_MULTISAMPLE, GL_TEXTURE_BUFFER})
                     app.texture(target);
             }
         }},
        {"a sampler on unit 0", [](App& app) { glBindSampler(0, app.sampler()); }},
        {"a sampler on unit 1", [](App& app) { glBindSampler(1, app.sampler()); }},
        {"a sampler on unit 2", [](App& app) { glBindSampler(2, app.sampler()); }},
        {"images on every image unit",
         [](App& app) {
             glActiveTexture(GL_TEXTURE8);
             const GLuint image = app.texture(GL_TEXTURE_2D);
             glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, 4, 4);
             for (GLuint unit = 0; unit < 4; ++unit)
                 glBindImageTexture(unit, image, 0, GL_FALSE, 0, GL_READ_ONLY, GL_RGBA8);
         }},

        // Fragments
        {"a scissor",
         [](App&) {
             glEnable(GL_SCISSOR_TEST);
             glScissor(0, 0, 2, 2);
         }},
        {"a stencil test",
         [](App&) {
             glEnable(GL_STENCIL_TEST);
             glStencilFunc(GL_NEVER, 1, 0xff);
             glStencilOp(GL_ZERO, GL_INVERT, GL_INCR);
             glStencilMask(0x0f);
         }},
        {"a depth test that fails",
         [](App&) {
             glEnable(GL_DEPTH_TEST);
             glDepthFunc(GL_NEVER);
         }},
        {"no depth test", [](App&) { glDisable(GL_DEPTH_TEST); }},
        {"no writing of depths", [](App&) { glDepthMask(GL_FALSE); }},
        {"blending",
         [](App&) {
             glEnable(GL_BLEND);
             glBlendFuncSeparate(GL_ZERO, GL_CONSTANT_COLOR, GL_ONE, GL_ONE);
             glBlendEquation(GL_FUNC_REVERSE_SUBTRACT);
             glBlendColor(1, 0, 1, 0);
         }},
        {"blending of one draw buffer",
         [](App&) {
             glEnablei(GL_BLEND, 0);
             glBlendFunci(0, GL_ZERO, GL_ZERO);
             glBlendEquationi(0, GL_MIN);
         }},
        {"no dithering", [](App&) { glDisable(GL_DITHER); }},
        {"no writing of some colours", [](App&) { glColorMask(GL_FALSE, GL_TRUE, GL_FALSE, GL_TRUE); }},
        {"no writing of colours into one draw buffer",
         [](App&) { glColorMaski(0, GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE); }},
        {"what clearing leaves",
         [](App&) {
             glClearColor(1, 1, 0, 0.5f);
             glClearDepthf(0);
             glClearStencil(7);
         }},
        {"no sRGB writing", [](App&) { glDisable(GL_FRAMEBUFFER_SRGB_EXT); }, "GL_EXT_sRGB_write_control"},

        // Framebuffers
        {"the default framebuffer", [](App&) { glBindFramebuffer(GL_FRAMEBUFFER, 0); }},
        {"a framebuffer", [](App& app) { app.framebuffer(); }},
        {"a framebuffer to read from",
         [](App& app) {
             const GLuint read = app.framebuffer();
             glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
             glBindFramebuffer(GL_READ_FRAMEBUFFER, read);
         }},
        {"no draw buffers of the framebuffer that is bound",
         [](App&) {
             GLint bound = 0;
             glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &bound);
             const GLenum none = GL_NONE;
             if (bound != 0) glDrawBuffers(1, &none);
         }},
        {"no read buffer of the framebuffer that is bound",
         [](App&) {
             GLint bound = 0;
             glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &bound);
             if (bound != 0) glReadBuffer(GL_NONE);
         }},
        {"a renderbuffer",
         [](App&) {
             GLuint name = 0;
             glGenRenderbuffers(1, &name);
             glBindRenderbuffer(GL_RENDERBUFFER, name);
         }},

        // Pixels
        pixelStore("unpack alignment", GL_UNPACK_ALIGNMENT, 8),
        pixelStore("unpack row length", GL_UNPACK_ROW_LENGTH, 1000),
        pixelStore("unpack image height", GL_UNPACK_IMAGE_HEIGHT, 7),
        pixelStore("unpack skip rows", GL_UNPACK_SKIP_ROWS, 3),
        pixelStore("unpack skip pixels", GL_UNPACK_SKIP_PIXELS, 5),
        pixelStore("unpack skip images", GL_UNPACK_SKIP_IMAGES, 2),
        pixelStore("pack alignment", GL_PACK_ALIGNMENT, 8),
        pixelStore("pack row length", GL_PACK_ROW_LENGTH, 61),
        pixelStore("pack skip rows", GL_PACK_SKIP_ROWS, 3),
        pixelStore("pack skip pixels", GL_PACK_SKIP_PIXELS, 5),
        pixelStore("pack from the bottom", GL_PACK_REVERSE_ROW_ORDER_ANGLE, 1,
                   "GL_ANGLE_pack_reverse_row_order"),

        // Programs
        {"a program", [](App& app) { glUseProgram(app.program()); }},
        {"a program pipeline",
         [](App&) {
             GLuint name = 0;
             glGenProgramPipelines(1, &name);
             glBindProgramPipeline(name);
         }},

        // Queries and transform feedback
        runningQuery("an occlusion query", GL_ANY_SAMPLES_PASSED),
        runningQuery("a conservative occlusion query", GL_ANY_SAMPLES_PASSED_CONSERVATIVE),
        runningQuery("a query of captured primitives", GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN),
        runningQuery("a query of primitives", GL_PRIMITIVES_GENERATED),
        {"transform feedback", [](App& app) { app.beginTransformFeedback(); }},
        {"transform feedback that is paused",
         [](App& app) {
             app.beginTransformFeedback();
             glPauseTransformFeedback();
         }},

        // The rest
        {"hints",
         [](App&) {
             glHint(GL_GENERATE_MIPMAP_HINT, GL_FASTEST);
             glHint(GL_FRAGMENT_SHADER_DERIVATIVE_HINT, GL_FASTEST);
         }},
        {"debug output",
         [](App&) {
             glEnable(GL_DEBUG_OUTPUT);
             glEnable(GL_DEBUG_OUTPUT_SYNCHRONOUS);
         }},
    };
    return states;
}

class AppStateTest : public DriverTest {
  protected:
    void SetUp() override {
        DriverTest::SetUp();
        if (IsSkipped()) return;
        GLint major = 0, minor = 0;
        glGetIntegerv(GL_MAJOR_VERSION, &major);
        glGetIntegerv(GL_MINOR_VERSION, &minor);
        if (10 * major + minor < 32)
            GTEST_SKIP() << "NO OPENGL ES 3.2, NOT TESTED: " << glGetString(GL_VERSION);
    }

    /// A picture of a whole life, in a context of its own; the app does `set` before each call.
    Bytes pictureOf(const std::function<void(App&)>& set, int samples = 1) {
        context.reset();
        EXPECT_TRUE(OffscreenContext::create(&context).ok());
        App app;
        const auto call = [&](auto action) {
            set(app);
            EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR)) << "the app's own calls";
            const OutputToTimeline output;
            const Status status = action();
            EXPECT_EQ(sentence(status), "succeeded");
            return status.ok();
        };
        constexpr size_t kPicture = size_t{4} * kWidth * kHeight;
        constexpr size_t kBehind = 1 << 16;
        Bytes pixels(kPicture + kBehind, 0xcd);
        std::unique_ptr<ParallaxView> view;
        const bool drawn = call([&] {
                               return ParallaxView::create(20, 30, ViewOptions{4, samples}, &view);
                           }) &&
                           call([&] {
                               return view->setPhoto({photo, kPhoto, kPhoto});
                           }) &&
                           call([&] {
                               return view->setDepth({depth, kDepth, kDepth});
                           }) &&
                           call([&] { return view->resize(kWidth, kHeight); }) &&
                           call([&] { return view->lookAt(0.7f, -0.4f); }) &&
                           call([&] { return view->render(); }) && call([&] { return view->render(); }) &&
                           call([&] {
                               return view->readPixels({pixels.data(), kPicture, kWidth, kHeight});
                           });
        if (!drawn) return {};
        EXPECT_EQ(Bytes(pixels.begin() + kPicture, pixels.end()), Bytes(kBehind, 0xcd))
            << "written past the end";
        pixels.resize(kPicture);
        set(app);
        view.reset();
        return pixels;
    }

    static bool hasExtension(const std::string& name) {
        GLint count = 0;
        glGetIntegerv(GL_NUM_EXTENSIONS, &count);
        for (GLint i = 0; i < count; ++i)
            if (name == reinterpret_cast<const char*>(glGetStringi(GL_EXTENSIONS, static_cast<GLuint>(i))))
                return true;
        return false;
    }

    const Bytes photo = noise(kPhoto * kPhoto * 3, 1);
    const Bytes depth = noise(kDepth * kDepth, 2);
};

TEST_F(AppStateTest, NoStateOfTheAppChangesThePicture) {
    for (const int samples : {1, 4}) {
        const Bytes wanted = pictureOf([](App&) {}, samples);
        ASSERT_FALSE(wanted.empty());
        for (const AppState& state : appStates()) {
            SCOPED_TRACE(state.name);
            if (*state.extension != '\0' && !hasExtension(state.extension)) continue;
            EXPECT_TRUE(pictureOf(state.set, samples) == wanted) << "another picture of " << samples;
        }
    }
}

TEST_F(AppStateTest, AllStatesTogetherChangeNoPicture) {
    std::vector<const AppState*> usable;
    for (const AppState& state : appStates())
        if (*state.extension == '\0' || hasExtension(state.extension)) usable.push_back(&state);
    // Transform feedback allows no other program, and one kind of occlusion query not the other.
    const auto excludes = [](const AppState* state) {
        const std::string name = state->name;
        return name.rfind("transform feedback", 0) == 0 || name == "a conservative occlusion query";
    };
    const auto setAll = [&](App& app) {
        for (const AppState* state : usable)
            if (!excludes(state)) state->set(app);
    };
    for (const int samples : {1, 4})
        EXPECT_TRUE(pictureOf(setAll, samples) == pictureOf([](App&) {}, samples)) << samples;
}

TEST_F(AppStateTest, WhatTheClassDoesNotNameStays) {
    App app;
    const auto set = [&app] {
        glBlendFuncSeparate(GL_ZERO, GL_DST_COLOR, GL_SRC_ALPHA, GL_ONE);
        glBlendEquationSeparate(GL_MIN, GL_MAX);
        glBlendColor(0.25f, 0.5f, 0.75f, 1);
        glScissor(1, 2, 3, 4);
        glStencilFunc(GL_GREATER, 3, 0x7f);
        glStencilOp(GL_INVERT, GL_INCR, GL_DECR);
        glStencilMask(0x3f);
        glSampleCoverage(0.5f, GL_TRUE);
        glLineWidth(2);
        glCullFace(GL_FRONT);
        glFrontFace(GL_CW);
        glPolygonOffset(3, 4);
        glDisable(GL_DITHER);
        glEnable(GL_PRIMITIVE_RESTART_FIXED_INDEX);
        glPixelStorei(GL_UNPACK_IMAGE_HEIGHT, 9);
        glPixelStorei(GL_UNPACK_SKIP_IMAGES, 2);
        for (const GLenum target : {GL_COPY_READ_BUFFER, GL_COPY_WRITE_BUFFER, GL_UNIFORM_BUFFER,
                                    GL_TRANSFORM_FEEDBACK_BUFFER, GL_SHADER_STORAGE_BUFFER})
            glBindBuffer(target, app.buffer());
        for (GLuint unit = 0; unit < 8; ++unit) {
            glActiveTexture(GL_TEXTURE0 + unit);
            app.texture(GL_TEXTURE_2D);
            app.texture(GL_TEXTURE_3D);
            glBindSampler(unit, app.sampler());
        }
        glBindVertexArray(app.vertexArray());
    };
    constexpr GLenum kKept[] = {GL_BLEND_SRC_RGB,
                                GL_BLEND_DST_RGB,
                                GL_BLEND_SRC_ALPHA,
                                GL_BLEND_DST_ALPHA,
                                GL_BLEND_EQUATION_RGB,
                                GL_BLEND_EQUATION_ALPHA,
                                GL_BLEND_COLOR,
                                GL_SCISSOR_BOX,
                                GL_STENCIL_FUNC,
                                GL_STENCIL_REF,
                                GL_STENCIL_VALUE_MASK,
                                GL_STENCIL_FAIL,
                                GL_STENCIL_PASS_DEPTH_FAIL,
                                GL_STENCIL_PASS_DEPTH_PASS,
                                GL_STENCIL_WRITEMASK,
                                GL_SAMPLE_COVERAGE_VALUE,
                                GL_SAMPLE_COVERAGE_INVERT,
                                GL_LINE_WIDTH,
                                GL_CULL_FACE_MODE,
                                GL_FRONT_FACE,
                                GL_POLYGON_OFFSET_FACTOR,
                                GL_POLYGON_OFFSET_UNITS,
                                GL_DITHER,
                                GL_PRIMITIVE_RESTART_FIXED_INDEX,
                                GL_UNPACK_IMAGE_HEIGHT,
                                GL_UNPACK_SKIP_IMAGES,
                                GL_COPY_READ_BUFFER_BINDING,
                                GL_COPY_WRITE_BUFFER_BINDING,
                                GL_UNIFORM_BUFFER_BINDING,
                                GL_TRANSFORM_FEEDBACK_BUFFER_BINDING,
                                GL_SHADER_STORAGE_BUFFER_BINDING};
    const auto kept = [&] {
        std::vector<float> values;
        const auto add = [&values](GLenum name) {
            GLfloat four[4] = {0, 0, 0, 0};
            glGetFloatv(name, four);
            values.insert(values.end(), four, four + 4);
        };
        for (const GLenum name : kKept) add(name);
        for (GLuint unit = 0; unit < 8; ++unit) {
            glActiveTexture(GL_TEXTURE0 + unit);
            add(GL_TEXTURE_BINDING_3D);
            if (unit > 2) add(GL_TEXTURE_BINDING_2D);
            if (unit != 1 && unit != 2) add(GL_SAMPLER_BINDING);
        }
        glBindVertexArray(app.vertexArray());
        add(GL_ELEMENT_ARRAY_BUFFER_BINDING);
        for (GLuint i = 0; i < 16; ++i)
            for (const GLenum name : {GL_VERTEX_ATTRIB_ARRAY_ENABLED, GL_VERTEX_ATTRIB_ARRAY_DIVISOR,
                                      GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING, GL_VERTEX_ATTRIB_ARRAY_SIZE}) {
                GLint value = 0;
                glGetVertexAttribiv(i, name, &value);
                values.push_back(static_cast<float>(value));
            }
        return values;
    };
    set();
    const std::vector<float> wanted = kept();
    ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    {
        const OutputToTimeline output;
        std::unique_ptr<ParallaxView> view;
        Bytes pixels(4 * kWidth * kHeight);
        ASSERT_TRUE(ParallaxView::create(20, 30, 4, &view).ok());
        ASSERT_TRUE(view->setPhoto({photo, kPhoto, kPhoto}).ok());
        ASSERT_TRUE(view->setDepth({depth, kDepth, kDepth}).ok());
        ASSERT_TRUE(view->resize(kWidth, kHeight).ok());
        ASSERT_TRUE(view->render().ok());
        ASSERT_TRUE(view->readPixels({pixels, kWidth, kHeight}).ok());
    }
    EXPECT_EQ(kept(), wanted);
}

TEST_F(AppStateTest, NothingIsWrittenIntoTheAppsBuffers) {
    App app;
    const auto content = [](GLuint buffer) {
        glBindBuffer(GL_COPY_READ_BUFFER, buffer);
        const uint8_t* mapped =
            static_cast<const uint8_t*>(glMapBufferRange(GL_COPY_READ_BUFFER, 0, 4096, GL_MAP_READ_BIT));
        const Bytes bytes = mapped != nullptr ? Bytes(mapped, mapped + 4096) : Bytes();
        glUnmapBuffer(GL_COPY_READ_BUFFER);
        return bytes;
    };
    const GLuint pack = app.buffer(1 << 20);
    app.beginTransformFeedback();
    const OutputToTimeline output;
    std::unique_ptr<ParallaxView> view;
    Bytes pixels(4 * kWidth * kHeight);
    ASSERT_TRUE(ParallaxView::create(kWidth, kHeight, 4, &view).ok());
    ASSERT_TRUE(view->setPhoto({photo, kPhoto, kPhoto}).ok());
    ASSERT_TRUE(view->setDepth({depth, kDepth, kDepth}).ok());
    glBindBuffer(GL_PIXEL_PACK_BUFFER, pack);
    ASSERT_TRUE(view->render().ok());
    glBindBuffer(GL_PIXEL_PACK_BUFFER, pack);
    ASSERT_TRUE(view->readPixels({pixels, kWidth, kHeight}).ok());
    EXPECT_EQ(content(pack), Bytes(4096, 0x5c));

    // Paused, and goes on where it stopped.
    glUseProgram(app.program());
    glResumeTransformFeedback();
    glEndTransformFeedback();
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_EQ(content(app.captured), Bytes(4096, 0x5c));
}

}  // namespace
}  // namespace quorvane::test
