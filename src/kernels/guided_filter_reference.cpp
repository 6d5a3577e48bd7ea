// Guided image filter: q = mean(a) I + mean(b), with a = cov(I, p) / (var(I) + eps) and b = mean(p) - a
// mean(I) over box windows clipped to the image.
//
// Two passes down the image, each with one row of column sums that gains a row and loses one as its window
// moves, and a running sum along that row: the cost of a pixel does not depend on the window. The first pass
// reads both images and leaves a and b; only the second writes the output, so it may be the input.
//
// Number ranges. A column sum of I * I is at most 65025 a row: 32 bits hold 66051 rows. Window sums are
// 64-bit, and exact as doubles. In a window of one intensity the means of I and I * I are exact too, and so a
// flat guide has a variance of exactly 0. Its covariance is 0 by definition, and with it a.

#include <algorithm>
#include <cstddef>
#include <memory>

#include "kernels/guided_filter.h"

namespace quorvane {
namespace {

struct ColumnSums {
    uint32_t guide;
    uint32_t input;
    uint32_t product;
    uint32_t square;
};

struct Coefficients {
    double a;
    double b;
};

/// The pixels first..last of one axis.
struct Window {
    int first;
    int last;
    int size() const { return last - first + 1; }
};

/// The window of `radius` around `centre`, clipped to 0..n-1.
Window windowAt(int centre, int radius, int n) {
    return {std::max(centre - radius, 0), std::min(centre + radius, n - 1)};
}

uint8_t toByte(double q) {
    if (!(q > 0.0)) return 0;
    if (q >= 255.0) return 255;
    return static_cast<uint8_t>(q + 0.5);
}

template <typename T>
T* alignedTo(unsigned char* address) {
    const uintptr_t mask = alignof(T) - 1;
    return reinterpret_cast<T*>((reinterpret_cast<uintptr_t>(address) + mask) & ~mask);
}

}  // namespace

void reference::guidedFilter(const GuidedFiltering& f) {
    const unsigned char* guide = f.guide;
    const unsigned char* input = f.input;
    const int width = f.width, height = f.height, rx = f.rx, ry = f.ry;
    const size_t row_size = static_cast<size_t>(width);
    const size_t image_size = row_size * static_cast<size_t>(height);

    // 16 bytes a pixel for a and b, then one row of 16-byte column sums for either pass, and up to 7 bytes of
    // alignment: within 20 a pixel and 8 a table entry for every size.
    Coefficients* coefficients = alignedTo<Coefficients>(f.buffer);
    ColumnSums* sums = reinterpret_cast<ColumnSums*>(coefficients + image_size);
    Coefficients* coefficient_sums = coefficients + image_size;

    const auto add_row = [=](int y, uint32_t sign) {
        const unsigned char* I = guide + static_cast<size_t>(y) * row_size;
        const unsigned char* p = input + static_cast<size_t>(y) * row_size;
        for (size_t x = 0; x < row_size; ++x) {
            sums[x].guide += sign * I[x];
            sums[x].input += sign * p[x];
            sums[x].product += sign * (uint32_t{I[x]} * p[x]);
            sums[x].square += sign * (uint32_t{I[x]} * I[x]);
        }
    };
    constexpr uint32_t kPlus = 1;
    constexpr uint32_t kMinus = ~uint32_t{0};

    std::uninitialized_fill_n(sums, row_size, ColumnSums{});
    for (int y = 0; y < std::min(ry, height); ++y) add_row(y, kPlus);
    for (int y = 0; y < height; ++y) {
        if (y + ry < height) add_row(y + ry, kPlus);
        if (y - ry > 0) add_row(y - ry - 1, kMinus);
        const int rows = windowAt(y, ry, height).size();

        uint64_t sum_I = 0, sum_p = 0, sum_Ip = 0, sum_II = 0;
        const auto add_column = [&](int x, uint64_t sign) {
            const ColumnSums& column = sums[x];
            sum_I += sign * column.guide;
            sum_p += sign * column.input;
            sum_Ip += sign * column.product;
            sum_II += sign * column.square;
        };
        for (int x = 0; x < std::min(rx, width); ++x) add_column(x, 1);
        Coefficients* out = coefficients + static_cast<size_t>(y) * row_size;
        for (int x = 0; x < width; ++x) {
            if (x + rx < width) add_column(x + rx, 1);
            if (x - rx > 0) add_column(x - rx - 1, ~uint64_t{0});

            const double n = static_cast<double>(rows) * windowAt(x, rx, width).size();
            const double mean_I = static_cast<double>(sum_I) / n, mean_p = static_cast<double>(sum_p) / n;
            const double variance = static_cast<double>(sum_II) / n - mean_I * mean_I;
            // mean_p is not exact: an eps small enough would make a slope of its rounding.
            const double covariance =
                variance > 0.0 ? static_cast<double>(sum_Ip) / n - mean_I * mean_p : 0.0;
            // eps acts on intensities 0..1.
            const double denominator = variance + static_cast<double>(f.eps) * 65025.0;
            const double a = denominator > 0.0 ? covariance / denominator : 0.0;
            *out++ = {a, mean_p - a * mean_I};
        }
    }

    const auto add_coefficient_row = [=](int y, double sign) {
        const Coefficients* row = coefficients + static_cast<size_t>(y) * row_size;
        for (size_t x = 0; x < row_size; ++x) {
            coefficient_sums[x].a += sign * row[x].a;
            coefficient_sums[x].b += sign * row[x].b;
        }
    };
    std::uninitialized_fill_n(coefficient_sums, row_size, Coefficients{});
    for (int y = 0; y < std::min(ry, height); ++y) add_coefficient_row(y, 1.0);
    for (int y = 0; y < height; ++y) {
        if (y + ry < height) add_coefficient_row(y + ry, 1.0);
        if (y - ry > 0) add_coefficient_row(y - ry - 1, -1.0);
        const int rows = windowAt(y, ry, height).size();

        double sum_a = 0.0, sum_b = 0.0;
        for (int x = 0; x < std::min(rx, width); ++x) {
            sum_a += coefficient_sums[x].a;
            sum_b += coefficient_sums[x].b;
        }
        const size_t row_start = static_cast<size_t>(y) * row_size;
        const unsigned char* I = guide + row_start;
        unsigned char* q = f.output + row_start;
        for (int x = 0; x < width; ++x) {
            if (x + rx < width) {
                sum_a += coefficient_sums[x + rx].a;
                sum_b += coefficient_sums[x + rx].b;
            }
            if (x - rx > 0) {
                sum_a -= coefficient_sums[x - rx - 1].a;
                sum_b -= coefficient_sums[x - rx - 1].b;
            }
            const double n = static_cast<double>(rows) * windowAt(x, rx, width).size();
            q[x] = toByte(sum_a / n * I[x] + sum_b / n);
        }
    }
}

}  // namespace quorvane
