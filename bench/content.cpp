#include "content.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace quorvane::bench {
namespace {

class Random {
  public:
    explicit Random(uint64_t seed) : m_state(seed * 0x9e3779b97f4a7c15u + 1) {}
    uint64_t next() {
        m_state ^= m_state >> 12;
        m_state ^= m_state << 25;
        m_state ^= m_state >> 27;
        return m_state * 0x2545f4914f6cdd1du;
    }

  private:
    uint64_t m_state;
};

/// Positions and radii as parts of the picture's height.
struct Disc {
    float x, y, radius;
    int colour[3];
    int depth;
};

constexpr std::array<Disc, 4> kDiscs = {{{0.35f, 0.40f, 0.22f, {190, 120, 60}, 130},
                                         {0.95f, 0.65f, 0.30f, {60, 110, 170}, 170},
                                         {0.60f, 0.80f, 0.16f, {200, 190, 80}, 220},
                                         {1.20f, 0.25f, 0.10f, {90, 160, 90}, 90}}};

/// The disc in front at (x, y), null for the background.
const Disc* discAt(float x, float y) {
    const Disc* front = nullptr;
    for (const Disc& disc : kDiscs) {
        const float dx = x - disc.x, dy = y - disc.y;
        if (dx * dx + dy * dy < disc.radius * disc.radius && (front == nullptr || disc.depth > front->depth))
            front = &disc;
    }
    return front;
}

uint8_t toByte(int value) { return static_cast<uint8_t>(std::clamp(value, 0, 255)); }

/// Calls pixel(disc or null, shade 0..1 across and down, random number) for every pixel of a row-major
/// picture.
template <typename Pixel>
void paint(int width, int height, uint64_t seed, Pixel pixel) {
    Random random(seed);
    const float step = 1.0f / static_cast<float>(height);
    for (int j = 0; j < height; ++j) {
        const float y = step * static_cast<float>(j);
        for (int i = 0; i < width; ++i) {
            const float x = step * static_cast<float>(i);
            pixel(discAt(x, y), x * 0.5f, y, random.next());
        }
    }
}

}  // namespace

void fillWithNoise(uint8_t* bytes, size_t count, uint64_t seed) {
    Random random(seed);
    for (size_t i = 0; i < count; i += 8) {
        const uint64_t eight = random.next();
        std::memcpy(bytes + i, &eight, std::min<size_t>(8, count - i));
    }
}

Bytes noise(size_t count, uint64_t seed) {
    Bytes bytes(count);
    fillWithNoise(bytes.data(), count, seed);
    return bytes;
}

Bytes scenePhoto(int width, int height) {
    Bytes photo;
    photo.reserve(size_t{3} * static_cast<size_t>(width) * static_cast<size_t>(height));
    paint(width, height, 1, [&](const Disc* disc, float across, float down, uint64_t random) {
        constexpr int kSky[3] = {90, 130, 200};
        const int shade = static_cast<int>(60.0f * down - 40.0f * across);
        for (int c = 0; c < 3; ++c) {
            const int grain = static_cast<int>(random >> (8 * c) & 7) - 4;
            photo.push_back(toByte((disc != nullptr ? disc->colour[c] : kSky[c]) + shade + grain));
        }
    });
    return photo;
}

Bytes sceneDepth(int width, int height) {
    Bytes depth;
    depth.reserve(static_cast<size_t>(width) * static_cast<size_t>(height));
    paint(width, height, 2, [&](const Disc* disc, float across, float down, uint64_t random) {
        const int shade = static_cast<int>(40.0f * down + 10.0f * across);
        depth.push_back(
            toByte((disc != nullptr ? disc->depth : 20) + shade + static_cast<int>(random >> 60) / 8));
    });
    // Estimated depth never has its edges quite where the photo has them.
    const size_t row = static_cast<size_t>(width);
    for (size_t y = 0; y < static_cast<size_t>(height); y += 3)
        std::copy_backward(depth.begin() + static_cast<ptrdiff_t>(y * row),
                           depth.begin() + static_cast<ptrdiff_t>((y + 1) * row - 1),
                           depth.begin() + static_cast<ptrdiff_t>((y + 1) * row));
    return depth;
}

}  // namespace quorvane::bench
