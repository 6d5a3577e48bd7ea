#include "composition/rim.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace quorvane {
namespace {

constexpr double kPi = 3.14159265358979323846;

/// By how much 1 / distance may change at each place of a side of `length` samples. A point at distance Z
/// moves by sin(turn) * (1 - pivot / Z), where a half side is `half_side` / kGridDistance.
std::vector<double> easing(int length, double half_side, double pivot, double turn_deg) {
    const double turn = std::sin(std::abs(turn_deg) * kPi / 180.0);
    const double rim = kRim * length;
    std::vector<double> changes(static_cast<size_t>(length), 0.0);
    if (turn <= 0.0) return changes;
    const double at_border = kRimStretch * 2.0 * kRim * half_side / (kGridDistance * pivot * turn);
    for (int i = 0; i < length; ++i) {
        const double from_border = std::min(i + 0.5, length - i - 0.5);
        changes[static_cast<size_t>(i)] = at_border * std::max(0.0, 1.0 - from_border / rim);
    }
    return changes;
}

}  // namespace

void easeRim(uint8_t* depth, Size size, const uint8_t (&curve)[256], const BentGrid& grid,
             const Camera& camera, ViewPosition reach) {
    const std::vector<double> across =
        easing(size.width, grid.half_width, camera.pivot_distance, camera.x_turn_deg * reach.x);
    const std::vector<double> down =
        easing(size.height, grid.half_height, camera.pivot_distance, camera.y_turn_deg * reach.y);
    const double pivot = 1.0 / camera.pivot_distance;
    // For each level, the lowest depth that the curve maps to it or above.
    std::array<uint8_t, 256> source = {};
    for (size_t level = 0, i = 0; level < source.size(); ++level) {
        while (i < 255 && curve[i] < level) ++i;
        source[level] = static_cast<uint8_t>(i);
    }
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x, ++depth) {
            const double most = std::max(across[static_cast<size_t>(x)], down[static_cast<size_t>(y)]);
            if (most <= 0.0) continue;
            const double nearness = 1.0 / distanceOf(curve[*depth]);
            const double eased = nearness + std::clamp(pivot - nearness, -most, most);
            // The inverse of distanceOf.
            const double level = 255.0 * ((kGridDistance - 1.0 / eased) / 0.4 + 32.0) / 35.0;
            const auto whole = static_cast<int>(std::lround(std::clamp(level, 0.0, 255.0)));
            if (whole != curve[*depth]) *depth = source[static_cast<size_t>(whole)];
        }
}

}  // namespace quorvane
