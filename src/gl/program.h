#ifndef QUORVANE_GL_PROGRAM_H
#define QUORVANE_GL_PROGRAM_H

/// The program's sources, GLSL ES 1.00: 19 and 8 lines, each padded with blanks to 83 characters.
extern const char gVertexShader[1597];
extern const char gFragmentShader[673];

#endif
