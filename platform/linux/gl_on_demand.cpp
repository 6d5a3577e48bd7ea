// EGL and OpenGL ES for a program that starts without them: their libraries are loaded by the first call.
// Where one is missing, its functions do nothing and give zero, so that EGL has no display. These are the
// functions that the component and the host call.

#include <EGL/egl.h>
#include <GLES2/gl2.h>
#include <dlfcn.h>

namespace {

/// Loaded once and never unloaded: drivers do not stand that.
class Library {
  public:
    explicit Library(const char* name) : m_handle(dlopen(name, RTLD_NOW | RTLD_LOCAL)) {}
    void* find(const char* function) const {
        return m_handle != nullptr ? dlsym(m_handle, function) : nullptr;
    }

  private:
    void* m_handle;
};

using Text = const char*;
using Bytes = const GLubyte*;

const Library& egl() {
    static const Library library("libEGL.so.1");
    return library;
}

const Library& gles() {
    static const Library library("libGLESv2.so.2");
    return library;
}

}  // namespace

// Hidden: the driver's own libraries have functions of these names.
#define QUORVANE_FORWARD(library, Result, name, parameters, arguments)                              \
    extern "C" [[gnu::visibility("hidden")]] Result name parameters {                               \
        static const auto function = reinterpret_cast<Result(*) parameters>(library().find(#name)); \
        if (function == nullptr) return Result();                                                   \
        return function arguments;                                                                  \
    }

// clang-format off
QUORVANE_FORWARD(egl, EGLBoolean, eglBindAPI, (EGLenum api), (api))
QUORVANE_FORWARD(egl, EGLBoolean, eglChooseConfig, (EGLDisplay dpy, const EGLint* attrib_list, EGLConfig* configs, EGLint config_size, EGLint* num_config), (dpy, attrib_list, configs, config_size, num_config))
QUORVANE_FORWARD(egl, EGLContext, eglCreateContext, (EGLDisplay dpy, EGLConfig config, EGLContext share_context, const EGLint* attrib_list), (dpy, config, share_context, attrib_list))
QUORVANE_FORWARD(egl, EGLSurface, eglCreatePbufferSurface, (EGLDisplay dpy, EGLConfig config, const EGLint* attrib_list), (dpy, config, attrib_list))
QUORVANE_FORWARD(egl, EGLBoolean, eglDestroyContext, (EGLDisplay dpy, EGLContext ctx), (dpy, ctx))
QUORVANE_FORWARD(egl, EGLBoolean, eglDestroySurface, (EGLDisplay dpy, EGLSurface surface), (dpy, surface))
QUORVANE_FORWARD(egl, EGLContext, eglGetCurrentContext, (), ())
QUORVANE_FORWARD(egl, EGLDisplay, eglGetCurrentDisplay, (), ())
QUORVANE_FORWARD(egl, EGLDisplay, eglGetDisplay, (EGLNativeDisplayType display_id), (display_id))
QUORVANE_FORWARD(egl, EGLint, eglGetError, (), ())
QUORVANE_FORWARD(egl, __eglMustCastToProperFunctionPointerType, eglGetProcAddress, (const char* procname), (procname))
QUORVANE_FORWARD(egl, EGLBoolean, eglInitialize, (EGLDisplay dpy, EGLint* major, EGLint* minor), (dpy, major, minor))
QUORVANE_FORWARD(egl, EGLBoolean, eglMakeCurrent, (EGLDisplay dpy, EGLSurface draw, EGLSurface read, EGLContext ctx), (dpy, draw, read, ctx))
QUORVANE_FORWARD(egl, Text, eglQueryString, (EGLDisplay dpy, EGLint name), (dpy, name))
QUORVANE_FORWARD(egl, EGLBoolean, eglTerminate, (EGLDisplay dpy), (dpy))
QUORVANE_FORWARD(gles, void, glActiveTexture, (GLenum texture), (texture))
QUORVANE_FORWARD(gles, void, glAttachShader, (GLuint program, GLuint shader), (program, shader))
QUORVANE_FORWARD(gles, void, glBindBuffer, (GLenum target, GLuint buffer), (target, buffer))
QUORVANE_FORWARD(gles, void, glBindFramebuffer, (GLenum target, GLuint framebuffer), (target, framebuffer))
QUORVANE_FORWARD(gles, void, glBindRenderbuffer, (GLenum target, GLuint renderbuffer), (target, renderbuffer))
QUORVANE_FORWARD(gles, void, glBindTexture, (GLenum target, GLuint texture), (target, texture))
QUORVANE_FORWARD(gles, void, glBufferData, (GLenum target, GLsizeiptr size, const void* data, GLenum usage), (target, size, data, usage))
QUORVANE_FORWARD(gles, GLenum, glCheckFramebufferStatus, (GLenum target), (target))
QUORVANE_FORWARD(gles, void, glClear, (GLbitfield mask), (mask))
QUORVANE_FORWARD(gles, void, glClearColor, (GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha), (red, green, blue, alpha))
QUORVANE_FORWARD(gles, void, glClearDepthf, (GLfloat d), (d))
QUORVANE_FORWARD(gles, void, glColorMask, (GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha), (red, green, blue, alpha))
QUORVANE_FORWARD(gles, void, glCompileShader, (GLuint shader), (shader))
QUORVANE_FORWARD(gles, GLuint, glCreateProgram, (), ())
QUORVANE_FORWARD(gles, GLuint, glCreateShader, (GLenum type), (type))
QUORVANE_FORWARD(gles, void, glDeleteBuffers, (GLsizei n, const GLuint* buffers), (n, buffers))
QUORVANE_FORWARD(gles, void, glDeleteFramebuffers, (GLsizei n, const GLuint* framebuffers), (n, framebuffers))
QUORVANE_FORWARD(gles, void, glDeleteProgram, (GLuint program), (program))
QUORVANE_FORWARD(gles, void, glDeleteRenderbuffers, (GLsizei n, const GLuint* renderbuffers), (n, renderbuffers))
QUORVANE_FORWARD(gles, void, glDeleteShader, (GLuint shader), (shader))
QUORVANE_FORWARD(gles, void, glDeleteTextures, (GLsizei n, const GLuint* textures), (n, textures))
QUORVANE_FORWARD(gles, void, glDepthFunc, (GLenum func), (func))
QUORVANE_FORWARD(gles, void, glDepthMask, (GLboolean flag), (flag))
QUORVANE_FORWARD(gles, void, glDepthRangef, (GLfloat n, GLfloat f), (n, f))
QUORVANE_FORWARD(gles, void, glDisable, (GLenum cap), (cap))
QUORVANE_FORWARD(gles, void, glDisableVertexAttribArray, (GLuint index), (index))
QUORVANE_FORWARD(gles, void, glDrawElements, (GLenum mode, GLsizei count, GLenum type, const void* indices), (mode, count, type, indices))
QUORVANE_FORWARD(gles, void, glEnable, (GLenum cap), (cap))
QUORVANE_FORWARD(gles, void, glEnableVertexAttribArray, (GLuint index), (index))
QUORVANE_FORWARD(gles, void, glFlush, (), ())
QUORVANE_FORWARD(gles, void, glFramebufferRenderbuffer, (GLenum target, GLenum attachment, GLenum renderbuffertarget, GLuint renderbuffer), (target, attachment, renderbuffertarget, renderbuffer))
QUORVANE_FORWARD(gles, void, glFramebufferTexture2D, (GLenum target, GLenum attachment, GLenum textarget, GLuint texture, GLint level), (target, attachment, textarget, texture, level))
QUORVANE_FORWARD(gles, void, glGenBuffers, (GLsizei n, GLuint* buffers), (n, buffers))
QUORVANE_FORWARD(gles, void, glGenFramebuffers, (GLsizei n, GLuint* framebuffers), (n, framebuffers))
QUORVANE_FORWARD(gles, void, glGenRenderbuffers, (GLsizei n, GLuint* renderbuffers), (n, renderbuffers))
QUORVANE_FORWARD(gles, void, glGenTextures, (GLsizei n, GLuint* textures), (n, textures))
QUORVANE_FORWARD(gles, void, glGetAttachedShaders, (GLuint program, GLsizei maxCount, GLsizei* count, GLuint* shaders), (program, maxCount, count, shaders))
QUORVANE_FORWARD(gles, GLint, glGetAttribLocation, (GLuint program, const GLchar* name), (program, name))
QUORVANE_FORWARD(gles, GLenum, glGetError, (), ())
QUORVANE_FORWARD(gles, void, glGetIntegerv, (GLenum pname, GLint* data), (pname, data))
QUORVANE_FORWARD(gles, void, glGetProgramInfoLog, (GLuint program, GLsizei bufSize, GLsizei* length, GLchar* infoLog), (program, bufSize, length, infoLog))
QUORVANE_FORWARD(gles, void, glGetProgramiv, (GLuint program, GLenum pname, GLint* params), (program, pname, params))
QUORVANE_FORWARD(gles, void, glGetShaderInfoLog, (GLuint shader, GLsizei bufSize, GLsizei* length, GLchar* infoLog), (shader, bufSize, length, infoLog))
QUORVANE_FORWARD(gles, void, glGetShaderiv, (GLuint shader, GLenum pname, GLint* params), (shader, pname, params))
QUORVANE_FORWARD(gles, Bytes, glGetString, (GLenum name), (name))
QUORVANE_FORWARD(gles, GLint, glGetUniformLocation, (GLuint program, const GLchar* name), (program, name))
QUORVANE_FORWARD(gles, void, glLinkProgram, (GLuint program), (program))
QUORVANE_FORWARD(gles, void, glPixelStorei, (GLenum pname, GLint param), (pname, param))
QUORVANE_FORWARD(gles, void, glReadPixels, (GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels), (x, y, width, height, format, type, pixels))
QUORVANE_FORWARD(gles, void, glRenderbufferStorage, (GLenum target, GLenum internalformat, GLsizei width, GLsizei height), (target, internalformat, width, height))
QUORVANE_FORWARD(gles, void, glShaderSource, (GLuint shader, GLsizei count, const GLchar* const* string, const GLint* length), (shader, count, string, length))
QUORVANE_FORWARD(gles, void, glTexImage2D, (GLenum target, GLint level, GLint internalformat, GLsizei width, GLsizei height, GLint border, GLenum format, GLenum type, const void* pixels), (target, level, internalformat, width, height, border, format, type, pixels))
QUORVANE_FORWARD(gles, void, glTexParameteri, (GLenum target, GLenum pname, GLint param), (target, pname, param))
QUORVANE_FORWARD(gles, void, glTexSubImage2D, (GLenum target, GLint level, GLint xoffset, GLint yoffset, GLsizei width, GLsizei height, GLenum format, GLenum type, const void* pixels), (target, level, xoffset, yoffset, width, height, format, type, pixels))
QUORVANE_FORWARD(gles, void, glUniform1i, (GLint location, GLint v0), (location, v0))
QUORVANE_FORWARD(gles, void, glUniformMatrix4fv, (GLint location, GLsizei count, GLboolean transpose, const GLfloat* value), (location, count, transpose, value))
QUORVANE_FORWARD(gles, void, glUseProgram, (GLuint program), (program))
QUORVANE_FORWARD(gles, void, glVertexAttribPointer, (GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride, const void* pointer), (index, size, type, normalized, stride, pointer))
QUORVANE_FORWARD(gles, void, glViewport, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height))
// clang-format on
