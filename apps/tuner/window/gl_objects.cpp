#include "apps/tuner/window/gl_objects.h"

#include <array>
#include <initializer_list>
#include <string>
#include <vector>

#include "system/error.h"

namespace quorvane::tuner {
namespace {

GLuint compiled(GLenum kind, const char* source) {
    const GLuint shader = glCreateShader(kind);
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint worked = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &worked);
    if (worked != 0) return shader;
    std::array<char, 512> words = {};
    glGetShaderInfoLog(shader, static_cast<GLsizei>(words.size()), nullptr, words.data());
    glDeleteShader(shader);
    throw Error("the graphics driver does not compile the window's shader: " + std::string(words.data()));
}

}  // namespace

Texture::~Texture() { glDeleteTextures(1, &m_name); }

void Texture::bind() {
    if (m_name == 0) glGenTextures(1, &m_name);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, m_name);
    for (const GLenum filter : std::initializer_list<GLenum>{GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
        glTexParameteri(GL_TEXTURE_2D, filter, GL_LINEAR);
    for (const GLenum axis : std::initializer_list<GLenum>{GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
        glTexParameteri(GL_TEXTURE_2D, axis, GL_CLAMP_TO_EDGE);
}

void Texture::fill(const media::RgbImage& image) {
    std::vector<uint8_t> pixels;
    pixels.reserve(image.samples.size() / 3 * 4);
    for (size_t i = 0; i + 2 < image.samples.size(); i += 3)
        pixels.insert(pixels.end(), {image.samples[i], image.samples[i + 1], image.samples[i + 2], 255});
    bind();
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, image.width, image.height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 pixels.data());
    m_size = {image.width, image.height};
}

void Texture::resize(Size size) {
    if (m_size == size) return;
    bind();
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, size.width, size.height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    m_size = size;
}

GLuint makeProgram(const char* vertex, const char* fragment) {
    const GLuint program = glCreateProgram();
    for (const GLuint shader : {compiled(GL_VERTEX_SHADER, vertex), compiled(GL_FRAGMENT_SHADER, fragment)}) {
        glAttachShader(program, shader);
        glDeleteShader(shader);
    }
    glLinkProgram(program);
    GLint worked = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &worked);
    if (worked == 0) throw Error("the graphics driver does not link the window's shaders");
    return program;
}

DrawingInto::DrawingInto(const Texture& texture) {
    glGenFramebuffers(1, &m_framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name(), 0);
    glViewport(0, 0, texture.size().width, texture.size().height);
}

DrawingInto::~DrawingInto() {
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteFramebuffers(1, &m_framebuffer);
}

void drawFlat() {
    for (const GLenum what : std::initializer_list<GLenum>{GL_DEPTH_TEST, GL_CULL_FACE, GL_STENCIL_TEST,
                                                           GL_SCISSOR_TEST, GL_BLEND})
        glDisable(what);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

}  // namespace quorvane::tuner
