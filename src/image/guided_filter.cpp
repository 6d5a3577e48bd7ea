// Guided image filter: q = mean(a) I + mean(b), with a = cov(I, p) / (var(I) + eps) and b = mean(p) - a
// mean(I) over box windows clipped to the image.
//
// Two passes down the image, each with one row of column sums that gains a row and loses one as its window
// moves, and a running sum along that row: the cost of a pixel does not depend on the window. The first pass
// reads both images and leaves a and b; only the second writes the output, so it may be the input.
//
// Number ranges. A column sum of I * I is at most 65025 a row: 32 bits hold 66051 rows. Window sums are
// 64-bit. With n pixels in the window, n^2 var and n^2 cov are formed modulo 2 to the 64, and their true size
// is at most n^2 255^2 / 4: exact up to n = 23.8 million, beyond which the working block outgrows its 32-bit
// size. So a flat guide has a variance of exactly 0, and with it a = 0.

#include "quorvane/guided_filter.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>

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

guided_filter_qrv::guided_filter_qrv() : m_buffer(nullptr), m_width(0), m_height(0) {}

guided_filter_qrv::~guided_filter_qrv() { guided_filter_qrv::releaseBuffer(); }

int guided_filter_qrv::bufferSize(int width, int height) const {
    return 20 * width * height + 8 * (width + 1) * (height + 1);
}

unsigned char* guided_filter_qrv::buffer() const { return m_buffer; }

void guided_filter_qrv::assignBuffer(int width, int height, unsigned char* buffer) {
    m_buffer = buffer;
    m_width = width;
    m_height = height;
}

bool guided_filter_qrv::accepts(int width, int height) const {
    return m_buffer != nullptr && bufferSize(width, height) <= bufferSize(m_width, m_height);
}

void guided_filter_qrv::releaseBuffer() {
    m_buffer = nullptr;
    m_width = 0;
    m_height = 0;
}

void guided_filter_qrv::operator()(unsigned char* guide, unsigned char* input, unsigned char* output,
                                   int width, int height, int rx, int ry, float eps) {
    if (m_buffer == nullptr) return;
    assert(accepts(width, height) && height <= 66051);
    rx = std::clamp(rx, 0, width);
    ry = std::clamp(ry, 0, height);
    const size_t row_size = static_cast<size_t>(width);
    const size_t image_size = row_size * static_cast<size_t>(height);

    // 16 bytes a pixel for a and b, then one row of 16-byte column sums for either pass, and up to 7 bytes of
    // alignment: within 20 a pixel and 8 a table entry for every size.
    Coefficients* coefficients = alignedTo<Coefficients>(m_buffer);
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

            const uint64_t n =
                static_cast<uint64_t>(rows) * static_cast<uint64_t>(windowAt(x, rx, width).size());
            const double count = static_cast<double>(n);
            const double covariance = static_cast<double>(static_cast<int64_t>(n * sum_Ip - sum_I * sum_p));
            const double variance = static_cast<double>(static_cast<int64_t>(n * sum_II - sum_I * sum_I));
            // eps acts on 0..1 and the sums on 0..255, both scaled by n^2.
            const double denominator = variance + static_cast<double>(eps) * 65025.0 * count * count;
            const double a = denominator > 0.0 ? covariance / denominator : 0.0;
            *out++ = {a, (static_cast<double>(sum_p) - a * static_cast<double>(sum_I)) / count};
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
        unsigned char* q = output + row_start;
        for (int x = 0; x < width; ++x) {
            if (x + rx < width) {
                sum_a += coefficient_sums[x + rx].a;
                sum_b += coefficient_sums[x + rx].b;
            }
            if (x - rx > 0) {
                sum_a -= coefficient_sums[x - rx - 1].a;
                sum_b -= coefficient_sums[x - rx - 1].b;
            }
            const double count = static_cast<double>(rows) * windowAt(x, rx, width).size();
            q[x] = toByte((sum_a * I[x] + sum_b) / count);
        }
    }
}
