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

#include "image/guided_filter_kernel.h"

#ifdef QUORVANE_PATH
#include <math.h>

#include "image/lanes.h"
#else
#include <algorithm>
#include <cassert>
#include <cstddef>
#include <memory>

#include "quorvane/guided_filter.h"
#endif

namespace quorvane {

#ifndef QUORVANE_PATH

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
    const auto [guide, input, output, width, height, rx, ry, eps, buffer] = f;
    const size_t row_size = static_cast<size_t>(width);
    const size_t image_size = row_size * static_cast<size_t>(height);

    // 16 bytes a pixel for a and b, then one row of 16-byte column sums for either pass, and up to 7 bytes of
    // alignment: within 20 a pixel and 8 a table entry for every size.
    Coefficients* coefficients = alignedTo<Coefficients>(buffer);
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

#else

// Vectors. The window sums of the first pass are whole numbers in 32-bit lanes, taken as differences of
// prefix sums along a row of column sums: all exact modulo 2 to the 32, whatever the order of additions. a
// and b are then turned into whole numbers too, so that the second pass is as exact, gives the same on every
// path, and gathers no error on its way.
//
// Number ranges. Any |a| is at most stdev(p) / (2 sqrt(eps)), which is 0.25 / sqrt(eps) with eps on the scale
// of 0..1, and where eps is small at most 127.5 sqrt(n), since the least variance is about 1 / n. b is kept
// for intensities about 128, so |b| is at most 255 + 128 |a|.
//   Narrow: n^2 cov and n^2 var fit 32 bits with a sign up to n = 363. Floats hold a and b; their window sums
//   fill 32 bits, and the rounding to such numbers shifts a mean by some sqrt(n) |a| 2^-25 levels. This
//   serves small windows. Wide: doubles hold n^2 cov and n^2 var exactly, sums of a and b have 51 bits, and
//   window sums of I * I fit 32 bits up to n = 33025.
// Beyond that, or where the buffer is too low for the prefix sums, the reference takes over.
namespace QUORVANE_PATH {
namespace {

constexpr int kLanes = kBytes / 4;
constexpr float kMiddle = 128.0f;
constexpr double kNarrowWindow = 363.0;
constexpr double kNarrowPrecision = 2400.0;  ///< of sqrt(n) |a|: means are then off by some 0.0001
constexpr double kWideWindow = 33025.0;

/// Arithmetic of small windows.
struct Narrow {
    using Real = f32;
    using Scalar = float;
    using Fixed = u32;  ///< a or b as a whole number, modulo 2 to the 32
    using FixedScalar = uint32_t;
    static constexpr int kVectors = 1;  ///< of Real, to hold as many lanes as a vector of 32-bit numbers

    static Real real(u32 v, int) { return __builtin_convertvector((i32)v, f32); }
    static Real real(Fixed v) { return __builtin_convertvector((i32)v, f32); }
    /// a * b - c * d, less than 2 to the 31.
    static Real difference(u32 a, u32 b, u32 c, u32 d, int) { return real(a * b - c * d); }
    static Fixed fixed(Real v) {
        const i32 half = (i32)(f32{} + 0.5f) | ((i32)v & INT32_MIN);
        return (u32)truncated(v + (f32)half);
    }
    static i32 truncatedAll(const Real* v) { return truncated(v[0]); }
};

/// Arithmetic of larger ones.
struct Wide {
    using Real = f64;
    using Scalar = double;
    using Fixed = u64;
    using FixedScalar = uint64_t;
    static constexpr int kVectors = 2;

    // A whole number of up to 51 bits, added to 1.5 times 2 to the 52, stands in the lowest bits of a double.
    static constexpr double kWhole = 6755399441055744.0;

    static Real real(u32 v, int half) { return toDoubles((i32)v, half); }
    static Real real(Fixed v) { return (f64)(v + (u64)(f64{} + kWhole)) - kWhole; }
    static Real difference(u32 a, u32 b, u32 c, u32 d, int half) {
        return real(a, half) * real(b, half) - real(c, half) * real(d, half);
    }
    static Fixed fixed(Real v) { return (u64)(v + kWhole) - (u64)(f64{} + kWhole); }
    static i32 truncatedAll(const Real* v) { return truncated(v[0], v[1]); }
};

/// Cuts the buffer into areas, none of which any alignment is needed for.
class Areas {
  public:
    explicit Areas(unsigned char* start) : m_next(start) {}
    unsigned char* take(ptrdiff_t bytes) {
        unsigned char* area = m_next;
        m_next += bytes;
        return area;
    }
    const unsigned char* end() const { return m_next; }

  private:
    unsigned char* m_next;
};

template <typename Scalar>
inline void fill(unsigned char* area, ptrdiff_t count, Scalar value) {
    for (ptrdiff_t i = 0; i < count; ++i)
        __builtin_memcpy(area + i * static_cast<ptrdiff_t>(sizeof value), &value, sizeof value);
}

/// Windows along a row of column sums, as differences of its prefix sums. Those are 0 before the row and stay
/// at the row's sum behind it, for as long as a window reaches.
template <typename Sums, typename Scalar>
class Windows {
  public:
    Windows(Areas* areas, int width, int radius)
        : m_width(width),
          m_radius(radius),
          m_columns(areas->take(kScalar * padded(width))),
          m_prefix(areas->take(kScalar * (padded(width) + 2 * radius + 1 + kLanes))) {}
    static constexpr ptrdiff_t kScalar = sizeof(Scalar);
    static ptrdiff_t padded(int width) { return (width + kLanes - 1) / kLanes * kLanes; }

    void clear() {
        fill(m_columns, padded(m_width), Scalar{0});
        fill(m_prefix, m_radius + 1, Scalar{0});
    }

    void startRow() { m_total = Sums{}; }

    /// Adds to the column sums from x on.
    void add(int x, Sums change) {
        unsigned char* column = m_columns + x * kScalar;
        const Sums sums = load<Sums>(column) + change;
        store(column, sums);
        const Sums prefix = prefixSums(sums) + m_total;
        store(m_prefix + (x + m_radius + 1) * kScalar, prefix);
        m_total = splatLast(prefix);
    }

    void endRow() {
        constexpr int lanes = kBytes / kScalar;
        for (ptrdiff_t x = padded(m_width); x < m_width + m_radius; x += lanes)
            store(m_prefix + (x + m_radius + 1) * kScalar, m_total);
    }

    /// The sums of the windows about the columns from x on.
    Sums at(int x) const {
        const unsigned char* first = m_prefix + x * kScalar;
        return load<Sums>(first + (2 * m_radius + 1) * kScalar) - load<Sums>(first);
    }

  private:
    int m_width;
    int m_radius;
    unsigned char* m_columns;
    unsigned char* m_prefix;
    Sums m_total{};
};

/// Row y of an image or of another area with `stride` bytes a row, or `none` where there is no such row.
inline const unsigned char* rowOr(const unsigned char* none, const unsigned char* rows, ptrdiff_t stride,
                                  int y, int height) {
    return y >= 0 && y < height ? rows + y * stride : none;
}

/// False, with nothing written to the output, where the buffer is too small. a and b are kept as multiples of
/// 1 / a_scale and 1 / b_scale.
template <typename Arithmetic>
bool filter(const GuidedFiltering& f, double a_scale, double b_scale) {
    using Real = typename Arithmetic::Real;
    using Scalar = typename Arithmetic::Scalar;
    using Fixed = typename Arithmetic::Fixed;
    using FixedScalar = typename Arithmetic::FixedScalar;
    constexpr int vectors = Arithmetic::kVectors;
    constexpr int real_lanes = kLanes / vectors;
    constexpr ptrdiff_t scalar_size = sizeof(Scalar);
    const ptrdiff_t width = f.width, padded = (width + kLanes - 1) / kLanes * kLanes;
    const ptrdiff_t plane_stride = padded * scalar_size;

    Areas areas(f.buffer);
    unsigned char* nothing = areas.take(plane_stride);
    unsigned char* window_widths = areas.take(4 * padded);
    unsigned char* inverse_widths = areas.take(plane_stride);
    unsigned char* a_plane = areas.take(plane_stride * f.height);
    unsigned char* b_plane = areas.take(plane_stride * f.height);
    Areas second_pass = areas;
    Windows<u32, uint32_t> guide(&areas, f.width, f.rx), input(&areas, f.width, f.rx);
    Windows<u32, uint32_t> product(&areas, f.width, f.rx), square(&areas, f.width, f.rx);
    Windows<Fixed, FixedScalar> a_sums(&second_pass, f.width, f.rx), b_sums(&second_pass, f.width, f.rx);
    const unsigned char* end = f.buffer + 20 * width * f.height + 8 * (width + 1) * (f.height + 1);
    if (areas.end() > end || second_pass.end() > end) return false;

    fill(nothing, padded, Scalar{0});
    for (int x = 0; x < padded; ++x) {
        const int first = x > f.rx ? x - f.rx : 0, last = x + f.rx < f.width ? x + f.rx : f.width - 1;
        const int size = x < f.width ? last - first + 1 : 1;
        fill(window_widths + 4 * x, 1, size);
        fill(inverse_widths + scalar_size * x, 1, Scalar{1} / static_cast<Scalar>(size));
    }
    const auto rows_at = [&](int y) {
        const int first = y > f.ry ? y - f.ry : 0, last = y + f.ry < f.height ? y + f.ry : f.height - 1;
        return last - first + 1;
    };
    const Scalar eps = static_cast<Scalar>(static_cast<double>(f.eps) * 65025.0);

    guide.clear();
    input.clear();
    product.clear();
    square.clear();
    for (int y = -f.ry; y < f.height; ++y) {
        const uint8_t* I_in = rowOr(nothing, f.guide, width, y + f.ry, f.height);
        const uint8_t* p_in = rowOr(nothing, f.input, width, y + f.ry, f.height);
        const uint8_t* I_out = rowOr(nothing, f.guide, width, y - f.ry - 1, f.height);
        const uint8_t* p_out = rowOr(nothing, f.input, width, y - f.ry - 1, f.height);
        guide.startRow();
        input.startRow();
        product.startRow();
        square.startRow();
        for (int x = 0; x < f.width; x += kLanes) {
            const i32 I = loadBytes(I_in + x, f.width - x), p = loadBytes(p_in + x, f.width - x);
            const i32 old_I = loadBytes(I_out + x, f.width - x), old_p = loadBytes(p_out + x, f.width - x);
            guide.add(x, (u32)(I - old_I));
            input.add(x, (u32)(p - old_p));
            product.add(x, (u32)(multiplySmall(I, p) - multiplySmall(old_I, old_p)));
            square.add(x, (u32)(multiplySmall(I, I) - multiplySmall(old_I, old_I)));
        }
        if (y < 0) continue;
        guide.endRow();
        input.endRow();
        product.endRow();
        square.endRow();

        const int rows = rows_at(y);
        const Scalar inverse_rows = Scalar{1} / static_cast<Scalar>(rows);
        for (int x = 0; x < f.width; x += kLanes) {
            const u32 n = load<u32>(window_widths + 4 * x) * static_cast<uint32_t>(rows);
            const u32 sum_I = guide.at(x), sum_p = input.at(x), sum_Ip = product.at(x), sum_II = square.at(x);
            QUORVANE_UNROLLED
            for (int k = 0; k < vectors; ++k) {
                const ptrdiff_t at = (x + k * real_lanes) * scalar_size;
                const Real size = Arithmetic::real(n, k);
                const Real inverse = load<Real>(inverse_widths + at) * inverse_rows;
                // eps acts on 0..1 and the sums on 0..255, both scaled by n^2.
                const Real covariance = Arithmetic::difference(n, sum_Ip, sum_I, sum_p, k);
                const Real denominator =
                    Arithmetic::difference(n, sum_II, sum_I, sum_I, k) + size * size * eps;
                const Fixed some = (Fixed)(denominator > Real{});
                const Real a = (Real)((Fixed)(covariance / denominator) & some);
                const Real mean_I = Arithmetic::real(sum_I, k) * inverse - kMiddle;
                const Real b = Arithmetic::real(sum_p, k) * inverse - a * mean_I;
                store(a_plane + y * plane_stride + at, Arithmetic::fixed(a * static_cast<Scalar>(a_scale)));
                store(b_plane + y * plane_stride + at, Arithmetic::fixed(b * static_cast<Scalar>(b_scale)));
            }
        }
        fill(a_plane + y * plane_stride + width * scalar_size, padded - width, Scalar{0});
        fill(b_plane + y * plane_stride + width * scalar_size, padded - width, Scalar{0});
    }

    a_sums.clear();
    b_sums.clear();
    const Scalar a_unit = static_cast<Scalar>(1.0 / a_scale), b_unit = static_cast<Scalar>(1.0 / b_scale);
    for (int y = -f.ry; y < f.height; ++y) {
        const unsigned char* a_in = rowOr(nothing, a_plane, plane_stride, y + f.ry, f.height);
        const unsigned char* b_in = rowOr(nothing, b_plane, plane_stride, y + f.ry, f.height);
        const unsigned char* a_out = rowOr(nothing, a_plane, plane_stride, y - f.ry - 1, f.height);
        const unsigned char* b_out = rowOr(nothing, b_plane, plane_stride, y - f.ry - 1, f.height);
        a_sums.startRow();
        b_sums.startRow();
        for (int x = 0; x < padded; x += real_lanes) {
            const ptrdiff_t at = x * scalar_size;
            a_sums.add(x, load<Fixed>(a_in + at) - load<Fixed>(a_out + at));
            b_sums.add(x, load<Fixed>(b_in + at) - load<Fixed>(b_out + at));
        }
        if (y < 0) continue;
        a_sums.endRow();
        b_sums.endRow();

        const Scalar inverse_rows = Scalar{1} / static_cast<Scalar>(rows_at(y));
        const uint8_t* I_row = f.guide + y * width;
        for (int x = 0; x < f.width; x += kLanes) {
            const u32 I = (u32)loadBytes(I_row + x, f.width - x);
            Real q[vectors];
            QUORVANE_UNROLLED
            for (int k = 0; k < vectors; ++k) {
                const int first = x + k * real_lanes;
                const Real inverse = load<Real>(inverse_widths + first * scalar_size) * inverse_rows;
                const Real a = Arithmetic::real(a_sums.at(first)) * a_unit;
                const Real b = Arithmetic::real(b_sums.at(first)) * b_unit;
                q[k] = (a * (Arithmetic::real(I, k) - kMiddle) + b) * inverse + Scalar{0.5f};
            }
            storeBytes(f.output + y * width + x, Arithmetic::truncatedAll(q), f.width - x);
        }
    }
    return true;
}

}  // namespace

void guidedFilter(const GuidedFiltering& f) {
    const int columns = 2 * f.rx + 1 < f.width ? 2 * f.rx + 1 : f.width;
    const int rows = 2 * f.ry + 1 < f.height ? 2 * f.ry + 1 : f.height;
    const double n = static_cast<double>(columns) * rows, spread = sqrt(n);
    if (n <= kWideWindow && f.eps >= 0.0f) {
        const double by_eps = 0.25 / sqrt(static_cast<double>(f.eps)), by_size = 127.5 * spread;
        const double largest_a = by_eps < by_size ? by_eps : by_size;
        const double largest_b = 255.0 + kMiddle * largest_a;
        if (n <= kNarrowWindow && spread * largest_a <= kNarrowPrecision) {
            constexpr double room = 0.999 * 2147483648.0;
            if (filter<Narrow>(f, room / (n * largest_a), room / (n * largest_b))) return;
        } else {
            constexpr double room = 1125899906842624.0;
            if (filter<Wide>(f, room / (n * largest_b), room / (n * largest_b))) return;
        }
    }
    reference::guidedFilter(f);
}

}  // namespace QUORVANE_PATH
#endif

}  // namespace quorvane

#ifndef QUORVANE_PATH

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
    const quorvane::GuidedFiltering filtering = {
        guide, input,   output, width, height, std::clamp(rx, 0, width), std::clamp(ry, 0, height),
        eps,   m_buffer};
    quorvane::guidedFilterPaths[quorvane::chosenPath()](filtering);
}

#endif
