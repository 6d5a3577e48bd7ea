// Guided image filter on vectors.
//
// Window sums are differences of prefix sums along a row of column sums, in whole numbers modulo 2
// to the 32, and so exact whatever the order of additions. a and b, worked out as floats, become whole
// numbers for the second pass too: multiples of units so small that a window of the largest of them just
// fits. That pass then gathers no error and is the same on every path.
//
// Number ranges. With n pixels in a window, sums of products are at most 65025 n and fit 31 bits up to n =
// 33025. n^2 cov and n^2 var, at most n^2 255^2 / 4, are exact in 32 bits up to n = 363. In larger windows
// those 32 bits are their exact remainder, and floats give them to within 2 to the 26: enough to tell the
// multiple of 2 to the 32 that is missing. b is taken about intensity 128, to be small: q = mean(a) (I - 128)
// + mean(b).
// Rounding to units leaves an error of some sqrt(n) (64 max|a| + max|b|) / 2 to the 33 levels in q. Where
// that exceeds 0.0001, in large windows over a guide that is flat but for a few levels, and where the buffer
// is too low for the prefix sums, the reference takes over. b's own rounding costs up
// to 0.003 levels where the guide is near 0 or 255 and flat but for single levels; luma never is.

#include <cmath>

#include "kernels/guided_filter.h"
#include "kernels/lanes.h"

namespace quorvane::QUORVANE_PATH {
namespace {

constexpr int kLanes = kBytes / 4;
constexpr float kMiddle = 128.0f;
constexpr int kDefaultRadius = 2;
constexpr int kSmallWindow = 363;
constexpr double kLargestWindow = 33025.0;
constexpr double kLargestError = 270000.0;  ///< of sqrt(n) (64 max|a| + max|b|)

/// Cuts the buffer into areas of 32-bit numbers, of no alignment.
class Areas {
  public:
    explicit Areas(unsigned char* start) : m_next(start) {}
    unsigned char* take(ptrdiff_t numbers) {
        unsigned char* area = m_next;
        m_next += 4 * numbers;
        return area;
    }

  private:
    unsigned char* m_next;
};

template <typename Number>
inline void fill(unsigned char* area, ptrdiff_t count, Number value) {
    for (ptrdiff_t i = 0; i < count; ++i) __builtin_memcpy(area + 4 * i, &value, 4);
}

/// The sums of windows along a row of column sums. With a radius of kRadius they are added up as they are.
/// For any other, kRadius 0, they are differences of prefix sums, which are 0 before the row and stay at the
/// row's sum behind it, for as long as a window reaches.
template <int kRadius>
class Windows {
  public:
    Windows(Areas* areas, ptrdiff_t padded, int radius)
        : m_padded(padded),
          m_radius(radius),
          m_columns(areas->take(columnCount(padded))),
          m_prefix(areas->take(prefixCount(padded, radius, kLanes))) {}

    /// Numbers that the columns take, and the prefix sums on vectors of `lanes`.
    static constexpr ptrdiff_t columnCount(ptrdiff_t padded) { return padded + 2 * kRadius; }
    static constexpr ptrdiff_t prefixCount(ptrdiff_t padded, ptrdiff_t radius, ptrdiff_t lanes) {
        return kRadius > 0 ? 0 : padded + 2 * radius + 1 + lanes;
    }

    void clear() {
        fill(m_columns, columnCount(m_padded), 0);
        if (kRadius == 0) fill(m_prefix, m_radius + 1, 0);
    }

    void startRow() { m_total = u32{}; }

    /// Adds to the column sums from x on.
    void add(ptrdiff_t x, u32 change) {
        unsigned char* columns = m_columns + 4 * (x + kRadius);
        const u32 sums = load<u32>(columns) + change;
        store(columns, sums);
        if constexpr (kRadius > 0) return;
        const u32 prefix = prefixSums(sums) + m_total;
        store(m_prefix + 4 * (x + m_radius + 1), prefix);
        m_total = splatLast(prefix);
    }

    void endRow() {
        if constexpr (kRadius > 0) return;
        for (ptrdiff_t x = m_padded; x < m_padded + m_radius; x += kLanes)
            store(m_prefix + 4 * (x + m_radius + 1), m_total);
    }

    /// The sums of the windows about the columns from x on.
    u32 at(ptrdiff_t x) const {
        if constexpr (kRadius == 0)
            return load<u32>(m_prefix + 4 * (x + 2 * m_radius + 1)) - load<u32>(m_prefix + 4 * x);
        u32 sum = load<u32>(m_columns + 4 * x);
        QUORVANE_UNROLLED
        for (int k = 1; k <= 2 * kRadius; ++k) sum += load<u32>(m_columns + 4 * (x + k));
        return sum;
    }

  private:
    ptrdiff_t m_padded;
    ptrdiff_t m_radius;
    unsigned char* m_columns;
    unsigned char* m_prefix;
    u32 m_total{};
};

inline f32 toFloat(u32 v) { return __builtin_convertvector((i32)v, f32); }

/// a * b - c * d, to a float's precision; with kLarge beyond 32 bits.
template <bool kLarge>
inline f32 difference(u32 a, u32 b, u32 c, u32 d) {
    const f32 remainder = toFloat(a * b - c * d);
    if constexpr (!kLarge) return remainder;
    constexpr float two_to_32 = 4294967296.0f;
    const f32 about = toFloat(a) * toFloat(b) - toFloat(c) * toFloat(d);
    return remainder + toFloat((u32)rounded((about - remainder) * (1.0f / two_to_32))) * two_to_32;
}

inline f32 larger(f32 a, f32 b) { return a > b ? a : b; }
inline f32 magnitude(f32 v) { return (f32)((u32)v & 0x7fffffff); }

/// Row y of rows that are `stride` bytes apart, or `none` where there is no such row.
inline const unsigned char* rowOr(const unsigned char* none, const unsigned char* rows, ptrdiff_t stride,
                                  int y, int height) {
    return y >= 0 && y < height ? rows + y * stride : none;
}

/// How many of 0..size - 1 lie within `radius` of `centre`.
inline int windowSize(int centre, int radius, int size) {
    const int first = centre > radius ? centre - radius : 0;
    const int last = centre + radius < size ? centre + radius : size - 1;
    return last - first + 1;
}

/// `width` made up to whole vectors.
constexpr ptrdiff_t paddedTo(ptrdiff_t lanes, ptrdiff_t width) { return (width + lanes - 1) / lanes * lanes; }

/// Whether the buffer is large enough for the areas of the widest path. Narrower ones need less, but all
/// paths have to decide alike: single and double precision may round to different bytes.
template <int kRadius>
bool fitsBuffer(const GuidedFiltering& f) {
    constexpr ptrdiff_t lanes = kWidestBytes / 4;
    const ptrdiff_t padded = paddedTo(lanes, f.width);
    const ptrdiff_t windows =
        Windows<kRadius>::columnCount(padded) + Windows<kRadius>::prefixCount(padded, f.rx, lanes);
    return 4 * ((4 + 2 * f.height) * padded + 4 * windows) <= guidedFilterBufferSize(f.width, f.height);
}

/// Returns false, the output untouched, where the reference has to do it.
template <bool kLarge, int kRadius>
bool filter(const GuidedFiltering& f, double largest_window) {
    if (!fitsBuffer<kRadius>(f)) return false;
    const ptrdiff_t width = f.width, padded = paddedTo(kLanes, width);

    Areas areas(f.buffer);
    unsigned char* nothing = areas.take(padded);
    unsigned char* window_widths = areas.take(padded);
    unsigned char* inverse_widths = areas.take(padded);
    unsigned char* width_squares = areas.take(padded);
    unsigned char* a_plane = areas.take(padded * f.height);
    unsigned char* b_plane = areas.take(padded * f.height);
    Windows<kRadius> guide(&areas, padded, f.rx), input(&areas, padded, f.rx);
    Windows<kRadius> product(&areas, padded, f.rx), square(&areas, padded, f.rx);

    fill(nothing, padded, 0);
    for (int x = 0; x < padded; ++x) {
        const int size = x < f.width ? windowSize(x, f.rx, f.width) : 0;
        const float real = static_cast<float>(size);
        // Beyond the row no denominator is positive and no b other than 0, and so a is 0 there too.
        fill(window_widths + 4 * x, 1, size);
        fill(inverse_widths + 4 * x, 1, size > 0 ? 1.0f / real : 0.0f);
        fill(width_squares + 4 * x, 1, size > 0 ? real * real : -INFINITY);
    }

    // eps acts on 0..1 and the sums on 0..255, both scaled by n^2.
    const float eps = static_cast<float>(static_cast<double>(f.eps) * 65025.0);
    f32 largest_a{}, largest_b{};
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
            const int left = f.width - x;
            const i32 I = loadBytes(I_in + x, left), p = loadBytes(p_in + x, left);
            const i32 old_I = loadBytes(I_out + x, left), old_p = loadBytes(p_out + x, left);
            guide.add(x, (u32)(I - old_I));
            input.add(x, (u32)(p - old_p));
            product.add(x, (u32)(multiplySmall(I, p) - multiplySmall(old_I, old_p)));
            square.add(x, (u32)multiplySmall(I - old_I, I + old_I));
        }
        if (y < 0) continue;
        guide.endRow();
        input.endRow();
        product.endRow();
        square.endRow();

        const int rows = windowSize(y, f.ry, f.height);
        const float inverse_rows = 1.0f / static_cast<float>(rows);
        const float row_eps = static_cast<float>(rows) * static_cast<float>(rows) * eps;
        unsigned char* a_row = a_plane + 4 * padded * y;
        unsigned char* b_row = b_plane + 4 * padded * y;
        for (ptrdiff_t x = 0; x < padded; x += kLanes) {
            const u32 n = load<u32>(window_widths + 4 * x) * static_cast<uint32_t>(rows);
            const f32 inverse = load<f32>(inverse_widths + 4 * x) * inverse_rows;
            const u32 sum_I = guide.at(x), sum_p = input.at(x);
            const f32 covariance = difference<kLarge>(n, product.at(x), sum_I, sum_p);
            const f32 variance = difference<kLarge>(n, square.at(x), sum_I, sum_I);
            const f32 denominator = variance + load<f32>(width_squares + 4 * x) * row_eps;
            const f32 a = (f32)((u32)(covariance / denominator) & (u32)(denominator > 0.0f));
            const f32 b = (toFloat(sum_p) - a * toFloat(sum_I - n * 128)) * inverse;
            store(a_row + 4 * x, a);
            store(b_row + 4 * x, b);
            largest_a = larger(magnitude(a), largest_a);
            largest_b = larger(magnitude(b), largest_b);
        }
    }

    double a_bound = 1.0, b_bound = 1.0;
    for (int i = 0; i < kLanes; ++i) {
        if (largest_a[i] > a_bound) a_bound = largest_a[i];
        if (largest_b[i] > b_bound) b_bound = largest_b[i];
    }
    if (sqrt(largest_window) * (64.0 * a_bound + b_bound) > kLargestError) return false;
    constexpr double room = 2147483648.0 - 65536.0;
    const float a_units = static_cast<float>(room / (largest_window * (a_bound + 1e-3)));
    const float b_units = static_cast<float>(room / (largest_window * (b_bound + 1e-3)));
    const float a_unit = 1.0f / a_units, b_unit = 1.0f / b_units;

    // The areas of the first pass are free.
    Windows<kRadius>& a_sums = guide;
    Windows<kRadius>& b_sums = input;
    a_sums.clear();
    b_sums.clear();
    for (int y = -f.ry; y < f.height; ++y) {
        const unsigned char* a_in = rowOr(nothing, a_plane, 4 * padded, y + f.ry, f.height);
        const unsigned char* b_in = rowOr(nothing, b_plane, 4 * padded, y + f.ry, f.height);
        const unsigned char* a_out = rowOr(nothing, a_plane, 4 * padded, y - f.ry - 1, f.height);
        const unsigned char* b_out = rowOr(nothing, b_plane, 4 * padded, y - f.ry - 1, f.height);
        a_sums.startRow();
        b_sums.startRow();
        const auto inUnits = [](const unsigned char* p, float units) {
            return (u32)rounded(load<f32>(p) * units);
        };
        for (ptrdiff_t x = 0; x < padded; x += kLanes) {
            a_sums.add(x, inUnits(a_in + 4 * x, a_units) - inUnits(a_out + 4 * x, a_units));
            b_sums.add(x, inUnits(b_in + 4 * x, b_units) - inUnits(b_out + 4 * x, b_units));
        }
        if (y < 0) continue;
        a_sums.endRow();
        b_sums.endRow();

        const float inverse_rows = 1.0f / static_cast<float>(windowSize(y, f.ry, f.height));
        const uint8_t* I_row = f.guide + y * width;
        uint8_t* out = f.output + y * width;
        for (int x = 0; x < f.width; x += kLanes) {
            const int left = f.width - x;
            const f32 inverse = load<f32>(inverse_widths + ptrdiff_t{4} * x) * inverse_rows;
            const f32 I = toFloat((u32)loadBytes(I_row + x, left)) - kMiddle;
            const f32 q = (toFloat(a_sums.at(x)) * (I * a_unit) + toFloat(b_sums.at(x)) * b_unit) * inverse;
            storeBytes(out + x, truncated(q + 0.5f), left);
        }
    }
    return true;
}

}  // namespace

void guidedFilter(const GuidedFiltering& f) {
    const double n = static_cast<double>(2 * f.rx + 1 < f.width ? 2 * f.rx + 1 : f.width) *
                     (2 * f.ry + 1 < f.height ? 2 * f.ry + 1 : f.height);
    const auto kernel = n > kSmallWindow         ? filter<true, 0>
                        : f.rx == kDefaultRadius ? filter<false, kDefaultRadius>
                                                 : filter<false, 0>;
    const bool exact_sums = n <= kLargestWindow && f.eps >= 0.0f;
    if (!exact_sums || !kernel(f, n)) reference::guidedFilter(f);
}

}  // namespace quorvane::QUORVANE_PATH
