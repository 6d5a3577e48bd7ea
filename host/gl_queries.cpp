#include "host/gl_queries.h"

#include <cstdio>
#include <cstring>

#include "host/text.h"

namespace quorvane {
namespace {

const char* glText(GLenum name) { return reinterpret_cast<const char*>(glGetString(name)); }

}  // namespace

bool hasWord(const char* words, const char* name) noexcept {
    if (words == nullptr) return false;
    const size_t length = std::strlen(name);
    for (const char* at = words; (at = std::strstr(at, name)) != nullptr; at += length) {
        const bool starts = at == words || at[-1] == ' ';
        if (starts && (at[length] == ' ' || at[length] == '\0')) return true;
    }
    return false;
}

bool hasGlExtension(const char* name) noexcept { return hasWord(glText(GL_EXTENSIONS), name); }

bool drawsInSoftware() noexcept {
    const char* renderer = glText(GL_RENDERER);
    if (renderer == nullptr) return false;
    for (const char* name : {"llvmpipe", "softpipe", "SwiftShader", "Software", "Basic Render"})
        if (std::strstr(renderer, name) != nullptr) return true;
    return false;
}

int glVersion() noexcept {
    const char* version = glText(GL_VERSION);
    int major = 0, minor = 0;
    return version != nullptr && std::sscanf(version, "OpenGL ES %d.%d", &major, &minor) == 2
               ? 10 * major + minor
               : 0;
}

GLint glInteger(GLenum name) noexcept {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

void forgetGlErrors() noexcept {
    // Bounded: a lost context reports an error on every call.
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i) {
    }
}

Status glStatus(const char* doing) { return glStatus(doing, glGetError()); }

Status glStatus(const char* doing, GLenum error) {
    if (error == GL_NO_ERROR) return Status::success();
    if (error == GL_OUT_OF_MEMORY)
        return Status::failure(text("%s: the graphics driver is out of memory", doing));
    return Status::failure(text("%s: the graphics driver reports error 0x%04x", doing, error));
}

}  // namespace quorvane
