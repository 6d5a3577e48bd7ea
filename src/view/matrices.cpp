#include "quorvane/renderUtility.h"

#include <cmath>

#include "view/angle.h"

void renderMatrixLoadIdentity(RENDERMatrix* result) {
    *result = {{{1.0f, 0.0f, 0.0f, 0.0f},
                {0.0f, 1.0f, 0.0f, 0.0f},
                {0.0f, 0.0f, 1.0f, 0.0f},
                {0.0f, 0.0f, 0.0f, 1.0f}}};
}

void renderMatrixMultiply(RENDERMatrix* result, const RENDERMatrix* srcA, const RENDERMatrix* srcB) {
    RENDERMatrix product;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            product.mat[i][j] = srcA->mat[i][0] * srcB->mat[0][j] + srcA->mat[i][1] * srcB->mat[1][j] +
                                srcA->mat[i][2] * srcB->mat[2][j] + srcA->mat[i][3] * srcB->mat[3][j];
    *result = product;
}

void renderTranslate(RENDERMatrix* result, float tx, float ty, float tz) {
    for (int j = 0; j < 4; ++j)
        result->mat[3][j] += result->mat[0][j] * tx + result->mat[1][j] * ty + result->mat[2][j] * tz;
}

// Rodrigues' formula: c I + (1 - c) a a^T + s [a]x, written column by column.
void renderRotate(RENDERMatrix* result, float angle, float x, float y, float z) {
    const double length = std::sqrt(double{x} * x + double{y} * y + double{z} * z);
    if (length == 0.0) return;
    const double ax = x / length;
    const double ay = y / length;
    const double az = z / length;
    const double radians = angle * quorvane::PI / 180.0;
    const double s = std::sin(radians);
    const double c = std::cos(radians);
    const double t = 1.0 - c;

    RENDERMatrix rotation;
    renderMatrixLoadIdentity(&rotation);
    rotation.mat[0][0] = static_cast<float>(t * ax * ax + c);
    rotation.mat[0][1] = static_cast<float>(t * ay * ax + s * az);
    rotation.mat[0][2] = static_cast<float>(t * az * ax - s * ay);
    rotation.mat[1][0] = static_cast<float>(t * ax * ay - s * az);
    rotation.mat[1][1] = static_cast<float>(t * ay * ay + c);
    rotation.mat[1][2] = static_cast<float>(t * az * ay + s * ax);
    rotation.mat[2][0] = static_cast<float>(t * ax * az + s * ay);
    rotation.mat[2][1] = static_cast<float>(t * ay * az - s * ax);
    rotation.mat[2][2] = static_cast<float>(t * az * az + c);
    renderMatrixMultiply(result, &rotation, result);
}

void renderFrustum(RENDERMatrix* result, float left, float right, float bottom, float top, float nearZ,
                   float farZ) {
    if (left == right || bottom == top || nearZ == farZ || nearZ <= 0.0f || farZ <= 0.0f) return;
    const float width = right - left;
    const float height = top - bottom;
    const float depth = farZ - nearZ;

    RENDERMatrix frustum = {};
    frustum.mat[0][0] = 2.0f * nearZ / width;
    frustum.mat[1][1] = 2.0f * nearZ / height;
    frustum.mat[2][0] = (right + left) / width;
    frustum.mat[2][1] = (top + bottom) / height;
    frustum.mat[2][2] = -(farZ + nearZ) / depth;
    frustum.mat[2][3] = -1.0f;
    frustum.mat[3][2] = -2.0f * farZ * nearZ / depth;
    renderMatrixMultiply(result, &frustum, result);
}
