#ifndef QUORVANE_MEDIA_SCENE_PAINT_H
#define QUORVANE_MEDIA_SCENE_PAINT_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/picture/image.h"

namespace quorvane::media::paint {

inline constexpr float kPi = 3.14159265f;

struct Point {
    float x, y;
};

inline float distance(Point a, Point b) { return std::hypot(a.x - b.x, a.y - b.y); }

/// Red, green and blue, each 0..1.
struct Colour {
    float r, g, b;
};

inline Colour operator*(Colour c, float k) { return {c.r * k, c.g * k, c.b * k}; }
inline Colour operator+(Colour a, Colour b) { return {a.r + b.r, a.g + b.g, a.b + b.b}; }

constexpr Colour fromHex(uint32_t hex) {
    return {static_cast<float>(hex >> 16 & 255) / 255.0f, static_cast<float>(hex >> 8 & 255) / 255.0f,
            static_cast<float>(hex & 255) / 255.0f};
}

inline float clamp01(float v) { return std::clamp(v, 0.0f, 1.0f); }
inline float mix(float a, float b, float t) { return a + (b - a) * t; }
inline Colour mix(Colour a, Colour b, float t) { return a * (1.0f - t) + b * t; }

/// 0 up to `low`, 1 from `high`, smooth between.
inline float ramp(float low, float high, float v) {
    const float t = clamp01((v - low) / (high - low));
    return t * t * (3.0f - 2.0f * t);
}

/// A bell of height 1 around 0.
inline float bell(float v) { return std::exp(-v * v); }

// Chance by integer hashes, so that every run draws the same.

inline uint32_t scramble(uint32_t h) {
    h = (h ^ (h >> 16)) * 0x7feb352du;
    h = (h ^ (h >> 15)) * 0x846ca68bu;
    return h ^ (h >> 16);
}

inline float unitFloat(uint32_t h) { return static_cast<float>(h >> 8) / 16777216.0f; }

/// A value of 0..1 for every point of a lattice.
float latticeValue(int x, int y, uint32_t seed);

/// Smooth noise, 0..1, one lattice cell a unit.
float noise(float x, float y, uint32_t seed);

/// Octaves of noise, each half as strong and twice as fine as the one before; about 0..1.
float fractal(float x, float y, int octaves, uint32_t seed);

class Dice {
  public:
    explicit Dice(uint32_t seed) : m_seed(scramble(seed)) {}
    float between(float low, float high) {
        return mix(low, high, unitFloat(scramble(m_seed += 0x9e3779b9u)));
    }

  private:
    uint32_t m_seed;
};

struct Paint {
    Colour colour;
    float depth;
};

/// The picture while it is painted, from far to near, with anti-aliased shapes. Lengths are in pixels.
class Canvas {
  public:
    Canvas(int width, int height) : m_photo(width, height), m_depth(width, height), m_share(width, height) {}

    int width() const { return m_photo.width; }
    int height() const { return m_photo.height; }

    Colour colourAt(int x, int y) const;

    /// Lays paint over the part `cover` (0..1) of a pixel.
    void blend(int x, int y, float cover, const Paint& paint);

    /// Fills what lies below the line `top` (a row for each column) and above the row `bottom`.
    /// `shade` gives the paint of a pixel: Paint(int x, int y).
    template <typename Shade>
    void fillBelow(const std::vector<float>& top, int bottom, Shade shade) {
        const int first = static_cast<int>(*std::min_element(top.begin(), top.end())) - 2;
        for (int y = std::max(first, 0); y < std::min(bottom, height()); ++y) {
            for (int x = 0; x < width(); ++x) {
                const auto column = static_cast<size_t>(x);
                const float next = top[std::min(column + 1, top.size() - 1)];
                // A steep edge crosses more than one row of the column.
                const float rows = std::max(1.0f, std::abs(next - top[column]));
                const float cover = clamp01((static_cast<float>(y) + 0.5f - top[column]) / rows + 0.5f);
                if (cover > 0) blend(x, y, cover, shade(x, y));
            }
        }
    }

    /// Draws a rounded stroke from a to b whose radius goes from ra to rb. `shade` gives its paint:
    /// Paint(along, across), along from 0 at a to 1 at b (round ends reach past both), across -1..1, positive
    /// at the right of a stroke that goes up.
    template <typename Shade>
    void stroke(Point a, float ra, Point b, float rb, Shade shade) {
        const float reach = std::max(ra, rb) + 1;
        const float dx = b.x - a.x, dy = b.y - a.y;
        const float length = std::max(std::sqrt(dx * dx + dy * dy), 1e-3f);
        visit({std::min(a.x, b.x) - reach, std::min(a.y, b.y) - reach},
              {std::max(a.x, b.x) + reach, std::max(a.y, b.y) + reach}, [&](int x, int y, Point p) {
                  const float px = p.x - a.x, py = p.y - a.y;
                  const float along = (px * dx + py * dy) / (length * length), on = clamp01(along);
                  const float ox = px - on * dx, oy = py - on * dy;
                  const float radius = mix(ra, rb, on);
                  // A stroke thinner than a pixel stays a pixel wide and fades instead.
                  const float wide = std::max(radius, 0.5f);
                  const float cover = clamp01(wide - std::sqrt(ox * ox + oy * oy) + 0.5f) * (radius / wide);
                  if (cover <= 0) return;
                  const float across = (px * -dy + py * dx) / length / wide;
                  blend(x, y, cover, shade(along, std::clamp(across, -1.0f, 1.0f)));
              });
    }

    /// Draws an ellipse with half axes rx and ry, turned by `turn` radians.
    /// `shade` gives its paint from the place on the unit disc: Paint(Point).
    template <typename Shade>
    void ellipse(Point centre, float rx, float ry, float turn, Shade shade) {
        const float c = std::cos(turn), s = std::sin(turn);
        const float wide_x = std::max(rx, 0.5f), wide_y = std::max(ry, 0.5f);
        const float reach = std::max(wide_x, wide_y) + 1;
        visit({centre.x - reach, centre.y - reach}, {centre.x + reach, centre.y + reach},
              [&](int x, int y, Point p) {
                  const float px = p.x - centre.x, py = p.y - centre.y;
                  const Point q = {(px * c + py * s) / wide_x, (py * c - px * s) / wide_y};
                  const float norm = std::sqrt(q.x * q.x + q.y * q.y);
                  const float cover = clamp01((1.0f - norm) * std::min(wide_x, wide_y) + 0.5f) *
                                      (rx * ry / (wide_x * wide_y));
                  if (cover > 0) blend(x, y, cover, shade(q));
              });
    }

    const RgbImage& photo() const { return m_photo; }
    const GrayImage& depth() const { return m_depth; }

  private:
    /// A pixel's depth goes to the layer that covers most of it; `m_share` is the part its owner still
    /// covers.
    void claimDepth(int x, int y, float cover, uint8_t depth);

    /// Calls `each` (column, row, middle of the pixel) for the pixels of a box that lie on the canvas.
    template <typename Each>
    void visit(Point low, Point high, Each each) const {
        const int left = std::max(static_cast<int>(low.x), 0), top = std::max(static_cast<int>(low.y), 0);
        const int right = std::min(static_cast<int>(high.x), width() - 1);
        const int bottom = std::min(static_cast<int>(high.y), height() - 1);
        for (int y = top; y <= bottom; ++y) {
            for (int x = left; x <= right; ++x) {
                each(x, y, Point{static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f});
            }
        }
    }

    RgbImage m_photo;
    GrayImage m_depth;
    GrayImage m_share;
};

}  // namespace quorvane::media::paint

#endif
