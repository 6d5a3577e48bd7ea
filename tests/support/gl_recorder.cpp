#define EGL_EGLEXT_PROTOTYPES
#include "support/gl_recorder.h"

#include <dlfcn.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/timeline.h"

namespace quorvane::test {

GlRecorder& GlRecorder::instance() {
    static GlRecorder* recorder = new GlRecorder;
    return *recorder;
}

void GlRecorder::reset(Mode mode) {
    *this = GlRecorder();
    m_mode = mode;
    attribute_locations = {{"vPosition", 11}, {"a_texCoord", 12}};
    uniform_locations = {{"mvp", 21}, {"s_texture", 22}, {"depthMap", 23}};
    strings = {{GL_VERSION, "OpenGL ES 2.0 fake"},
               {GL_VENDOR, "nobody"},
               {GL_RENDERER, "recorder"},
               {GL_EXTENSIONS, "GL_OES_element_index_uint"}};
    integers = {{GL_MAX_TEXTURE_SIZE, 4096}};
    pixel_byte = [](size_t) { return uint8_t{0}; };
    created_sync = reinterpret_cast<EGLSyncKHR>(uintptr_t{0x5a});
    current_context = reinterpret_cast<EGLContext>(uintptr_t{0xc1});
}

void GlRecorder::noteCall(const std::string& function) {
    for (auto entry = m_errors_after.begin(); entry != m_errors_after.end();) {
        if (entry->function != function || entry->left_out-- > 0) {
            ++entry;
            continue;
        }
        m_errors.push_back(entry->error);
        entry = m_errors_after.erase(entry);
    }
}

GLenum GlRecorder::takeError() {
    if (m_errors.empty()) return GL_NO_ERROR;
    const GLenum error = m_errors.front();
    m_errors.erase(m_errors.begin());
    return error;
}

EGLDisplay fakeDisplay() { return reinterpret_cast<EGLDisplay>(uintptr_t{0xd1}); }

namespace {

GlRecorder& state() { return GlRecorder::instance(); }

// Arguments whose text needs more than their type.
struct Enum {
    GLenum value;
};
struct Bool {
    GLboolean value;
};
struct Primitive {
    GLenum value;
};
struct ClearMask {
    GLbitfield value;
};
struct Usage {
    GLenum value;
};
struct Offset {
    const void* value;
};
struct Data {
    const void* value;
};
struct Handle {
    const void* value;
};
struct Names {
    GLsizei count;
    const GLuint* names;
};
struct Timeout {
    EGLTimeKHR value;
};

#define NAMED(name) \
    case name: return #name

std::string toText(Enum e) {
    switch (e.value) {
        NAMED(GL_TEXTURE_2D);
        NAMED(GL_TEXTURE0);
        NAMED(GL_TEXTURE1);
        NAMED(GL_TEXTURE2);
        NAMED(GL_TEXTURE3);
        NAMED(GL_TEXTURE_WRAP_S);
        NAMED(GL_TEXTURE_WRAP_T);
        NAMED(GL_TEXTURE_MIN_FILTER);
        NAMED(GL_TEXTURE_MAG_FILTER);
        NAMED(GL_CLAMP_TO_EDGE);
        NAMED(GL_REPEAT);
        NAMED(GL_LINEAR);
        NAMED(GL_NEAREST);
        NAMED(GL_RGB);
        NAMED(GL_RGBA);
        NAMED(GL_LUMINANCE);
        NAMED(GL_UNSIGNED_BYTE);
        NAMED(GL_UNSIGNED_SHORT);
        NAMED(GL_UNSIGNED_INT);
        NAMED(GL_FLOAT);
        NAMED(GL_UNPACK_ALIGNMENT);
        NAMED(GL_PACK_ALIGNMENT);
        NAMED(GL_ARRAY_BUFFER);
        NAMED(GL_ELEMENT_ARRAY_BUFFER);
        NAMED(GL_FRAMEBUFFER);
        NAMED(GL_RENDERBUFFER);
        NAMED(GL_COLOR_ATTACHMENT0);
        NAMED(GL_DEPTH_ATTACHMENT);
        NAMED(GL_DEPTH_COMPONENT16);
        NAMED(GL_FRAMEBUFFER_COMPLETE);
        NAMED(GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT);
        NAMED(GL_FRAMEBUFFER_INCOMPLETE_MISSING_ATTACHMENT);
        NAMED(GL_FRAMEBUFFER_UNSUPPORTED);
        NAMED(GL_VERTEX_SHADER);
        NAMED(GL_FRAGMENT_SHADER);
        NAMED(GL_COMPILE_STATUS);
        NAMED(GL_LINK_STATUS);
        NAMED(GL_INFO_LOG_LENGTH);
        NAMED(GL_DEPTH_TEST);
        NAMED(GL_SCISSOR_TEST);
        NAMED(GL_BLEND);
        NAMED(GL_CULL_FACE);
        NAMED(GL_DITHER);
        NAMED(GL_LEQUAL);
        NAMED(GL_LESS);
        NAMED(GL_ALWAYS);
        NAMED(GL_VERSION);
        NAMED(GL_VENDOR);
        NAMED(GL_RENDERER);
        NAMED(GL_EXTENSIONS);
        NAMED(GL_MAX_TEXTURE_SIZE);
        NAMED(EGL_SYNC_FENCE_KHR);
        default: break;
    }
    char hex[16];
    std::snprintf(hex, sizeof hex, "0x%x", e.value);
    return hex;
}

std::string toText(Primitive p) {
    switch (p.value) {
        NAMED(GL_POINTS);
        NAMED(GL_LINES);
        NAMED(GL_TRIANGLES);
        NAMED(GL_TRIANGLE_STRIP);
        NAMED(GL_TRIANGLE_FAN);
        default: return toText(Enum{p.value});
    }
}

std::string toText(Usage u) {
    switch (u.value) {
        NAMED(GL_STATIC_DRAW);
        NAMED(GL_DYNAMIC_DRAW);
        NAMED(GL_STREAM_DRAW);
        default: return toText(Enum{u.value});
    }
}

#undef NAMED

std::string toText(Bool b) { return b.value == GL_FALSE ? "GL_FALSE" : "GL_TRUE"; }
std::string toText(int number) { return std::to_string(number); }
std::string toText(unsigned number) { return std::to_string(number); }
std::string toText(long number) { return std::to_string(number); }
std::string toText(const char* text) { return text; }

std::string toText(float number) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(number));
    return text;
}

std::string toText(ClearMask mask) {
    std::string text;
    const auto add = [&](GLbitfield bit, const char* name) {
        if ((mask.value & bit) != 0) text += (text.empty() ? "" : "|") + std::string(name);
    };
    add(GL_COLOR_BUFFER_BIT, "GL_COLOR_BUFFER_BIT");
    add(GL_DEPTH_BUFFER_BIT, "GL_DEPTH_BUFFER_BIT");
    add(GL_STENCIL_BUFFER_BIT, "GL_STENCIL_BUFFER_BIT");
    return text.empty() ? "0" : text;
}

std::string toText(Offset offset) {
    return "offset " + std::to_string(reinterpret_cast<uintptr_t>(offset.value));
}

std::string toText(Data data) { return data.value != nullptr ? "data" : "null"; }

std::string toText(Handle handle) {
    char hex[24];
    std::snprintf(hex, sizeof hex, "0x%" PRIxPTR, reinterpret_cast<uintptr_t>(handle.value));
    return hex;
}

std::string toText(Names names) {
    std::string text = "{";
    for (GLsizei i = 0; i < names.count; ++i) text += (i == 0 ? "" : ", ") + std::to_string(names.names[i]);
    return text + "}";
}

std::string toText(Timeout timeout) {
    return timeout.value == EGL_FOREVER_KHR ? "EGL_FOREVER_KHR" : std::to_string(timeout.value);
}

template <typename... Arguments>
void call(const char* name, const Arguments&... arguments) {
    std::string text;
    [[maybe_unused]] const auto add = [&](const std::string& argument) {
        text += (text.empty() ? "" : ", ") + argument;
    };
    (add(toText(arguments)), ...);
    Timeline::instance().addCall(std::string(name) + "(" + text + ")");
    state().noteCall(name);
}

template <typename Result>
void result(const Result& value) {
    Timeline::instance().addResult(toText(value));
}

void* library(const char* name) {
    void* handle = dlopen(name, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        std::fprintf(stderr, "gl_recorder: %s\n", dlerror());
        std::abort();
    }
    return handle;
}

void* symbol(const char* name) {
    static void* const gles = library("libGLESv2.so.2");
    static void* const egl = library("libEGL.so.1");
    void* found = dlsym(std::strncmp(name, "egl", 3) == 0 ? egl : gles, name);
    // The fence calls are extensions, which the library hands out instead of exporting.
    if (found == nullptr) found = reinterpret_cast<void*>(eglGetProcAddress(name));
    return found;
}

/// The driver's own function, or null while there is none.
template <typename Function>
Function* driverFunction(Function*, const char* name) {
    if (state().fake()) return nullptr;
    return reinterpret_cast<Function*>(symbol(name));
}

#define DRIVER(function) driverFunction(&function, #function)

// Names of one kind of object, made and deleted.

template <typename Generate>
void generate(const char* name, Generate* driver, GLsizei n, GLuint* names, std::set<GLuint>* live) {
    call(name, static_cast<int>(n));
    const bool none = state().names_not_generated || state().generating_nothing.count(name) != 0;
    for (GLsizei i = 0; driver == nullptr && i < n; ++i) names[i] = none ? 0 : state().newName();
    if (driver != nullptr) driver(n, names);
    live->insert(names, names + n);
    live->erase(0);
    result(Names{n, names});
}

template <typename Delete>
void remove(const char* name, Delete* driver, GLsizei n, const GLuint* names, std::set<GLuint>* live) {
    call(name, static_cast<int>(n), Names{n, names});
    for (GLsizei i = 0; i < n; ++i) live->erase(names[i]);
    if (driver != nullptr) driver(n, names);
}

BuildResult compileResult(GLuint shader) {
    const auto found = state().compile_result.find(state().shader_types[shader]);
    return found != state().compile_result.end() ? found->second : BuildResult();
}

GLint logLength(const BuildResult& build) {
    if (build.log_length) return *build.log_length;
    return build.log.empty() ? 0 : static_cast<GLint>(build.log.size()) + 1;
}

void copyLog(const std::string& log, GLsizei size, GLsizei* length, GLchar* out) {
    if (size <= 0) return;
    const size_t copied = log.copy(out, static_cast<size_t>(size) - 1);
    out[copied] = '\0';
    if (length != nullptr) *length = static_cast<GLsizei>(copied);
}

size_t pixelBytes(GLenum format) {
    switch (format) {
        case GL_RGBA: return 4;
        case GL_RGB: return 3;
        case GL_LUMINANCE_ALPHA: return 2;
        default: return 1;
    }
}

std::vector<uint8_t> tightPixels(GLsizei width, GLsizei height, GLenum format, GLenum type,
                                 const void* pixels) {
    if (pixels == nullptr || type != GL_UNSIGNED_BYTE || width <= 0 || height <= 0) return {};
    const size_t size = static_cast<size_t>(width) * static_cast<size_t>(height) * pixelBytes(format);
    const uint8_t* bytes = static_cast<const uint8_t*>(pixels);
    return {bytes, bytes + size};
}

}  // namespace
}  // namespace quorvane::test

using namespace quorvane::test;

// Errors, strings and state

GLenum glGetError() {
    call("glGetError");
    const GLenum scripted = state().takeError();
    if (scripted != GL_NO_ERROR) return scripted;
    auto* driver = DRIVER(glGetError);
    return driver != nullptr ? driver() : GLenum{GL_NO_ERROR};
}

const GLubyte* glGetString(GLenum name) {
    call("glGetString", Enum{name});
    if (auto* driver = DRIVER(glGetString)) return driver(name);
    const auto found = state().strings.find(name);
    return found != state().strings.end() ? reinterpret_cast<const GLubyte*>(found->second.c_str()) : nullptr;
}

void glGetIntegerv(GLenum name, GLint* out) {
    call("glGetIntegerv", Enum{name});
    if (auto* driver = DRIVER(glGetIntegerv)) return driver(name, out);
    GlRecorder& gl = state();
    const auto as_int = [](GLuint value) { return static_cast<GLint>(value); };
    const auto scripted = gl.integers.find(name);
    if (scripted != gl.integers.end()) {
        *out = scripted->second;
        if (name == GL_MAX_VIEWPORT_DIMS) out[1] = gl.viewport_height_limit.value_or(scripted->second);
        return;
    }
    switch (name) {
        case GL_FRAMEBUFFER_BINDING: *out = as_int(gl.bound_framebuffer); break;
        case GL_RENDERBUFFER_BINDING: *out = as_int(gl.bound_renderbuffer); break;
        case GL_CURRENT_PROGRAM: *out = as_int(gl.current_program); break;
        case GL_ACTIVE_TEXTURE: *out = as_int(gl.active_texture); break;
        case GL_TEXTURE_BINDING_2D: *out = as_int(gl.bound_textures[gl.active_texture]); break;
        case GL_ARRAY_BUFFER_BINDING: *out = as_int(gl.bound_buffers[GL_ARRAY_BUFFER]); break;
        case GL_ELEMENT_ARRAY_BUFFER_BINDING: *out = as_int(gl.bound_buffers[GL_ELEMENT_ARRAY_BUFFER]); break;
        case GL_UNPACK_ALIGNMENT: *out = gl.unpack_alignment; break;
        case GL_PACK_ALIGNMENT: *out = gl.pack_alignment; break;
        case GL_VIEWPORT: std::copy_n(gl.viewport, 4, out); break;
        default: *out = 0; break;
    }
}

void glGetBooleanv(GLenum name, GLboolean* out) {
    call("glGetBooleanv", Enum{name});
    if (auto* driver = DRIVER(glGetBooleanv)) return driver(name, out);
    *out = GL_FALSE;
}

void glGetFloatv(GLenum name, GLfloat* out) {
    call("glGetFloatv", Enum{name});
    if (auto* driver = DRIVER(glGetFloatv)) return driver(name, out);
    *out = 0.0f;
}

void glEnable(GLenum capability) {
    call("glEnable", Enum{capability});
    state().enabled.insert(capability);
    if (auto* driver = DRIVER(glEnable)) driver(capability);
}

void glDisable(GLenum capability) {
    call("glDisable", Enum{capability});
    state().enabled.erase(capability);
    if (auto* driver = DRIVER(glDisable)) driver(capability);
}

GLboolean glIsEnabled(GLenum capability) {
    call("glIsEnabled", Enum{capability});
    if (auto* driver = DRIVER(glIsEnabled)) return driver(capability);
    return state().enabled.count(capability) != 0 ? GL_TRUE : GL_FALSE;
}

void glPixelStorei(GLenum name, GLint value) {
    call("glPixelStorei", Enum{name}, value);
    if (name == GL_UNPACK_ALIGNMENT) state().unpack_alignment = value;
    if (name == GL_PACK_ALIGNMENT) state().pack_alignment = value;
    if (auto* driver = DRIVER(glPixelStorei)) driver(name, value);
}

void glFlush() {
    call("glFlush");
    if (auto* driver = DRIVER(glFlush)) driver();
}

void glFinish() {
    call("glFinish");
    if (auto* driver = DRIVER(glFinish)) driver();
}

// Drawing

void glViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
    call("glViewport", x, y, width, height);
    const GLint viewport[] = {x, y, width, height};
    std::copy_n(viewport, 4, state().viewport);
    if (auto* driver = DRIVER(glViewport)) driver(x, y, width, height);
}

void glScissor(GLint x, GLint y, GLsizei width, GLsizei height) {
    call("glScissor", x, y, width, height);
    if (auto* driver = DRIVER(glScissor)) driver(x, y, width, height);
}

void glColorMask(GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha) {
    call("glColorMask", Bool{red}, Bool{green}, Bool{blue}, Bool{alpha});
    if (auto* driver = DRIVER(glColorMask)) driver(red, green, blue, alpha);
}

void glBlendFunc(GLenum source, GLenum destination) {
    call("glBlendFunc", Enum{source}, Enum{destination});
    if (auto* driver = DRIVER(glBlendFunc)) driver(source, destination);
}

void glDepthFunc(GLenum function) {
    call("glDepthFunc", Enum{function});
    if (auto* driver = DRIVER(glDepthFunc)) driver(function);
}

void glDepthMask(GLboolean flag) {
    call("glDepthMask", Bool{flag});
    if (auto* driver = DRIVER(glDepthMask)) driver(flag);
}

void glClearColor(GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha) {
    call("glClearColor", red, green, blue, alpha);
    if (auto* driver = DRIVER(glClearColor)) driver(red, green, blue, alpha);
}

void glClearDepthf(GLfloat depth) {
    call("glClearDepthf", depth);
    if (auto* driver = DRIVER(glClearDepthf)) driver(depth);
}

void glClear(GLbitfield mask) {
    call("glClear", ClearMask{mask});
    if (auto* driver = DRIVER(glClear)) driver(mask);
}

void glDrawElements(GLenum mode, GLsizei count, GLenum type, const void* indices) {
    call("glDrawElements", Primitive{mode}, count, Enum{type}, Offset{indices});
    if (auto* driver = DRIVER(glDrawElements)) driver(mode, count, type, indices);
}

void glDrawArrays(GLenum mode, GLint first, GLsizei count) {
    call("glDrawArrays", Primitive{mode}, first, count);
    if (auto* driver = DRIVER(glDrawArrays)) driver(mode, first, count);
}

void glReadPixels(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels) {
    call("glReadPixels", x, y, width, height, Enum{format}, Enum{type}, Data{pixels});
    if (auto* driver = DRIVER(glReadPixels)) return driver(x, y, width, height, format, type, pixels);
    const size_t size = static_cast<size_t>(width) * static_cast<size_t>(height) * pixelBytes(format);
    uint8_t* bytes = static_cast<uint8_t*>(pixels);
    for (size_t i = 0; i < size; ++i) bytes[i] = state().pixel_byte(i);
}

// Shaders and programs

GLuint glCreateShader(GLenum type) {
    call("glCreateShader", Enum{type});
    auto* driver = DRIVER(glCreateShader);
    GLuint shader = 0;
    if (driver != nullptr)
        shader = driver(type);
    else if (state().shaders_not_created.count(type) == 0)
        shader = state().newName();
    if (shader != 0) state().live_shaders.insert(shader);
    state().shader_types[shader] = type;
    result(shader);
    return shader;
}

void glShaderSource(GLuint shader, GLsizei count, const GLchar* const* strings, const GLint* lengths) {
    call("glShaderSource", shader, count, Data{strings}, Data{lengths});
    std::string& text = state().shader_sources[shader];
    text.clear();
    for (GLsizei i = 0; i < count; ++i) {
        if (lengths != nullptr && lengths[i] >= 0)
            text.append(strings[i], static_cast<size_t>(lengths[i]));
        else
            text.append(strings[i]);
    }
    if (auto* driver = DRIVER(glShaderSource)) driver(shader, count, strings, lengths);
}

void glCompileShader(GLuint shader) {
    call("glCompileShader", shader);
    if (auto* driver = DRIVER(glCompileShader)) driver(shader);
}

void glGetShaderiv(GLuint shader, GLenum name, GLint* out) {
    call("glGetShaderiv", shader, Enum{name});
    if (auto* driver = DRIVER(glGetShaderiv)) return driver(shader, name, out);
    const BuildResult build = compileResult(shader);
    *out = name == GL_COMPILE_STATUS ? build.status : name == GL_INFO_LOG_LENGTH ? logLength(build) : 0;
}

void glGetShaderInfoLog(GLuint shader, GLsizei size, GLsizei* length, GLchar* log) {
    call("glGetShaderInfoLog", shader, size);
    if (auto* driver = DRIVER(glGetShaderInfoLog)) return driver(shader, size, length, log);
    copyLog(compileResult(shader).log, size, length, log);
}

void glDeleteShader(GLuint shader) {
    call("glDeleteShader", shader);
    state().live_shaders.erase(shader);
    if (auto* driver = DRIVER(glDeleteShader)) driver(shader);
}

GLuint glCreateProgram() {
    call("glCreateProgram");
    auto* driver = DRIVER(glCreateProgram);
    GLuint program = 0;
    if (driver != nullptr)
        program = driver();
    else if (!state().program_not_created)
        program = state().newName();
    if (program != 0) state().live_programs.insert(program);
    result(program);
    return program;
}

void glAttachShader(GLuint program, GLuint shader) {
    call("glAttachShader", program, shader);
    state().attached_shaders[program].push_back(shader);
    if (auto* driver = DRIVER(glAttachShader)) driver(program, shader);
}

void glGetAttachedShaders(GLuint program, GLsizei size, GLsizei* count, GLuint* shaders) {
    call("glGetAttachedShaders", program, size);
    if (auto* driver = DRIVER(glGetAttachedShaders)) return driver(program, size, count, shaders);
    const std::vector<GLuint>& attached = state().attached_shaders[program];
    *count = std::min(size, static_cast<GLsizei>(attached.size()));
    std::copy_n(attached.begin(), *count, shaders);
}

void glDetachShader(GLuint program, GLuint shader) {
    call("glDetachShader", program, shader);
    if (auto* driver = DRIVER(glDetachShader)) driver(program, shader);
}

void glBindAttribLocation(GLuint program, GLuint index, const GLchar* name) {
    call("glBindAttribLocation", program, index, name);
    if (auto* driver = DRIVER(glBindAttribLocation)) driver(program, index, name);
}

void glLinkProgram(GLuint program) {
    call("glLinkProgram", program);
    if (auto* driver = DRIVER(glLinkProgram)) driver(program);
}

void glGetProgramiv(GLuint program, GLenum name, GLint* out) {
    call("glGetProgramiv", program, Enum{name});
    if (auto* driver = DRIVER(glGetProgramiv)) return driver(program, name, out);
    const BuildResult& build = state().link_result;
    *out = name == GL_LINK_STATUS ? build.status : name == GL_INFO_LOG_LENGTH ? logLength(build) : 0;
}

void glGetProgramInfoLog(GLuint program, GLsizei size, GLsizei* length, GLchar* log) {
    call("glGetProgramInfoLog", program, size);
    if (auto* driver = DRIVER(glGetProgramInfoLog)) return driver(program, size, length, log);
    copyLog(state().link_result.log, size, length, log);
}

void glDeleteProgram(GLuint program) {
    call("glDeleteProgram", program);
    state().live_programs.erase(program);
    if (auto* driver = DRIVER(glDeleteProgram)) driver(program);
}

void glUseProgram(GLuint program) {
    call("glUseProgram", program);
    state().current_program = program;
    if (auto* driver = DRIVER(glUseProgram)) driver(program);
}

GLboolean glIsProgram(GLuint program) {
    call("glIsProgram", program);
    if (auto* driver = DRIVER(glIsProgram)) return driver(program);
    return state().live_programs.count(program) != 0 ? GL_TRUE : GL_FALSE;
}

GLint glGetAttribLocation(GLuint program, const GLchar* name) {
    call("glGetAttribLocation", program, name);
    if (auto* driver = DRIVER(glGetAttribLocation)) return driver(program, name);
    const auto found = state().attribute_locations.find(name);
    return found != state().attribute_locations.end() ? found->second : -1;
}

GLint glGetUniformLocation(GLuint program, const GLchar* name) {
    call("glGetUniformLocation", program, name);
    if (auto* driver = DRIVER(glGetUniformLocation)) return driver(program, name);
    const auto found = state().uniform_locations.find(name);
    return found != state().uniform_locations.end() ? found->second : -1;
}

void glUniform1i(GLint location, GLint value) {
    call("glUniform1i", location, value);
    if (auto* driver = DRIVER(glUniform1i)) driver(location, value);
}

void glUniform1f(GLint location, GLfloat value) {
    call("glUniform1f", location, value);
    if (auto* driver = DRIVER(glUniform1f)) driver(location, value);
}

void glUniform2f(GLint location, GLfloat x, GLfloat y) {
    call("glUniform2f", location, x, y);
    if (auto* driver = DRIVER(glUniform2f)) driver(location, x, y);
}

void glUniform4f(GLint location, GLfloat x, GLfloat y, GLfloat z, GLfloat w) {
    call("glUniform4f", location, x, y, z, w);
    if (auto* driver = DRIVER(glUniform4f)) driver(location, x, y, z, w);
}

void glUniformMatrix4fv(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) {
    call("glUniformMatrix4fv", location, count, Bool{transpose}, Data{value});
    state().matrix_uploads.push_back({location, count, transpose, {value, value + 16 * count}});
    if (auto* driver = DRIVER(glUniformMatrix4fv)) driver(location, count, transpose, value);
}

void glEnableVertexAttribArray(GLuint index) {
    call("glEnableVertexAttribArray", index);
    if (auto* driver = DRIVER(glEnableVertexAttribArray)) driver(index);
}

void glDisableVertexAttribArray(GLuint index) {
    call("glDisableVertexAttribArray", index);
    if (auto* driver = DRIVER(glDisableVertexAttribArray)) driver(index);
}

void glVertexAttribPointer(GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride,
                           const void* pointer) {
    call("glVertexAttribPointer", index, size, Enum{type}, Bool{normalized}, stride, Offset{pointer});
    if (auto* driver = DRIVER(glVertexAttribPointer)) driver(index, size, type, normalized, stride, pointer);
}

// Buffers

void glGenBuffers(GLsizei n, GLuint* names) {
    generate("glGenBuffers", DRIVER(glGenBuffers), n, names, &state().live_buffers);
}

void glDeleteBuffers(GLsizei n, const GLuint* names) {
    remove("glDeleteBuffers", DRIVER(glDeleteBuffers), n, names, &state().live_buffers);
}

void glBindBuffer(GLenum target, GLuint buffer) {
    call("glBindBuffer", Enum{target}, buffer);
    state().bound_buffers[target] = buffer;
    if (auto* driver = DRIVER(glBindBuffer)) driver(target, buffer);
}

void glBufferData(GLenum target, GLsizeiptr size, const void* data, GLenum usage) {
    call("glBufferData", Enum{target}, static_cast<long>(size), Data{data}, Usage{usage});
    BufferUpload upload = {target, state().bound_buffers[target], usage, size, {}};
    const uint8_t* bytes = static_cast<const uint8_t*>(data);
    if (bytes != nullptr && size > 0) upload.bytes.assign(bytes, bytes + size);
    state().buffer_uploads.push_back(std::move(upload));
    if (auto* driver = DRIVER(glBufferData)) driver(target, size, data, usage);
}

GLboolean glIsBuffer(GLuint buffer) {
    call("glIsBuffer", buffer);
    if (auto* driver = DRIVER(glIsBuffer)) return driver(buffer);
    return state().live_buffers.count(buffer) != 0 ? GL_TRUE : GL_FALSE;
}

// Textures

void glGenTextures(GLsizei n, GLuint* names) {
    generate("glGenTextures", DRIVER(glGenTextures), n, names, &state().live_textures);
}

void glDeleteTextures(GLsizei n, const GLuint* names) {
    remove("glDeleteTextures", DRIVER(glDeleteTextures), n, names, &state().live_textures);
}

void glActiveTexture(GLenum unit) {
    call("glActiveTexture", Enum{unit});
    state().active_texture = unit;
    if (auto* driver = DRIVER(glActiveTexture)) driver(unit);
}

void glBindTexture(GLenum target, GLuint texture) {
    call("glBindTexture", Enum{target}, texture);
    if (target == GL_TEXTURE_2D) state().bound_textures[state().active_texture] = texture;
    if (auto* driver = DRIVER(glBindTexture)) driver(target, texture);
}

void glTexParameteri(GLenum target, GLenum name, GLint value) {
    call("glTexParameteri", Enum{target}, Enum{name}, Enum{static_cast<GLenum>(value)});
    if (auto* driver = DRIVER(glTexParameteri)) driver(target, name, value);
}

void glTexImage2D(GLenum target, GLint level, GLint internal_format, GLsizei width, GLsizei height,
                  GLint border, GLenum format, GLenum type, const void* pixels) {
    call("glTexImage2D", Enum{target}, level, Enum{static_cast<GLenum>(internal_format)}, width, height,
         border, Enum{format}, Enum{type}, Data{pixels});
    state().texture_uploads.push_back({state().bound_textures[state().active_texture], level, internal_format,
                                       width, height, format, type, state().unpack_alignment,
                                       tightPixels(width, height, format, type, pixels)});
    if (auto* driver = DRIVER(glTexImage2D))
        driver(target, level, internal_format, width, height, border, format, type, pixels);
}

void glTexSubImage2D(GLenum target, GLint level, GLint x, GLint y, GLsizei width, GLsizei height,
                     GLenum format, GLenum type, const void* pixels) {
    call("glTexSubImage2D", Enum{target}, level, x, y, width, height, Enum{format}, Enum{type}, Data{pixels});
    if (auto* driver = DRIVER(glTexSubImage2D))
        driver(target, level, x, y, width, height, format, type, pixels);
}

GLboolean glIsTexture(GLuint texture) {
    call("glIsTexture", texture);
    if (auto* driver = DRIVER(glIsTexture)) return driver(texture);
    return state().live_textures.count(texture) != 0 ? GL_TRUE : GL_FALSE;
}

// Framebuffers and renderbuffers

void glGenFramebuffers(GLsizei n, GLuint* names) {
    generate("glGenFramebuffers", DRIVER(glGenFramebuffers), n, names, &state().live_framebuffers);
}

void glDeleteFramebuffers(GLsizei n, const GLuint* names) {
    remove("glDeleteFramebuffers", DRIVER(glDeleteFramebuffers), n, names, &state().live_framebuffers);
}

void glBindFramebuffer(GLenum target, GLuint framebuffer) {
    call("glBindFramebuffer", Enum{target}, framebuffer);
    state().bound_framebuffer = framebuffer;
    if (auto* driver = DRIVER(glBindFramebuffer)) driver(target, framebuffer);
}

void glFramebufferTexture2D(GLenum target, GLenum attachment, GLenum texture_target, GLuint texture,
                            GLint level) {
    call("glFramebufferTexture2D", Enum{target}, Enum{attachment}, Enum{texture_target}, texture, level);
    if (auto* driver = DRIVER(glFramebufferTexture2D))
        driver(target, attachment, texture_target, texture, level);
}

GLenum glCheckFramebufferStatus(GLenum target) {
    call("glCheckFramebufferStatus", Enum{target});
    if (auto* driver = DRIVER(glCheckFramebufferStatus)) return driver(target);
    return state().framebuffer_status;
}

void glGetFramebufferAttachmentParameteriv(GLenum target, GLenum attachment, GLenum name, GLint* out) {
    call("glGetFramebufferAttachmentParameteriv", Enum{target}, Enum{attachment}, Enum{name});
    if (auto* driver = DRIVER(glGetFramebufferAttachmentParameteriv))
        return driver(target, attachment, name, out);
    *out = 0;
}

GLboolean glIsFramebuffer(GLuint framebuffer) {
    call("glIsFramebuffer", framebuffer);
    if (auto* driver = DRIVER(glIsFramebuffer)) return driver(framebuffer);
    return state().live_framebuffers.count(framebuffer) != 0 ? GL_TRUE : GL_FALSE;
}

void glGenRenderbuffers(GLsizei n, GLuint* names) {
    generate("glGenRenderbuffers", DRIVER(glGenRenderbuffers), n, names, &state().live_renderbuffers);
}

void glDeleteRenderbuffers(GLsizei n, const GLuint* names) {
    remove("glDeleteRenderbuffers", DRIVER(glDeleteRenderbuffers), n, names, &state().live_renderbuffers);
}

void glBindRenderbuffer(GLenum target, GLuint renderbuffer) {
    call("glBindRenderbuffer", Enum{target}, renderbuffer);
    state().bound_renderbuffer = renderbuffer;
    if (auto* driver = DRIVER(glBindRenderbuffer)) driver(target, renderbuffer);
}

void glRenderbufferStorage(GLenum target, GLenum format, GLsizei width, GLsizei height) {
    call("glRenderbufferStorage", Enum{target}, Enum{format}, width, height);
    if (auto* driver = DRIVER(glRenderbufferStorage)) driver(target, format, width, height);
}

void glFramebufferRenderbuffer(GLenum target, GLenum attachment, GLenum renderbuffer_target,
                               GLuint renderbuffer) {
    call("glFramebufferRenderbuffer", Enum{target}, Enum{attachment}, Enum{renderbuffer_target},
         renderbuffer);
    if (auto* driver = DRIVER(glFramebufferRenderbuffer))
        driver(target, attachment, renderbuffer_target, renderbuffer);
}

GLboolean glIsRenderbuffer(GLuint renderbuffer) {
    call("glIsRenderbuffer", renderbuffer);
    if (auto* driver = DRIVER(glIsRenderbuffer)) return driver(renderbuffer);
    return state().live_renderbuffers.count(renderbuffer) != 0 ? GL_TRUE : GL_FALSE;
}

// EGL

EGLDisplay eglGetCurrentDisplay() {
    call("eglGetCurrentDisplay");
    if (auto* driver = DRIVER(eglGetCurrentDisplay)) return driver();
    return fakeDisplay();
}

EGLContext eglGetCurrentContext() {
    call("eglGetCurrentContext");
    if (auto* driver = DRIVER(eglGetCurrentContext)) return driver();
    return state().current_context;
}

EGLint eglGetError() {
    call("eglGetError");
    if (auto* driver = DRIVER(eglGetError)) return driver();
    return state().egl_error;
}

EGLSyncKHR eglCreateSyncKHR(EGLDisplay display, EGLenum type, const EGLint* attributes) {
    call("eglCreateSyncKHR", Handle{display}, Enum{type}, Data{attributes});
    if (auto* driver = DRIVER(eglCreateSyncKHR)) return driver(display, type, attributes);
    return state().created_sync;
}

EGLint eglClientWaitSyncKHR(EGLDisplay display, EGLSyncKHR sync, EGLint flags, EGLTimeKHR timeout) {
    call("eglClientWaitSyncKHR", Handle{display}, Handle{sync}, flags, Timeout{timeout});
    if (auto* driver = DRIVER(eglClientWaitSyncKHR)) return driver(display, sync, flags, timeout);
    return state().wait_result;
}

EGLBoolean eglDestroySyncKHR(EGLDisplay display, EGLSyncKHR sync) {
    call("eglDestroySyncKHR", Handle{display}, Handle{sync});
    if (auto* driver = DRIVER(eglDestroySyncKHR)) return driver(display, sync);
    return EGL_TRUE;
}
