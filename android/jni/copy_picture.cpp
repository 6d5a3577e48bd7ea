#include "copy_picture.h"

#include "host/gl_queries.h"

namespace quorvane {
Status copyPicture(const ParallaxView& view, GLuint texture) {
    const std::string name = "texture " + std::to_string(texture);
    const ESRenderer& renderer = view.renderer();
    if (texture == view.texture() || texture == renderer.m_texName || texture == renderer.m_depthName)
        return Status::failure(name + " belongs to the renderer; give one of the app's");
    if (!glIsTexture(texture)) return Status::failure(name + " is none of this context, or was never bound");

    forgetGlErrors();
    glBindFramebuffer(GL_FRAMEBUFFER, renderer.m_fbo);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, texture);
    if (glGetError() != GL_NO_ERROR) return Status::failure(name + " is not a 2D texture");
    // Drawing straight into it would save the copy, but then its size would have to be the depth buffer's,
    // and ES 2 does not tell a texture's size.
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, view.width(), view.height());
    if (glGetError() != GL_NO_ERROR)
        return Status::failure(name + " has no RGBA or RGB image of " + std::to_string(view.width()) + " x " +
                               std::to_string(view.height()) + " pixels or more");
    glFinish();
    return Status::success();
}

}  // namespace quorvane
