#include "media/scene/paint.h"

namespace quorvane::media::paint {
namespace {

uint8_t toByte(float v) { return static_cast<uint8_t>(std::clamp(v, 0.0f, 255.0f) + 0.5f); }

}  // namespace

float latticeValue(int x, int y, uint32_t seed) {
    return unitFloat(scramble(static_cast<uint32_t>(x) * 0x9e3779b1u ^
                              static_cast<uint32_t>(y) * 0x85ebca77u ^ seed * 0xc2b2ae3du));
}

float noise(float x, float y, uint32_t seed) {
    const float fx = std::floor(x), fy = std::floor(y);
    const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
    const float tx = ramp(0, 1, x - fx), ty = ramp(0, 1, y - fy);
    return mix(mix(latticeValue(ix, iy, seed), latticeValue(ix + 1, iy, seed), tx),
               mix(latticeValue(ix, iy + 1, seed), latticeValue(ix + 1, iy + 1, seed), tx), ty);
}

float fractal(float x, float y, int octaves, uint32_t seed) {
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

Colour Canvas::colourAt(int x, int y) const {
    const uint8_t* p = &m_photo.at(x, y);
    return Colour{static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])} *
           (1 / 255.0f);
}

void Canvas::blend(int x, int y, float cover, const Paint& paint) {
    uint8_t* p = &m_photo.at(x, y);
    p[0] = toByte(mix(static_cast<float>(p[0]), paint.colour.r * 255.0f, cover));
    p[1] = toByte(mix(static_cast<float>(p[1]), paint.colour.g * 255.0f, cover));
    p[2] = toByte(mix(static_cast<float>(p[2]), paint.colour.b * 255.0f, cover));
    claimDepth(x, y, cover, toByte(paint.depth));
}

void Canvas::claimDepth(int x, int y, float cover, uint8_t depth) {
    constexpr int kSameLayer = 8;  // levels: the leaves of one tree count together
    const float part = cover * 255.0f;
    const float rest = static_cast<float>(m_share.at(x, y)) * (1.0f - cover);
    const bool same = std::abs(depth - m_depth.at(x, y)) <= kSameLayer;
    if (part >= rest) m_depth.at(x, y) = depth;
    m_share.at(x, y) = toByte(same ? part + rest : std::max(part, rest));
}

}  // namespace quorvane::media::paint
