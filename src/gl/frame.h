#ifndef QUORVANE_GL_FRAME_H
#define QUORVANE_GL_FRAME_H

#include <GLES2/gl2.h>

#include <cstdint>

// All of these need the context current.
namespace quorvane::gl {

/// Deletes *name unless it is 0, makes a new framebuffer in its place and leaves it bound.
void replaceFramebuffer(GLuint* name);

/// Binds the framebuffer and attaches a texture as its colour. Whether that makes it complete.
bool attachOutput(GLuint framebuffer, GLuint texture);

void setViewport(int width, int height);

/// Sets the state that frames are drawn with and clears the framebuffer in force: colour to black, depth
/// to 1.
void beginFrame(GLuint program, int width, int height);

/// Sets the matrix of the program in use; 16 floats, as glUniformMatrix4fv takes them.
void setMatrix(GLuint location, const float* matrix);

/// What a frame is drawn from and into.
struct FrameInputs {
    GLuint photo, photo_location;
    GLuint depth, depth_location;
    const GLuint* buffers;  ///< two: vertices (five floats each, position and texture coordinate) and indices
    GLuint position_location;
    GLuint coordinate_location;
    GLuint framebuffer;
};

/// Binds all of these, the photo on texture unit 1 and the depth on unit 2. Unit 0 is left to the host, which
/// binds there while it uploads.
void bindInputs(const FrameInputs& inputs);

/// Draws triangles of `count` 32-bit indices and returns when the GPU has finished them.
void draw(int count);

/// Reads the frame back: R, G, B, A from its first row on.
void readFrame(int width, int height, uint8_t* pixels);

/// What a renderer owns in GL.
struct Objects {
    GLuint textures[2];
    GLuint framebuffer;
    const GLuint* buffers;  ///< two
    GLuint program;
};

/// Deletes all of these. Names that are 0 go to GL as they are; it ignores them.
void deleteObjects(const Objects& objects);

}  // namespace quorvane::gl

#endif
