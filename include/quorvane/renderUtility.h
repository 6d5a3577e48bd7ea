#ifndef QUORVANE_RENDER_UTILITY_H
#define QUORVANE_RENDER_UTILITY_H

/// A 4 x 4 matrix as OpenGL takes it: `mat[i]` is column i of the matrix that a shader sees, and `mat[i][j]`
/// its element in row j. Passed to `glUniformMatrix4fv` untransposed.
///
/// "Array terms" below means products of the arrays as stored: M = A x B is
/// M.mat[i][j] = sum over k of A.mat[i][k] * B.mat[k][j]. In shader terms that is B * A: the transform held
/// in A meets a position first.
struct RENDERMatrix {
    float mat[4][4];
};

/// result = identity.
void renderMatrixLoadIdentity(RENDERMatrix* result);

/// result = srcA x srcB in array terms. `result` may be `srcA`, `srcB` or both.
void renderMatrixMultiply(RENDERMatrix* result, const RENDERMatrix* srcA, const RENDERMatrix* srcB);

/// result = T x result in array terms: like glTranslate, the translation meets a position before everything
/// that `result` held.
void renderTranslate(RENDERMatrix* result, float tx, float ty, float tz);

/// result = R x result in array terms, R turning by `angle` degrees about the axis (x, y, z) in the sense of
/// glRotate: a positive angle is counter-clockwise for a viewer towards whom the axis points.
/// An axis of another length than 1 is normalised; a zero axis leaves `result` unchanged.
void renderRotate(RENDERMatrix* result, float angle, float x, float y, float z);

/// result = F x result in array terms, F the perspective matrix of glFrustum (OpenGL 2.1 specification,
/// section 2.11): camera at the origin, looking along -z, `nearZ` and `farZ` positive distances.
/// An empty frustum (left = right, bottom = top, nearZ = farZ, or a distance of 0 or less) leaves `result`
/// unchanged; non-finite arguments go through to the matrix.
void renderFrustum(RENDERMatrix* result, float left, float right, float bottom, float top, float nearZ,
                   float farZ);

#endif
