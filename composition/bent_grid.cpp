#include "composition/bent_grid.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace quorvane {
namespace {

constexpr double kPi = 3.14159265358979323846;

double linear(const ShapedDepth& depth, double u, double v) {
    const double x = u * depth.width - 0.5, y = v * depth.height - 0.5;
    const double left = std::floor(x), top = std::floor(y);
    const auto sample = [&](double column, double row) {
        const auto i = static_cast<size_t>(std::clamp(column, 0.0, depth.width - 1.0));
        const auto j = static_cast<size_t>(std::clamp(row, 0.0, depth.height - 1.0));
        return static_cast<double>(depth.samples[j * static_cast<size_t>(depth.width) + i]);
    };
    const double right_share = x - left, low_share = y - top;
    const auto row = [&](double at) {
        return sample(left, at) * (1.0 - right_share) + sample(left + 1.0, at) * right_share;
    };
    return row(top) * (1.0 - low_share) + row(top + 1.0) * low_share;
}

}  // namespace

GridVertex vertexOf(const BentGrid& grid, int column, int row) {
    const double u = static_cast<double>(column) / grid.depth.width;
    const double v = static_cast<double>(row) / grid.depth.height;
    const double distance = distanceOf(linear(grid.depth, u, v));
    return {(2.0 * u - 1.0) * grid.half_width * distance / kGridDistance,
            (2.0 * v - 1.0) * grid.half_height * distance / kGridDistance, distance};
}

Turn::Turn(const Camera& camera, ViewPosition position)
    : m_pivot(camera.pivot_distance),
      m_sin_x(std::sin(-position.y * camera.y_turn_deg * kPi / 180.0)),
      m_cos_x(std::cos(-position.y * camera.y_turn_deg * kPi / 180.0)),
      m_sin_y(std::sin(-position.x * camera.x_turn_deg * kPi / 180.0)),
      m_cos_y(std::cos(-position.x * camera.x_turn_deg * kPi / 180.0)) {}

}  // namespace quorvane
