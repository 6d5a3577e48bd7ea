#include "apps/quorvane/drawing/parallel_view.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace quorvane::app {
namespace {

constexpr double kRadians = 3.14159265358979323846 / 180.0;

/// Four neighbours and their shares, by the cubic of E. Catmull and R. Rom. They lie at and above `first`.
struct Taps {
    int first = 0;
    std::array<float, 4> shares{};
};

/// For the place `at`, in samples, whose middles are at .5.
Taps tapsAt(double at) {
    const double shifted = at - 0.5, whole = std::floor(shifted);
    const auto t = static_cast<float>(shifted - whole);
    Taps taps;
    taps.first = static_cast<int>(whole) - 1;
    taps.shares = {t * (-0.5f + t * (1.0f - 0.5f * t)), 1.0f + t * t * (1.5f * t - 2.5f),
                   t * (0.5f + t * (2.0f - 1.5f * t)), t * t * (0.5f * t - 0.5f)};
    return taps;
}

uint8_t rounded(float level) { return static_cast<uint8_t>(std::clamp(level, 0.0f, 255.0f) + 0.5f); }

/// Where the picture of the parallel camera finds its places in that of the turned one.
class Places {
  public:
    Places(const Lens& lens, double turn_deg, double zoom)
        : m_lens(lens),
          m_zoom(zoom),
          m_tangent(std::tan(-turn_deg * kRadians)),
          m_cosine(std::cos(turn_deg * kRadians)) {}

    // Both from -1 to 1, from the left and the top.

    double column(double x) const {
        return across(x) / (1.0 + m_tangent * (m_tangent + across(x))) / m_lens.half_width;
    }

    /// How many times as far from the middle row as in the parallel picture.
    double rowScale(double x) const {
        return 1.0 / (m_zoom * m_cosine * (1.0 + m_tangent * (m_tangent + across(x))));
    }

  private:
    double across(double x) const { return x * m_lens.half_width / m_zoom; }

    Lens m_lens;
    double m_zoom, m_tangent, m_cosine;
};

}  // namespace

double zoomForParallel(const Lens& lens, double turn_deg) {
    const double tangent = std::fabs(std::tan(turn_deg * kRadians));
    const double cosine = std::cos(turn_deg * kRadians);
    // The corner that lies farthest out comes from the picture's border then: from its side, or from its top.
    const double side = (1.0 + tangent * lens.half_width) / (1.0 + tangent * tangent);
    const double top = cosine + tangent * lens.half_width * cosine * cosine;
    return std::max({1.0, side, top});
}

void makeParallel(const media::RgbaImage& picture, const Lens& lens, double turn_deg, double zoom,
                  media::RgbaImage* out) {
    const int width = picture.width, height = picture.height;
    if (out->width != width || out->height != height) *out = media::RgbaImage(width, height);
    const Places places(lens, turn_deg, zoom);
    std::vector<Taps> columns(static_cast<size_t>(width));
    std::vector<double> scales(static_cast<size_t>(width));
    for (int x = 0; x < width; ++x) {
        const double place = (2.0 * x + 1.0) / width - 1.0;
        columns[static_cast<size_t>(x)] = tapsAt((places.column(place) + 1.0) / 2.0 * width);
        scales[static_cast<size_t>(x)] = places.rowScale(place);
    }

    // A column of the one comes from a column of the other, so each axis is sampled for itself.
    media::RgbaImage across(width, height);
    for (int y = 0; y < height; ++y) {
        const uint8_t* from = picture.row(y);
        uint8_t* to = across.row(y);
        for (int x = 0; x < width; ++x, to += 4) {
            const Taps& taps = columns[static_cast<size_t>(x)];
            float sum[4] = {};
            for (int k = 0; k < 4; ++k) {
                const uint8_t* tap =
                    from + static_cast<ptrdiff_t>(std::clamp(taps.first + k, 0, width - 1)) * 4;
                for (int c = 0; c < 4; ++c)
                    sum[c] += taps.shares[static_cast<size_t>(k)] * static_cast<float>(tap[c]);
            }
            for (int c = 0; c < 4; ++c) to[c] = rounded(sum[c]);
        }
    }
    for (int y = 0; y < height; ++y) {
        const double place = (2.0 * y + 1.0) / height - 1.0;
        uint8_t* to = out->row(y);
        for (int x = 0; x < width; ++x, to += 4) {
            const Taps taps = tapsAt((place * scales[static_cast<size_t>(x)] + 1.0) / 2.0 * height);
            float sum[4] = {};
            for (int k = 0; k < 4; ++k) {
                const uint8_t* tap = &across.at(x, std::clamp(taps.first + k, 0, height - 1));
                for (int c = 0; c < 4; ++c)
                    sum[c] += taps.shares[static_cast<size_t>(k)] * static_cast<float>(tap[c]);
            }
            for (int c = 0; c < 4; ++c) to[c] = rounded(sum[c]);
        }
    }
}

}  // namespace quorvane::app
