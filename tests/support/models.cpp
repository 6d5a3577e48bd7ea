#include "support/models.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace quorvane::test {

Weights weightsOf(int ratio) {
    switch (ratio) {
        case 1: return {{256}, 0};
        case 2: return {{48, 80, 80, 48}, 1};
        case 4: return {{4, 18, 43, 63, 63, 43, 18, 4}, 2};
        case 8: return {{4, 10, 17, 26, 33, 38, 38, 33, 26, 17, 10, 4}, 2};
        case 16:
            return {{1,  1,  2,  3,  4,  5,  7,  8, 10, 12, 13, 14, 15, 16, 16,
                     16, 16, 15, 14, 13, 12, 10, 8, 7,  5,  4,  3,  2,  1,  1},
                    7};
        case 32:
            return {{1, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 7, 8, 8, 8, 8, 9, 9, 9,
                     9, 8, 8, 8, 8, 8, 7, 7, 7, 6, 6, 5, 5, 4, 4, 3, 3, 3, 2, 2, 2, 1, 1, 1, 1, 0},
                    10};
        default: std::abort();
    }
}

namespace {

/// Filters rows `src_w` wide that `sample(y, x)` gives, for any x, then columns with their ends repeated.
template <typename Sample>
Bytes separablyReduced(int src_w, int src_h, int dst_w, int dst_h, Sample sample) {
    const int ratio_h = src_w / dst_w;
    const int ratio_v = src_h / dst_h;
    const Weights across = weightsOf(ratio_h);
    const Weights down = weightsOf(ratio_v);

    std::vector<std::vector<int64_t>> rows(static_cast<size_t>(src_h));
    for (int y = 0; y < src_h; ++y)
        for (int i = 0; i < dst_w; ++i) {
            int64_t sum = 0;
            for (size_t k = 0; k < across.values.size(); ++k)
                sum +=
                    int64_t{across.values[k]} * sample(y, i * ratio_h, static_cast<int>(k) - across.margin);
            rows[static_cast<size_t>(y)].push_back(sum);
        }

    Bytes reduced;
    for (int j = 0; j < dst_h; ++j)
        for (int i = 0; i < dst_w; ++i) {
            int64_t sum = 0;
            for (size_t l = 0; l < down.values.size(); ++l) {
                const int y = std::clamp(j * ratio_v - down.margin + static_cast<int>(l), 0, src_h - 1);
                sum += down.values[l] * rows[static_cast<size_t>(y)][static_cast<size_t>(i)];
            }
            // Round to nearest in units of 2 to the 16.
            reduced.push_back(static_cast<uint8_t>((sum + 32768) / 65536));
        }
    return reduced;
}

}  // namespace

Bytes reducedGray(const Bytes& source, int src_w, int src_h, int dst_w, int dst_h) {
    return separablyReduced(src_w, src_h, dst_w, dst_h, [&](int y, int block, int tap) {
        return int{source[static_cast<size_t>(y * src_w + std::clamp(block + tap, 0, src_w - 1))]};
    });
}

Bytes reducedLuma(const Bytes& source, int src_w, int src_h, int dst_w, int dst_h) {
    std::vector<int> luma;
    for (size_t i = 0; i + 2 < source.size(); i += 3)
        luma.push_back(16 + (66 * source[i] + 129 * source[i + 1] + 25 * source[i + 2] + 128) / 256);
    return separablyReduced(src_w, src_h, dst_w, dst_h, [&](int y, int block, int tap) {
        // The test runs in bytes from the block but in single steps; the fetch runs in pixels.
        const int tested = 3 * block + tap;
        int x = block + tap;
        if (tested < 0) x = 0;
        if (tested >= 3 * src_w) x = src_w - 1;
        return luma.at(static_cast<size_t>(y * src_w + x));
    });
}

Bytes crossAverage(const Bytes& plane, int width, int height) {
    const auto at = [&](int x, int y) {
        return int{
            plane[static_cast<size_t>(std::clamp(y, 0, height - 1) * width + std::clamp(x, 0, width - 1))]};
    };
    Bytes result;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            result.push_back(static_cast<uint8_t>(
                (at(x, y) + at(x - 1, y) + at(x + 1, y) + at(x, y - 1) + at(x, y + 1)) / 5));
    return result;
}

std::vector<double> guidedFilter(const Bytes& guide, const Bytes& input, int width, int height, int rx,
                                 int ry, double eps) {
    const auto over_window = [&](int cx, int cy, auto&& visit) {
        int n = 0;
        for (int y = std::max(cy - ry, 0); y <= std::min(cy + ry, height - 1); ++y)
            for (int x = std::max(cx - rx, 0); x <= std::min(cx + rx, width - 1); ++x) {
                visit(static_cast<size_t>(y * width + x));
                ++n;
            }
        return static_cast<double>(n);
    };

    const size_t pixels = guide.size();
    std::vector<double> a(pixels), b(pixels), q(pixels);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            double mean_I = 0, mean_p = 0;
            const double n = over_window(x, y, [&](size_t i) {
                mean_I += guide[i] / 255.0;
                mean_p += input[i] / 255.0;
            });
            mean_I /= n;
            mean_p /= n;
            // About the means: no cancellation, unlike the mean of squares less the square of the mean.
            double covariance = 0, variance = 0;
            over_window(x, y, [&](size_t i) {
                covariance += (guide[i] / 255.0 - mean_I) * (input[i] / 255.0 - mean_p);
                variance += (guide[i] / 255.0 - mean_I) * (guide[i] / 255.0 - mean_I);
            });
            const size_t k = static_cast<size_t>(y * width + x);
            const double denominator = variance / n + eps;
            a[k] = denominator > 0 ? covariance / n / denominator : 0.0;
            b[k] = mean_p - a[k] * mean_I;
        }
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            double mean_a = 0, mean_b = 0;
            const double n = over_window(x, y, [&](size_t i) {
                mean_a += a[i];
                mean_b += b[i];
            });
            const size_t k = static_cast<size_t>(y * width + x);
            q[k] = std::clamp((mean_a / n * guide[k] / 255.0 + mean_b / n) * 255.0, 0.0, 255.0);
        }
    return q;
}

namespace {

/// Sums of values over any rectangle of a picture.
template <typename Sum>
class RectangleSums {
  public:
    template <typename Value>
    RectangleSums(int width, int height, Value value)
        : m_stride(static_cast<size_t>(width) + 1), m_corners(m_stride * (static_cast<size_t>(height) + 1)) {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                at(x + 1, y + 1) =
                    value(static_cast<size_t>(y * width + x)) + at(x, y + 1) + at(x + 1, y) - at(x, y);
    }
    /// Over columns left..right and rows top..bottom.
    Sum over(int left, int top, int right, int bottom) const {
        return at(right + 1, bottom + 1) - at(left, bottom + 1) - at(right + 1, top) + at(left, top);
    }

  private:
    Sum& at(int x, int y) { return m_corners[static_cast<size_t>(y) * m_stride + static_cast<size_t>(x)]; }
    const Sum& at(int x, int y) const {
        return m_corners[static_cast<size_t>(y) * m_stride + static_cast<size_t>(x)];
    }

    size_t m_stride;
    std::vector<Sum> m_corners;
};

}  // namespace

std::vector<double> guidedFilterBySums(const Bytes& guide, const Bytes& input, int width, int height, int rx,
                                       int ry, double eps) {
    const auto for_every_window = [&](auto&& visit) {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const int left = std::max(x - rx, 0), right = std::min(x + rx, width - 1);
                const int top = std::max(y - ry, 0), bottom = std::min(y + ry, height - 1);
                visit(static_cast<size_t>(y * width + x), int64_t{right - left + 1} * (bottom - top + 1),
                      [=](const auto& sums) { return sums.over(left, top, right, bottom); });
            }
    };

    using Whole = RectangleSums<int64_t>;
    const Whole I(width, height, [&](size_t i) { return guide[i]; });
    const Whole p(width, height, [&](size_t i) { return input[i]; });
    const Whole Ip(width, height, [&](size_t i) { return guide[i] * input[i]; });
    const Whole II(width, height, [&](size_t i) { return guide[i] * guide[i]; });
    std::vector<long double> a(guide.size()), b(guide.size());
    for_every_window([&](size_t i, int64_t n, auto&& sum) {
        const auto size = static_cast<long double>(n);
        const auto covariance = static_cast<long double>(n * sum(Ip) - sum(I) * sum(p)) / (size * size);
        const auto variance = static_cast<long double>(n * sum(II) - sum(I) * sum(I)) / (size * size);
        const long double denominator = variance + static_cast<long double>(eps) * 255 * 255;
        a[i] = denominator > 0 ? covariance / denominator : 0;
        b[i] = (static_cast<long double>(sum(p)) - a[i] * static_cast<long double>(sum(I))) / size;
    });

    using Real = RectangleSums<long double>;
    const Real all_a(width, height, [&](size_t i) { return a[i]; });
    const Real all_b(width, height, [&](size_t i) { return b[i]; });
    std::vector<double> q(guide.size());
    for_every_window([&](size_t i, int64_t n, auto&& sum) {
        const long double value = (sum(all_a) * guide[i] + sum(all_b)) / static_cast<long double>(n);
        q[i] = std::clamp(static_cast<double>(value), 0.0, 255.0);
    });
    return q;
}

// clang-format off
const std::array<uint8_t, 256> kContrastCurve = {
    0, 2, 4, 6, 8, 10, 12, 13, 15, 17, 19, 21, 23, 25, 27, 28,
    30, 32, 34, 36, 38, 39, 41, 43, 45, 47, 48, 50, 52, 54, 55, 57,
    59, 61, 62, 64, 66, 67, 69, 71, 72, 74, 76, 77, 79, 81, 82, 84,
    85, 87, 89, 90, 92, 93, 95, 97, 98, 100, 101, 103, 104, 106, 107, 109,
    110, 112, 113, 115, 116, 118, 119, 121, 122, 123, 125, 126, 128, 129, 130, 132,
    133, 135, 136, 137, 139, 140, 141, 143, 144, 145, 146, 148, 149, 150, 152, 153,
    154, 155, 157, 158, 159, 160, 161, 163, 164, 165, 166, 167, 169, 170, 171, 172,
    173, 174, 175, 177, 178, 179, 180, 181, 182, 183, 184, 185, 186, 187, 188, 189,
    190, 191, 192, 193, 194, 195, 196, 197, 198, 199, 200, 201, 202, 203, 204, 205,
    205, 206, 207, 208, 209, 210, 211, 211, 212, 213, 214, 215, 215, 216, 217, 218,
    219, 219, 220, 221, 222, 222, 223, 224, 224, 225, 226, 226, 227, 228, 228, 229,
    230, 230, 231, 232, 232, 233, 233, 234, 235, 235, 236, 236, 237, 237, 238, 238,
    239, 239, 240, 240, 241, 241, 242, 242, 243, 243, 244, 244, 244, 245, 245, 246,
    246, 246, 247, 247, 247, 248, 248, 248, 249, 249, 249, 250, 250, 250, 251, 251,
    251, 251, 252, 252, 252, 252, 252, 253, 253, 253, 253, 253, 254, 254, 254, 254,
    254, 254, 254, 254, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255,
};
// clang-format on

Matrix identityMatrix() {
    Matrix matrix = {};
    for (int i = 0; i < 4; ++i) matrix.m[i][i] = 1.0;
    return matrix;
}

Matrix operator*(const Matrix& a, const Matrix& b) {
    Matrix product = {};
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            for (int k = 0; k < 4; ++k) product.m[row][column] += a.m[row][k] * b.m[k][column];
    return product;
}

Vector operator*(const Matrix& a, const Vector& v) {
    const double in[4] = {v.x, v.y, v.z, v.w};
    double out[4] = {};
    for (int row = 0; row < 4; ++row)
        for (int k = 0; k < 4; ++k) out[row] += a.m[row][k] * in[k];
    return {out[0], out[1], out[2], out[3]};
}

Matrix translation(double x, double y, double z) {
    Matrix matrix = identityMatrix();
    matrix.m[0][3] = x;
    matrix.m[1][3] = y;
    matrix.m[2][3] = z;
    return matrix;
}

Matrix rotation(double degrees, double x, double y, double z) {
    const double radians = degrees * std::acos(-1.0) / 180.0;
    const double axis[3] = {x, y, z};
    Matrix matrix = identityMatrix();
    // Each column is a turned unit vector e: e cos + (axis x e) sin + axis (axis . e)(1 - cos).
    for (int column = 0; column < 3; ++column) {
        double e[3] = {};
        e[column] = 1.0;
        const double cross[3] = {y * e[2] - z * e[1], z * e[0] - x * e[2], x * e[1] - y * e[0]};
        for (int row = 0; row < 3; ++row)
            matrix.m[row][column] = e[row] * std::cos(radians) + cross[row] * std::sin(radians) +
                                    axis[row] * axis[column] * (1.0 - std::cos(radians));
    }
    return matrix;
}

Matrix frustum(double left, double right, double bottom, double top, double near_z, double far_z) {
    Matrix matrix = {};
    matrix.m[0][0] = 2.0 * near_z / (right - left);
    matrix.m[0][2] = (right + left) / (right - left);
    matrix.m[1][1] = 2.0 * near_z / (top - bottom);
    matrix.m[1][2] = (top + bottom) / (top - bottom);
    matrix.m[2][2] = -(far_z + near_z) / (far_z - near_z);
    matrix.m[2][3] = -2.0 * far_z * near_z / (far_z - near_z);
    matrix.m[3][2] = -1.0;
    return matrix;
}

Matrix shaderView(const RENDERMatrix& record) {
    Matrix matrix = {};
    for (int column = 0; column < 4; ++column)
        for (int row = 0; row < 4; ++row) matrix.m[row][column] = double{record.mat[column][row]};
    return matrix;
}

}  // namespace quorvane::test
