// The whole component in a page: what the web element's pictures are compared with. It draws into a texture,
// as it does everywhere; a depth buffer is attached, as ParallaxView does.

#include <GLES2/gl2.h>
#include <emscripten/html5.h>

#include <cstdint>
#include <cstdlib>

#include "host/look_at.h"
#include "quorvane/esRenderer.h"

namespace {

ESRenderer* g_renderer;
int g_width, g_height;
uint8_t* g_pixels;

}  // namespace

extern "C" {

/// Draws width x height pictures of a photo of that size, R G B, and a depth map with 4 pixels a cell, in a
/// WebGL context of the canvas #oracle. False where it cannot.
EMSCRIPTEN_KEEPALIVE bool setUp(int width, int height, uint8_t* photo, int depth_width, int depth_height,
                                uint8_t* depth) {
    EmscriptenWebGLContextAttributes attributes;
    emscripten_webgl_init_context_attributes(&attributes);
    const EMSCRIPTEN_WEBGL_CONTEXT_HANDLE context = emscripten_webgl_create_context("#oracle", &attributes);
    if (context <= 0 || emscripten_webgl_make_context_current(context) != EMSCRIPTEN_RESULT_SUCCESS)
        return false;
    g_width = width;
    g_height = height;
    g_pixels = static_cast<uint8_t*>(std::malloc(size_t{4} * static_cast<size_t>(width * height)));

    g_renderer = new ESRenderer;
    g_renderer->getProperties(4);
    const int bytes = g_renderer->getRequiredMemSize(width, height, depth_width, depth_height);
    g_renderer->assignMem(static_cast<unsigned char*>(std::calloc(static_cast<size_t>(bytes), 1)));
    if (!g_renderer->setupGraphics(width, height)) return false;
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    g_renderer->setTexture(width, height, photo);
    g_renderer->setDepth(depth_width, depth_height, depth);
    g_renderer->setupVertices();

    GLuint texture = 0, buffer = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    if (!g_renderer->setOutTexture(texture)) return false;
    glGenRenderbuffers(1, &buffer);
    glBindRenderbuffer(GL_RENDERBUFFER, buffer);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT16, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, buffer);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

/// The shaped depth, a byte a cell.
EMSCRIPTEN_KEEPALIVE const char* shaped() { return g_renderer->m_pDepthData; }

/// The picture from a view position, R G B A from the top row on.
EMSCRIPTEN_KEEPALIVE const uint8_t* draw(float x, float y) {
    g_renderer->setRotation(quorvane::placeOnPicture(x, static_cast<float>(g_width)),
                            quorvane::placeOnPicture(y, static_cast<float>(g_height)), 0.0F);
    g_renderer->renderFrame();
    glReadPixels(0, 0, g_width, g_height, GL_RGBA, GL_UNSIGNED_BYTE, g_pixels);
    return g_pixels;
}
}
