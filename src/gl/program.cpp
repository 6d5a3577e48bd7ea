#include "gl/program.h"

#include <cstdlib>

#include "diagnostics/log.h"
#include "gl/error_check.h"

// clang-format off
// A vertex slides along its line of sight: x / z and y / z stay as they are. Depth 0 moves it 12.8 away from
// the camera, 255 moves it 1.2 nearer, and 32 / 35 of 255 leaves it in place.
const char gVertexShader[] =
    "attribute vec4 vPosition;                                                          \n"
    "attribute highp vec2 a_texCoord;                                                   \n"
    "varying highp vec2 v_texCoord;                                                     \n"
    "uniform mat4 mvp;                                                                  \n"
    "uniform sampler2D depthMap;                                                        \n"
    "uniform float z_limit;                                                             \n"
    "void main()                                                                        \n"
    "{                                                                                  \n"
    "    float depthValue;                                                              \n"
    "    float offset;                                                                  \n"
    "    vec4 new_position;                                                             \n"
    "    v_texCoord = a_texCoord;                                                       \n"
    "    depthValue = texture2D( depthMap, v_texCoord ).g;                              \n"
    "    offset = 0.4*(depthValue*35.0-32.0);                                           \n"
    "    new_position = vPosition;                                                      \n"
    "    new_position.xy += vPosition.xy*offset/vPosition.z;                            \n"
    "    new_position.z += offset;                                                      \n"
    "    gl_Position = mvp*(new_position);                                              \n"
    "}                                                                                  \n";

const char gFragmentShader[] =
    "precision mediump float;                                                           \n"
    "varying vec2 v_texCoord;                                                           \n"
    "uniform sampler2D s_texture;                                                       \n"
    "varying vec4 color;                                                                \n"
    "void main()                                                                        \n"
    "{                                                                                  \n"
    "    gl_FragColor = texture2D( s_texture, v_texCoord );                             \n"
    "}                                                                                  \n";
// clang-format on

namespace quorvane::gl {

GLuint loadShader(GLenum type, const char* source) {
    const GLuint shader = glCreateShader(type);
    if (shader == 0) return 0;

    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint compiled = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled != GL_FALSE) return shader;

    GLint log_length = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &log_length);
    // Without a log there is nothing to report here; linking fails then and says so.
    if (log_length == 0) return shader;

    if (char* log = static_cast<char*>(std::calloc(static_cast<size_t>(log_length), 1))) {
        glGetShaderInfoLog(shader, log_length, nullptr, log);
        LOGE("Could not compile shader %d:\n%s\n", static_cast<int>(type), log);
        std::free(log);
    }
    glDeleteShader(shader);
    return 0;
}

GLuint createProgram(const char* vertex_source, const char* fragment_source) {
    const GLuint vertex_shader = loadShader(GL_VERTEX_SHADER, vertex_source);
    if (vertex_shader == 0) return 0;
    const GLuint fragment_shader = loadShader(GL_FRAGMENT_SHADER, fragment_source);
    if (fragment_shader == 0) return 0;
    const GLuint program = glCreateProgram();
    if (program == 0) return 0;

    glAttachShader(program, vertex_shader);
    checkGlError("glAttachShader");
    glAttachShader(program, fragment_shader);
    checkGlError("glAttachShader");
    glLinkProgram(program);
    GLint linked = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (linked == GL_TRUE) return program;

    GLint log_length = 0;
    glGetProgramiv(program, GL_INFO_LOG_LENGTH, &log_length);
    if (log_length != 0) {
        if (char* log = static_cast<char*>(std::calloc(static_cast<size_t>(log_length), 1))) {
            glGetProgramInfoLog(program, log_length, nullptr, log);
            LOGE("Could not link program:\n%s\n", log);
            std::free(log);
        }
    }
    glDeleteProgram(program);
    return 0;
}

GLuint attributeLocation(GLuint program, const char* name) {
    const GLint location = glGetAttribLocation(program, name);
    checkGlError("glGetAttribLocation");
    LOGD("glGetAttribLocation(\"%s\") = %d\n", name, location);
    return static_cast<GLuint>(location);
}

GLuint uniformLocation(GLuint program, const char* name) {
    const GLint location = glGetUniformLocation(program, name);
    checkGlError("glGetUniformLocation");
    LOGD("glGetUniformLocation(\"%s\") = %d\n", name, location);
    return static_cast<GLuint>(location);
}

}  // namespace quorvane::gl
