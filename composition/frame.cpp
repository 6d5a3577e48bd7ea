#include "composition/frame.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace quorvane {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kNearDistance = 12.0;

// What drivers round: texture lookups at the outline weigh two samples with steps of 1 / 256.
constexpr double kRounding = 1.0 / 4096.0;

struct Point {
    double x, y;  ///< 1 is the edge of the picture at a `fov_scale` of 1
};

/// The grid's outline, bent and in object units, without the view's turn.
struct Vertex {
    double x, y, distance;
};

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

/// Once around, each corner once.
std::vector<Vertex> outlineOf(const BentGrid& grid) {
    const int width = grid.depth.width, height = grid.depth.height;
    std::vector<Vertex> outline;
    outline.reserve(2 * static_cast<size_t>(width + height));
    const auto add = [&](int column, int row) {
        const double u = static_cast<double>(column) / width;
        const double v = static_cast<double>(row) / height;
        const double distance = distanceOf(linear(grid.depth, u, v));
        outline.push_back({(2.0 * u - 1.0) * grid.half_width * distance / kGridDistance,
                           (2.0 * v - 1.0) * grid.half_height * distance / kGridDistance, distance});
    };
    for (int i = 0; i < width; ++i) add(i, 0);
    for (int j = 0; j < height; ++j) add(width, j);
    for (int i = width; i > 0; --i) add(i, height);
    for (int j = height; j > 0; --j) add(0, j);
    return outline;
}

/// The camera's turn for a position: about the X axis first, then about the Y axis, both through the pivot.
class Turn {
  public:
    Turn(const Camera& camera, ViewPosition position)
        : m_pivot(camera.pivot_distance),
          m_sin_x(std::sin(-position.y * camera.y_turn_deg * kPi / 180.0)),
          m_cos_x(std::cos(-position.y * camera.y_turn_deg * kPi / 180.0)),
          m_sin_y(std::sin(-position.x * camera.x_turn_deg * kPi / 180.0)),
          m_cos_y(std::cos(-position.x * camera.x_turn_deg * kPi / 180.0)) {}

    Vertex operator()(const Vertex& vertex) const {
        const double z = m_pivot - vertex.distance;
        const double y = vertex.y * m_cos_x - z * m_sin_x;
        const double z1 = vertex.y * m_sin_x + z * m_cos_x;
        const double x = vertex.x * m_cos_y + z1 * m_sin_y;
        const double z2 = -vertex.x * m_sin_y + z1 * m_cos_y;
        return {x, y, m_pivot - z2};
    }

  private:
    double m_pivot, m_sin_x, m_cos_x, m_sin_y, m_cos_y;
};

/// The smallest larger coordinate of any point from `a` to `b`: how large a square around the middle stays
/// clear of the segment. The larger of |x| and |y| is convex along it, so the least lies at an end or where
/// two of the four linear pieces meet.
double clearance(const Point& a, const Point& b) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const auto at = [&](double t) { return std::max(std::abs(a.x + t * dx), std::abs(a.y + t * dy)); };
    double least = std::min(at(0.0), at(1.0));
    const auto consider = [&](double numerator, double denominator) {
        if (denominator == 0.0) return;
        const double t = numerator / denominator;
        if (t > 0.0 && t < 1.0) least = std::min(least, at(t));
    };
    consider(-a.x, dx);
    consider(-a.y, dy);
    consider(a.y - a.x, dx - dy);
    consider(-a.y - a.x, dx + dy);
    return least;
}

/// Whether the whole bent grid, wherever its samples lie, keeps between the near and the far plane.
bool withinPlanes(const BentGrid& grid, const Camera& camera, const Turn& turn) {
    for (const double depth : {0.0, 255.0})
        for (const double side : {-1.0, 1.0})
            for (const double end : {-1.0, 1.0}) {
                const double distance = distanceOf(depth), scale = distance / kGridDistance;
                const Vertex corner =
                    turn({side * grid.half_width * scale, end * grid.half_height * scale, distance});
                if (corner.distance < kNearDistance || corner.distance > camera.far_distance) return false;
            }
    return true;
}

double largestVisiblePart(const std::vector<Vertex>& outline, const BentGrid& grid, const Camera& camera,
                          ViewPosition position) {
    const Turn turn(camera, position);
    if (!withinPlanes(grid, camera, turn)) return 0.0;
    const auto project = [&](const Vertex& vertex) {
        const Vertex turned = turn(vertex);
        return Point{turned.x / turned.distance * kGridDistance / grid.half_width,
                     turned.y / turned.distance * kGridDistance / grid.half_height};
    };
    double least = 1.0;
    int times_around =
        0;  // the middle of the picture, counted where the outline crosses the axis to the right
    Point last = project(outline.back());
    for (const Vertex& vertex : outline) {
        const Point next = project(vertex);
        least = std::min(least, clearance(last, next));
        if ((last.y < 0.0) != (next.y < 0.0) && (last.x * next.y - next.x * last.y) * (next.y - last.y) > 0.0)
            times_around += next.y > last.y ? 1 : -1;
        last = next;
    }
    return times_around == 0 ? 0.0 : std::max(0.0, least - kRounding);
}

/// The frame for positions that `least_part(swing)` has the least visible part of.
template <typename LeastPart>
Frame frameFor(LeastPart least_part) {
    const auto frame = [&](double swing) { return Frame{least_part(swing), swing}; };
    const Frame whole = frame(1.0);
    if (whole.fov_scale >= kLeastVisiblePart) return whole;
    double reduced = 0.0, too_far = 1.0;
    for (int i = 0; i < 20; ++i) {
        const double middle = (reduced + too_far) / 2.0;
        (least_part(middle) >= kLeastVisiblePart ? reduced : too_far) = middle;
    }
    return frame(reduced);
}

}  // namespace

double largestVisiblePart(const BentGrid& grid, const Camera& camera, ViewPosition position) {
    return largestVisiblePart(outlineOf(grid), grid, camera, position);
}

Frame suggestFrame(const BentGrid& grid, const Camera& camera, const std::vector<ViewPosition>& positions) {
    const std::vector<Vertex> outline = outlineOf(grid);
    return frameFor([&](double swing) {
        double least = 1.0;
        for (const ViewPosition& position : positions)
            least = std::min(
                least, largestVisiblePart(outline, grid, camera, {position.x * swing, position.y * swing}));
        return least;
    });
}

Frame suggestFrame(const BentGrid& grid, const Camera& camera, ViewPosition reach) {
    const std::vector<Vertex> outline = outlineOf(grid);
    return frameFor([&](double swing) {
        const double reach_x = reach.x * swing, reach_y = reach.y * swing;
        const auto part = [&](double x, double y) {
            return largestVisiblePart(
                outline, grid, camera,
                {std::clamp(x, -1.0, 1.0) * reach_x, std::clamp(y, -1.0, 1.0) * reach_y});
        };
        // The part changes smoothly but for kinks: from the worst of a coarse raster down into its valley.
        constexpr int kSteps = 8;
        double least = 1.0, worst_x = 0.0, worst_y = 0.0;
        const auto look = [&](double x, double y) {
            const double here = part(x, y);
            if (here >= least) return false;
            least = here;
            worst_x = x;
            worst_y = y;
            return true;
        };
        for (int j = -kSteps; j <= kSteps; ++j)
            for (int i = -kSteps; i <= kSteps; ++i)
                look(static_cast<double>(i) / kSteps, static_cast<double>(j) / kSteps);
        for (double step = 0.5 / kSteps; step > 1e-3;) {
            const double x = worst_x, y = worst_y;
            bool moved = false;
            for (int j = -1; j <= 1; ++j)
                for (int i = -1; i <= 1; ++i) moved |= look(x + i * step, y + j * step);
            if (!moved) step /= 2.0;
        }
        return std::max(0.0, least - 2.0 * kRounding);
    });
}

}  // namespace quorvane
