#include "composition/frame.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "composition/bent_grid.h"

namespace quorvane {
namespace {

// What drivers round: texture lookups at the outline weigh two samples with steps of 1 / 256.
constexpr double kRounding = 1.0 / 4096.0;

/// Once around, each corner once.
std::vector<GridVertex> outlineOf(const BentGrid& grid) {
    const int width = grid.depth.width, height = grid.depth.height;
    std::vector<GridVertex> outline;
    outline.reserve(2 * static_cast<size_t>(width + height));
    const auto add = [&](int column, int row) { outline.push_back(vertexOf(grid, column, row)); };
    for (int i = 0; i < width; ++i) add(i, 0);
    for (int j = 0; j < height; ++j) add(width, j);
    for (int i = width; i > 0; --i) add(i, height);
    for (int j = height; j > 0; --j) add(0, j);
    return outline;
}

/// How close to 0 a number comes on its way from `a` to `b`.
double closest(double a, double b) {
    return (a < 0.0) == (b < 0.0) ? std::min(std::abs(a), std::abs(b)) : 0.0;
}

/// The smallest larger coordinate of any point from `a` to `b`: how large a square around the middle stays
/// clear of the segment. `most` where that is no smaller, as for nearly all segments of an outline. The
/// larger of |x| and |y| is convex along it, so the least lies at an end or where two of the four linear
/// pieces meet.
double clearance(const PicturePoint& a, const PicturePoint& b, double most) {
    if (std::max(closest(a.x, b.x), closest(a.y, b.y)) >= most) return most;
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
                const GridVertex corner =
                    turn({side * grid.half_width * scale, end * grid.half_height * scale, distance});
                if (corner.distance < kNearDistance || corner.distance > camera.far_distance) return false;
            }
    return true;
}

double largestVisiblePart(const std::vector<GridVertex>& outline, const BentGrid& grid, const Camera& camera,
                          ViewPosition position) {
    const Turn turn(camera, position);
    if (!withinPlanes(grid, camera, turn)) return 0.0;
    const auto project = [&](const GridVertex& vertex) { return projected(grid, turn(vertex)); };
    double least = 1.0;
    int times_around =
        0;  // the middle of the picture, counted where the outline crosses the axis to the right
    PicturePoint last = project(outline.back());
    for (const GridVertex& vertex : outline) {
        const PicturePoint next = project(vertex);
        least = std::min(least, clearance(last, next, least));
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
    const std::vector<GridVertex> outline = outlineOf(grid);
    double farthest = positions.empty() ? 1.0 : positions.front().zoom;
    for (const ViewPosition& position : positions) farthest = std::min(farthest, position.zoom);
    // What the picture that is zoomed the least shows of each side.
    Frame frame = frameFor([&](double swing) {
        double least = 1.0;
        for (const ViewPosition& position : positions)
            least = std::min(least, position.zoom / farthest *
                                        largestVisiblePart(outline, grid, camera,
                                                           {position.x * swing, position.y * swing}));
        return least;
    });
    frame.fov_scale = std::min(1.0, farthest * frame.fov_scale);
    return frame;
}

Frame suggestFrame(const BentGrid& grid, const Camera& camera, ViewPosition reach) {
    const std::vector<GridVertex> outline = outlineOf(grid);
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
