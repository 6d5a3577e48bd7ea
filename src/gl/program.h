#ifndef QUORVANE_GL_PROGRAM_H
#define QUORVANE_GL_PROGRAM_H

#include <GLES2/gl2.h>

/// The program's sources, GLSL ES 1.00: 19 and 8 lines, each padded with blanks to 83 characters.
extern const char gVertexShader[1597];
extern const char gFragmentShader[673];

// All of these need the context current.
namespace quorvane::gl {

/// A compiled shader of `type`, or 0 after logging the compiler's message. A shader that does not compile and
/// leaves no message is returned: linking fails then and says so.
GLuint loadShader(GLenum type, const char* source);

/// A linked program, or 0 after logging why.
GLuint createProgram(const char* vertex_source, const char* fragment_source);

/// Where an input of the program is, logged. A location of -1 is kept as it comes and is no error: the frame
/// goes on without that input.
GLuint attributeLocation(GLuint program, const char* name);
GLuint uniformLocation(GLuint program, const char* name);

}  // namespace quorvane::gl

#endif
