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

inline float latticeValue(int x, int y, uint32_t seed) {
    return unitFloat(scramble(static_cast<uint32_t>(x) * 0x9e3779b1u ^
                              static_cast<uint32_t>(y) * 0x85ebca77u ^ seed * 0xc2b2ae3du));
}

/// Smooth noise, 0..1, one lattice cell a unit.
inline float noise(float x, float y, uint32_t seed) {
    const float fx = std::floor(x), fy = std::floor(y);
    const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
    const float tx = ramp(0, 1, x - fx), ty = ramp(0, 1, y - fy);
    return mix(mix(latticeValue(ix, iy, seed), latticeValue(ix + 1, iy, seed), tx),
               mix(latticeValue(ix, iy + 1, seed), latticeValue(ix + 1, iy + 1, seed), tx), ty);
}

/// Octaves of noise, each half as strong and twice as fine as the one before; about 0..1.
inline float fractal(float x, float y, int octaves, uint32_t seed) {
    float sum = 0, weight = 0, strength = 1;
    for (int i = 0; i < octaves; ++i) {
        sum += strength * noise(x, y, seed + static_cast<uint32_t>(i));
        weight += strength;
        strength *= 0.5f;
        x = x * 2.0f + 17.3f;
        y = y * 2.0f + 9.1f;
    }
    return sum / weight;
}

class Dice {
  public:
    explicit Dice(uint32_t seed) : seed_(scramble(seed)) {}
    float between(float low, float high) { return mix(low, high, unitFloat(scramble(seed_ += 0x9e3779b9u))); }

  private:
    uint32_t seed_;
};

struct Paint {
    Colour colour;
    float depth;
};

/// The picture while it is painted, from far to near, with anti-aliased shapes. Lengths are in pixels.
class Canvas {
  public:
    Canvas(int width, int height) : photo_(width, height), depth_(width, height), share_(depth_.samples) {}

    int width() const { return photo_.width; }
    int height() const { return photo_.height; }

    Colour colourAt(int x, int y) const {
        const uint8_t* p = &photo_.samples[index(x, y) * 3];
        return Colour{static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])} *
               (1 / 255.0f);
    }

    /// Lays paint over the part `cover` (0..1) of a pixel.
    void blend(int x, int y, float cover, const Paint& paint) {
        const size_t i = index(x, y);
        uint8_t* p = &photo_.samples[i * 3];
        p[0] = toByte(mix(static_cast<float>(p[0]), paint.colour.r * 255.0f, cover));
        p[1] = toByte(mix(static_cast<float>(p[1]), paint.colour.g * 255.0f, cover));
        p[2] = toByte(mix(static_cast<float>(p[2]), paint.colour.b * 255.0f, cover));
        claimDepth(i, cover, toByte(paint.depth));
    }

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
        const float wideX = std::max(rx, 0.5f), wideY = std::max(ry, 0.5f);
        const float reach = std::max(wideX, wideY) + 1;
        visit({centre.x - reach, centre.y - reach}, {centre.x + reach, centre.y + reach},
              [&](int x, int y, Point p) {
                  const float px = p.x - centre.x, py = p.y - centre.y;
                  const Point q = {(px * c + py * s) / wideX, (py * c - px * s) / wideY};
                  const float norm = std::sqrt(q.x * q.x + q.y * q.y);
                  const float cover =
                      clamp01((1.0f - norm) * std::min(wideX, wideY) + 0.5f) * (rx * ry / (wideX * wideY));
                  if (cover > 0) blend(x, y, cover, shade(q));
              });
    }

    const RgbImage& photo() const { return photo_; }
    const GrayImage& depth() const { return depth_; }

  private:
    static uint8_t toByte(float v) { return static_cast<uint8_t>(std::clamp(v, 0.0f, 255.0f) + 0.5f); }

    size_t index(int x, int y) const {
        return static_cast<size_t>(y) * static_cast<size_t>(width()) + static_cast<size_t>(x);
    }

    /// A pixel's depth goes to the layer that covers most of it; `share_` is the part its owner still covers.
    void claimDepth(size_t i, float cover, uint8_t depth) {
        constexpr int kSameLayer = 8;  // levels: the leaves of one tree count together
        const float part = cover * 255.0f;
        const float rest = static_cast<float>(share_[i]) * (1.0f - cover);
        const bool same = std::abs(depth - depth_.samples[i]) <= kSameLayer;
        if (part >= rest) depth_.samples[i] = depth;
        share_[i] = toByte(same ? part + rest : std::max(part, rest));
    }

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

    RgbImage photo_;
    GrayImage depth_;
    std::vector<uint8_t> share_;
};

}  // namespace quorvane::media::paint

#endif
