// GL and EGL that do nothing, in front of the real ones: what is left of the renderer is its own share.

#define EGL_EGLEXT_PROTOTYPES
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>

#include <cstring>

namespace {

// Never 0 for an object or a status, so that the renderer goes on.
constexpr GLuint kName = 1;

EGLSyncKHR createSync(EGLDisplay, EGLenum, const EGLint*) {
    static int fence;
    return &fence;
}
EGLint waitSync(EGLDisplay, EGLSyncKHR, EGLint, EGLTimeKHR) { return EGL_CONDITION_SATISFIED_KHR; }
EGLBoolean destroySync(EGLDisplay, EGLSyncKHR) { return EGL_TRUE; }

void name(GLsizei count, GLuint* names) {
    for (GLsizei i = 0; i < count; ++i) names[i] = kName;
}

}  // namespace

extern "C" {

void glActiveTexture(GLenum) {}
void glAttachShader(GLuint, GLuint) {}
void glBindBuffer(GLenum, GLuint) {}
void glBindFramebuffer(GLenum, GLuint) {}
void glBindTexture(GLenum, GLuint) {}
void glBufferData(GLenum, GLsizeiptr, const void*, GLenum) {}
GLenum glCheckFramebufferStatus(GLenum) { return GL_FRAMEBUFFER_COMPLETE; }
void glClear(GLbitfield) {}
void glClearColor(GLfloat, GLfloat, GLfloat, GLfloat) {}
void glClearDepthf(GLfloat) {}
void glCompileShader(GLuint) {}
GLuint glCreateProgram() { return kName; }
GLuint glCreateShader(GLenum) { return kName; }
void glDeleteBuffers(GLsizei, const GLuint*) {}
void glDeleteFramebuffers(GLsizei, const GLuint*) {}
void glDeleteProgram(GLuint) {}
void glDeleteShader(GLuint) {}
void glDeleteTextures(GLsizei, const GLuint*) {}
void glDepthFunc(GLenum) {}
void glDepthMask(GLboolean) {}
void glDrawElements(GLenum, GLsizei, GLenum, const void*) {}
void glEnable(GLenum) {}
void glEnableVertexAttribArray(GLuint) {}
void glFlush() {}
void glFramebufferTexture2D(GLenum, GLenum, GLenum, GLuint, GLint) {}
void glGenBuffers(GLsizei count, GLuint* names) { name(count, names); }
void glGenFramebuffers(GLsizei count, GLuint* names) { name(count, names); }
void glGenTextures(GLsizei count, GLuint* names) { name(count, names); }
GLint glGetAttribLocation(GLuint, const GLchar*) { return 0; }
GLenum glGetError() { return GL_NO_ERROR; }
void glGetProgramInfoLog(GLuint, GLsizei, GLsizei*, GLchar*) {}
void glGetProgramiv(GLuint, GLenum, GLint* value) { *value = GL_TRUE; }
void glGetShaderInfoLog(GLuint, GLsizei, GLsizei*, GLchar*) {}
void glGetShaderiv(GLuint, GLenum, GLint* value) { *value = GL_TRUE; }
const GLubyte* glGetString(GLenum) { return reinterpret_cast<const GLubyte*>("none"); }
GLint glGetUniformLocation(GLuint, const GLchar*) { return 0; }
void glLinkProgram(GLuint) {}
void glPixelStorei(GLenum, GLint) {}
void glReadPixels(GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, void*) {}
void glShaderSource(GLuint, GLsizei, const GLchar* const*, const GLint*) {}
void glTexImage2D(GLenum, GLint, GLint, GLsizei, GLsizei, GLint, GLenum, GLenum, const void*) {}
void glTexParameteri(GLenum, GLenum, GLint) {}
void glTexSubImage2D(GLenum, GLint, GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, const void*) {}
void glUniform1i(GLint, GLint) {}
void glUniformMatrix4fv(GLint, GLsizei, GLboolean, const GLfloat*) {}
void glUseProgram(GLuint) {}
void glVertexAttribPointer(GLuint, GLint, GLenum, GLboolean, GLsizei, const void*) {}
void glViewport(GLint, GLint, GLsizei, GLsizei) {}

EGLDisplay eglGetCurrentDisplay() { return EGL_NO_DISPLAY; }
EGLint eglGetError() { return EGL_SUCCESS; }

__eglMustCastToProperFunctionPointerType eglGetProcAddress(const char* name) {
    using Call = __eglMustCastToProperFunctionPointerType;
    if (std::strcmp(name, "eglCreateSyncKHR") == 0) return reinterpret_cast<Call>(createSync);
    if (std::strcmp(name, "eglClientWaitSyncKHR") == 0) return reinterpret_cast<Call>(waitSync);
    if (std::strcmp(name, "eglDestroySyncKHR") == 0) return reinterpret_cast<Call>(destroySync);
    return nullptr;
}

}  // extern "C"
