#ifndef QUORVANE_TESTS_SUPPORT_GL_RECORDER_H
#define QUORVANE_TESTS_SUPPORT_GL_RECORDER_H

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quorvane::test {

struct BufferUpload {
    GLenum target;
    GLuint buffer;
    GLenum usage;
    GLsizeiptr size;
    std::vector<uint8_t> bytes;
};

struct TextureUpload {
    GLuint texture;
    GLint level;
    GLint internal_format;
    GLsizei width, height;
    GLenum format;
    GLenum type;
    GLint unpack_alignment;
    std::vector<uint8_t> bytes;  ///< width * height pixels without row padding; empty for null data
};

struct MatrixUpload {
    GLint location;
    GLsizei count;
    GLboolean transpose;
    std::vector<float> values;
};

struct BuildResult {
    GLint status = GL_TRUE;
    std::string log;
    /// What the query for the log's length gives, instead of the log's own, terminating zero included.
    std::optional<GLint> log_length;
};

/// Defines the GL and EGL entry points that the component and its host use, and writes each call to the
/// timeline.
///
/// As a fake there is no driver: names count up from 1 over all kinds of objects, everything succeeds, and a
/// test scripts what shall not. As a recorder in front of the driver every call also goes to the system's
/// libraries; then the scripts count for nothing but `error_after` and the queue of errors.
class GlRecorder {
  public:
    enum class Mode { fake, driver };

    static GlRecorder& instance();

    /// Forgets everything, scripts included, and takes up `mode`. Does not touch the timeline.
    void reset(Mode mode = Mode::fake);
    bool fake() const { return m_mode == Mode::fake; }

    // Scripts of the fake.

    std::set<GLenum> shaders_not_created;  ///< shader types for which creation gives 0
    bool program_not_created = false;
    bool names_not_generated = false;              ///< glGen* give 0
    std::set<std::string> generating_nothing;      ///< the glGen* that alone give 0
    std::map<GLenum, BuildResult> compile_result;  ///< by shader type; success when absent
    BuildResult link_result;
    std::map<std::string, GLint> attribute_locations;
    std::map<std::string, GLint> uniform_locations;
    GLenum framebuffer_status = GL_FRAMEBUFFER_COMPLETE;
    std::map<GLenum, std::string> strings;       ///< glGetString; null when absent
    std::map<GLenum, GLint> integers;            ///< glGetIntegerv, before the tracked bindings
    std::optional<GLint> viewport_height_limit;  ///< the width's when absent
    /// Byte `i` of every read-back.
    std::function<uint8_t(size_t i)> pixel_byte;
    EGLSyncKHR created_sync = nullptr;
    EGLint wait_result = EGL_CONDITION_SATISFIED_KHR;
    EGLint egl_error = EGL_SUCCESS;
    EGLContext current_context = nullptr;

    /// Makes `error` pending now.
    void queueError(GLenum error) { m_errors.push_back(error); }
    /// Makes `error` pending after the next call of `function`, or after a later one when calls are to be
    /// left out.
    void errorAfter(const std::string& function, GLenum error, int left_out = 0) {
        m_errors_after.push_back({function, error, left_out});
    }
    size_t pendingErrors() const { return m_errors.size(); }

    // What came in.

    std::vector<BufferUpload> buffer_uploads;
    std::vector<TextureUpload> texture_uploads;
    std::vector<MatrixUpload> matrix_uploads;
    std::map<GLuint, std::string> shader_sources;
    std::map<GLuint, std::vector<GLuint>> attached_shaders;  ///< by program

    std::set<GLuint> live_textures, live_buffers, live_framebuffers, live_renderbuffers, live_programs,
        live_shaders;

    // Bindings, as the calls left them.

    GLuint current_program = 0;
    GLuint bound_framebuffer = 0;
    GLuint bound_renderbuffer = 0;
    GLenum active_texture = GL_TEXTURE0;
    std::map<GLenum, GLuint> bound_textures;  ///< 2D textures by unit
    std::map<GLenum, GLuint> bound_buffers;   ///< by target
    GLint unpack_alignment = 4;
    GLint pack_alignment = 4;
    GLint viewport[4] = {0, 0, 0, 0};
    std::set<GLenum> enabled;

    // For the entry points only.

    void noteCall(const std::string& function);
    GLenum takeError();
    GLuint newName() { return m_next_name++; }
    std::map<GLuint, GLenum> shader_types;

  private:
    Mode m_mode = Mode::fake;
    GLuint m_next_name = 1;
    std::vector<GLenum> m_errors;
    struct ErrorAfter {
        std::string function;
        GLenum error;
        int left_out;
    };
    std::vector<ErrorAfter> m_errors_after;
};

/// The display that the fake hands out.
EGLDisplay fakeDisplay();

}  // namespace quorvane::test

#endif
