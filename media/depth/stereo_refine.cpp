#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <utility>
#include <vector>

#include "media/depth/depth_holes.h"
#include "media/depth/stereo_match.h"

namespace quorvane::media {
namespace {

/// What lies around a pixel that is not sure: of the nearest sure disparities in eight directions a low one,
/// so that the farther surface goes on behind the nearer.
void fill(const Disparities& from, Plane* plane) {
    const int w = plane->width, h = plane->height;
    constexpr std::array<std::pair<int, int>, 8> kDirections = {
        {{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {-1, -1}, {1, -1}, {-1, 1}, {1, 1}}};
    const int reach = std::max(w, h) / 4;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            if (from.sure.at(x, y) != 0 || from.flat.at(x, y) != 0) continue;
            std::optional<float> lowest, second;
            for (const auto& [dx, dy] : kDirections)
                for (int step = 1; step <= reach; ++step) {
                    const int there_x = x + step * dx, there_y = y + step * dy;
                    if (there_x < 0 || there_x >= w || there_y < 0 || there_y >= h) break;
                    if (from.sure.at(there_x, there_y) == 0) continue;
                    const float found = from.plane.at(there_x, there_y);
                    if (!lowest || found < *lowest)
                        second = std::exchange(lowest, found);
                    else if (!second || found < *second)
                        second = found;
                    break;
                }
            if (second)
                plane->at(x, y) = *second;
            else if (lowest)
                plane->at(x, y) = *lowest;
        }
}

/// How far a disparity's neighbours are from each other, at most, on a smooth surface.
constexpr float kStep = 1.5f;

/// 255 near steps and where nothing was sure.
GrayImage doubtful(const Plane& plane, const GrayImage& sure, int reach) {
    const int w = plane.width, h = plane.height;
    GrayImage marked(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            bool near_step = sure.at(x, y) == 0;
            const auto differs = [&](int nx, int ny) {
                return nx < w && ny < h && std::abs(plane.at(nx, ny) - plane.at(x, y)) > kStep;
            };
            near_step = near_step || differs(x + 1, y) || differs(x, y + 1);
            marked.at(x, y) = near_step ? 255 : 0;
        }
    // Widened in rows, then in columns.
    GrayImage wide(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0, left = 0; x < w + reach; ++x) {
            if (x < w && marked.at(x, y) != 0) left = 2 * reach + 1;
            if (left > 0 && x - reach >= 0) wide.at(x - reach, y) = 255;
            if (left > 0) --left;
        }
    for (int x = 0; x < w; ++x)
        for (int y = 0, left = 0; y < h + reach; ++y) {
            if (y < h && wide.at(x, y) != 0) left = 2 * reach + 1;
            if (left > 0 && y - reach >= 0) marked.at(x, y - reach) = 255;
            if (left > 0) --left;
        }
    return marked;
}

/// The disparities of a window as weights in bins of half a pixel.
class Histogram {
  public:
    Histogram(float lowest, float highest)
        : m_lowest(lowest), m_weights(bin(highest) + 1), m_sums(m_weights.size()) {}

    void clear() {
        std::fill(m_weights.begin(), m_weights.end(), 0.0f);
        std::fill(m_sums.begin(), m_sums.end(), 0.0f);
        m_total = 0.0f;
    }
    void add(float value, float weight) {
        const size_t i = bin(value);
        m_weights[i] += weight;
        m_sums[i] += weight * value;
        m_total += weight;
    }
    float median() const {
        float below = 0.0f;
        for (size_t i = 0; i < m_weights.size(); ++i) {
            below += m_weights[i];
            if (below >= m_total / 2 && m_weights[i] > 0.0f) return m_sums[i] / m_weights[i];
        }
        return m_lowest;
    }

  private:
    size_t bin(float value) const { return static_cast<size_t>(std::max(0.0f, (value - m_lowest) * 2.0f)); }

    float m_lowest, m_total = 0.0f;
    std::vector<float> m_weights, m_sums;
};

/// Where `where` is set, the median of the surroundings, in which pixels of the same colour weigh most.
Plane medians(const std::vector<Plane>& photo, const Plane& plane, const GrayImage& sure,
              const GrayImage& where, int reach) {
    constexpr float kColour = 10.0f;  // levels, all channels together
    constexpr float kUnsure = 0.1f;
    std::array<float, 766> colour_weights;
    for (size_t i = 0; i < colour_weights.size(); ++i)
        colour_weights[i] = std::exp(-static_cast<float>(i) / (3.0f * kColour));
    const int w = plane.width, h = plane.height;
    const auto [lowest, highest] = std::minmax_element(plane.samples.begin(), plane.samples.end());
    Histogram histogram(*lowest, *highest);
    Plane out = plane;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            if (where.at(x, y) == 0) continue;
            histogram.clear();
            for (int ny = std::max(0, y - reach); ny <= std::min(h - 1, y + reach); ++ny)
                for (int nx = std::max(0, x - reach); nx <= std::min(w - 1, x + reach); ++nx) {
                    float difference = 0.0f;
                    for (const Plane& channel : photo)
                        difference += std::abs(channel.at(nx, ny) - channel.at(x, y));
                    histogram.add(plane.at(nx, ny), colour_weights[static_cast<size_t>(difference)] *
                                                        (sure.at(nx, ny) != 0 ? 1.0f : kUnsure));
                }
            out.at(x, y) = histogram.median();
        }
    return out;
}

}  // namespace

void refine(const std::vector<Plane>& photo, Disparities* disparities) {
    Plane filled = disparities->plane;
    fill(*disparities, &filled);
    // Nothing tells a flat part from what surrounds it.
    GrayImage known = disparities->flat;
    for (uint8_t& sample : known.samples) sample = sample != 0 ? 0 : 255;
    fillFromNeighbours(std::move(known), &filled);
    constexpr int kReach = 7;
    const GrayImage where = doubtful(filled, disparities->sure, kReach / 2);
    disparities->plane = medians(photo, filled, disparities->sure, where, kReach);
}

}  // namespace quorvane::media
