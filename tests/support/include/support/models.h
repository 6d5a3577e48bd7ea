#ifndef QUORVANE_TESTS_SUPPORT_MODELS_H
#define QUORVANE_TESTS_SUPPORT_MODELS_H

#include <quorvane/renderUtility.h>

#include <array>
#include <cstdint>
#include <vector>

// What the component computes, worked out another way: slower, plainer, in wider arithmetic. Nothing here
// uses the component's code.

namespace quorvane::test {

using Bytes = std::vector<uint8_t>;

/// The low-pass weights of a reduction by `ratio`, and how many of them lie before the block.
struct Weights {
    std::vector<int> values;
    int margin;
};
Weights weightsOf(int ratio);

/// A gray reduction: the image is padded by repeating its edges, then filtered along rows, then along
/// columns.
Bytes reducedGray(const Bytes& source, int src_w, int src_h, int dst_w, int dst_h);

/// A colour reduction to luma. `source` holds the image and, behind it, whatever lies there: the right border
/// reads on along the rows, past the last one too.
Bytes reducedLuma(const Bytes& source, int src_w, int src_h, int dst_w, int dst_h);

/// Every sample's five-point cross average, truncated, the edge repeated.
Bytes crossAverage(const Bytes& plane, int width, int height);

/// The guided filter from its definition, window by window, unrounded. `eps` acts on intensities 0..1;
/// windows are clipped to the image.
std::vector<double> guidedFilter(const Bytes& guide, const Bytes& input, int width, int height, int rx,
                                 int ry, double eps);

/// The same from tables of sums over rectangles, in whole numbers and long doubles: as exact, and wide
/// windows cost no more than narrow ones.
std::vector<double> guidedFilterBySums(const Bytes& guide, const Bytes& input, int width, int height, int rx,
                                       int ry, double eps);

/// The contrast curve, typed in a second time.
extern const std::array<uint8_t, 256> kContrastCurve;

/// A matrix in the usual mathematical order: m[row][column], acting on column vectors.
struct Matrix {
    double m[4][4];
};
struct Vector {
    double x, y, z, w;
};
Matrix identityMatrix();
Matrix operator*(const Matrix& a, const Matrix& b);
Vector operator*(const Matrix& a, const Vector& v);
Matrix translation(double x, double y, double z);
/// Counter-clockwise for a viewer towards whom the axis points; the axis has length 1.
Matrix rotation(double degrees, double x, double y, double z);
Matrix frustum(double left, double right, double bottom, double top, double near_z, double far_z);
/// What a shader sees of the record.
Matrix shaderView(const RENDERMatrix& record);

}  // namespace quorvane::test

#endif
