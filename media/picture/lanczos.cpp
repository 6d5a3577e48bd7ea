#include "media/picture/lanczos.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "media/picture/wide_vectors.h"

namespace quorvane::media {
namespace {

// Rows are added up in 16 bits, of which vectors hold most. A weight of 1 is kOne. A product has half of its
// sample's steps: samples have 128 to a level and sums 64, which stay below 1.5 times the largest level.
constexpr int kOne = 1 << 14;
constexpr int kSampleBits = 7, kSumBits = 6;

int16_t product(int16_t sample, int16_t weight) {
    return static_cast<int16_t>(((int32_t{sample} * weight >> 14) + 1) >> 1);
}

double lanczos(double x) {
    constexpr double kPi = 3.14159265358979323846, kLobes = 3.0;
    if (x == 0.0) return 1.0;
    if (std::abs(x) >= kLobes) return 0.0;
    return kLobes * std::sin(kPi * x) * std::sin(kPi * x / kLobes) / (kPi * kPi * x * x);
}

/// The samples of a line that each sample of a shorter one is made of.
struct Window {
    int first;
    std::vector<int16_t> weights;  ///< their sum is kOne; as many in every window
};

/// A multiple of `group` samples each; those behind the line's end weigh nothing.
std::vector<Window> windowsOf(int from, int to, int group) {
    const double ratio = static_cast<double>(from) / to, reach = 3.0 * ratio;
    const int most = static_cast<int>(2.0 * reach) + 1;
    const size_t groups = static_cast<size_t>((most + group - 1) / group),
                 taps = groups * static_cast<size_t>(group);
    std::vector<Window> windows(static_cast<size_t>(to));
    for (int i = 0; i < to; ++i) {
        const double centre = (i + 0.5) * ratio - 0.5;
        const int first = static_cast<int>(std::ceil(centre - reach));
        const int last = static_cast<int>(std::floor(centre + reach));
        const int inside = std::clamp(first, 0, from - 1);
        std::vector<double> exact(taps);
        double sum = 0.0;
        for (int at = first; at <= last; ++at) {
            const double weight = lanczos((at - centre) / ratio);
            exact[static_cast<size_t>(std::clamp(at, 0, from - 1) - inside)] += weight;
            sum += weight;
        }
        Window& window = windows[static_cast<size_t>(i)];
        window.first = inside;
        int left = kOne;
        for (const double weight : exact) {
            window.weights.push_back(static_cast<int16_t>(std::lround(weight / sum * kOne)));
            left -= window.weights.back();
        }
        int16_t& largest = *std::max_element(window.weights.begin(), window.weights.end());
        largest = static_cast<int16_t>(largest + left);
    }
    return windows;
}

// Rows are summed four at a time, columns two at a time.
constexpr int kRows = 4, kColumns = kLanes / 4;

/// The photo's rows around the one that is made, as samples of 16 bits.
class Rows {
  public:
    Rows(const RgbImage& photo, size_t kept) : m_photo(photo), m_rows(kept) {}

    /// Of the row `y`, or of the last one.
    const int16_t* at(int y) {
        const int row = std::min(y, m_photo.height - 1);
        Row& kept = m_rows[static_cast<size_t>(row) % m_rows.size()];
        if (kept.y != row) {
            kept.y = row;
            kept.samples.resize(static_cast<size_t>(m_photo.width) * 3);
            withWideVectors([from = m_photo.row(row), to = kept.samples.data(), size = kept.samples.size()] {
                for (size_t i = 0; i < size; ++i) to[i] = static_cast<int16_t>(from[i] << kSampleBits);
            });
        }
        return kept.samples.data();
    }

  private:
    struct Row {
        int y = -1;
        std::vector<int16_t> samples;
    };
    const RgbImage& m_photo;
    std::vector<Row> m_rows;
};

/// Adds up rows.
void sumRows(const Window& window, Rows* rows, std::vector<int16_t>* sums) {
    std::fill(sums->begin(), sums->end(), int16_t{0});
    for (size_t tap = 0; tap < window.weights.size(); tap += kRows) {
        const int y = window.first + static_cast<int>(tap);
        const int16_t *a = rows->at(y), *b = rows->at(y + 1), *c = rows->at(y + 2), *d = rows->at(y + 3);
        const int16_t* weights = &window.weights[tap];
        withWideVectors([=, to = sums->data(), size = sums->size() - 1] {
            for (size_t i = 0; i < size; ++i)
                to[i] = static_cast<int16_t>(to[i] + product(a[i], weights[0]) + product(b[i], weights[1]) +
                                             product(c[i], weights[2]) + product(d[i], weights[3]));
        });
    }
}

void toBytes(const int32_t* sums, size_t count, uint8_t* bytes) {
    for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(std::min(std::max(sums[i], 0), 255));
}

/// Adds up the columns of one row at a time. Its pixels have a fourth sample, which means nothing, so that
/// two of them fill a vector.
class Columns {
  public:
    Columns(int from, int to)
        : m_windows(windowsOf(from, to, kColumns)),
          m_taps(m_windows.front().weights.size()),
          m_spaced(static_cast<size_t>(from) * 4),
          m_pixels((static_cast<size_t>(from) + m_taps) * 4),
          m_sums(m_windows.size() * 4),
          m_bytes(m_windows.size() * 4) {
        for (const Window& window : m_windows)
            for (const int16_t weight : window.weights)
                m_weights.insert(m_weights.end(), 4, static_cast<float>(weight) / (kOne << kSumBits));
    }

    /// `rows`, which were added up, and a sample behind them, become the bytes of a row.
    void sum(const std::vector<int16_t>& rows, uint8_t* bytes) {
        for (size_t x = 0; x < m_spaced.size() / 4; ++x)
            std::memcpy(&m_spaced[4 * x], &rows[3 * x], 4 * sizeof(int16_t));
        withWideVectors([this] {
            for (size_t i = 0; i < m_spaced.size(); ++i) m_pixels[i] = m_spaced[i];
        });
        withWideVectors([this] {
            const size_t samples = 4 * m_taps;
            for (size_t x = 0; x < m_windows.size(); ++x) {
                const float* window = &m_pixels[4 * static_cast<size_t>(m_windows[x].first)];
                const float* weights = &m_weights[samples * x];
                Lanes sums = {};
                for (size_t tap = 0; tap < samples; tap += kLanes)
                    addProducts(window + tap, weights + tap, &sums);
                for (size_t i = 0; i < 4; ++i)
                    m_sums[4 * x + i] = static_cast<int32_t>(sums[i] + sums[i + 4] + 0.5f);
            }
        });
        withWideVectors([this] { toBytes(m_sums.data(), m_sums.size(), m_bytes.data()); });
        for (size_t x = 0; x < m_windows.size(); ++x) std::memcpy(bytes + 3 * x, &m_bytes[4 * x], 3);
    }

  private:
    const std::vector<Window> m_windows;
    const size_t m_taps;            ///< of each window
    std::vector<float> m_weights;   ///< each for all samples of its pixel
    std::vector<int16_t> m_spaced;  ///< sums of rows, four samples a pixel
    std::vector<float> m_pixels;    ///< the same
    std::vector<int32_t> m_sums;    ///< of columns, levels
    std::vector<uint8_t> m_bytes;
};

}  // namespace

RgbImage reducedByLanczos(const RgbImage& photo, Size size) {
    const std::vector<Window> down = windowsOf(photo.height, size.height, kRows);
    Rows rows(photo, down.front().weights.size());
    Columns columns(photo.width, size.width);
    std::vector<int16_t> sums(static_cast<size_t>(photo.width) * 3 + 1);
    RgbImage reduced(size.width, size.height);
    for (int y = 0; y < size.height; ++y) {
        sumRows(down[static_cast<size_t>(y)], &rows, &sums);
        columns.sum(sums, reduced.row(y));
    }
    return reduced;
}

}  // namespace quorvane::media
