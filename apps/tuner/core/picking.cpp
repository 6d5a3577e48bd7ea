#include "apps/tuner/core/picking.h"

#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "composition/bent_grid.h"
#include "host/suggestions.h"

namespace quorvane::tuner {
namespace {

struct Corner {
    PicturePoint at;
    double distance;
};

/// The shares of a triangle's corners at a place; nothing outside of it.
std::optional<std::array<double, 3>> sharesAt(const std::array<Corner, 3>& corners, PicturePoint place) {
    const auto twice_area = [](PicturePoint a, PicturePoint b, PicturePoint c) {
        return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
    };
    const PicturePoint a = corners[0].at, b = corners[1].at, c = corners[2].at;
    const double whole = twice_area(a, b, c);
    if (whole == 0.0) return {};
    const std::array shares = {twice_area(place, b, c) / whole, twice_area(a, place, c) / whole,
                               twice_area(a, b, place) / whole};
    for (const double share : shares)
        if (!(share >= 0.0)) return {};
    return shares;
}

}  // namespace

std::optional<PhotoPlace> photoPlaceAt(const Geometry& geometry, const Pixels& shaped, const LibParam& values,
                                       float view_x, float view_y, double x, double y) {
    if (shaped.data == nullptr) return {};
    const BentGrid grid = {{shaped.width, shaped.height, shaped.data},
                           static_cast<double>(geometry.half_width),
                           static_cast<double>(geometry.half_height)};
    const Turn turn(cameraOf(values), {static_cast<double>(view_x), static_cast<double>(view_y)});
    const auto fov = static_cast<double>(values.fov_scale);
    const PicturePoint place = {(2.0 * x - 1.0) * fov, (2.0 * y - 1.0) * fov};

    const auto row_of = [&](int row) {
        std::vector<Corner> corners;
        for (int column = 0; column <= shaped.width; ++column) {
            const GridVertex turned = turn(vertexOf(grid, column, row));
            const bool drawn = turned.distance >= kNearDistance;
            corners.push_back({drawn ? projected(grid, turned) : PicturePoint{NAN, NAN}, turned.distance});
        }
        return corners;
    };
    std::optional<PhotoPlace> found;
    double nearest = INFINITY;
    std::vector<Corner> above = row_of(0);
    for (int row = 0; row < shaped.height; ++row) {
        std::vector<Corner> below = row_of(row + 1);
        for (int column = 0; column < shaped.width; ++column) {
            const auto i = static_cast<size_t>(column);
            const std::array<Corner, 4> cell = {above[i], above[i + 1], below[i], below[i + 1]};
            // As the mesh is divided into triangles.
            for (const std::array<size_t, 3>& triangle : {std::array<size_t, 3>{0, 1, 2}, {1, 3, 2}}) {
                const auto shares =
                    sharesAt({cell[triangle[0]], cell[triangle[1]], cell[triangle[2]]}, place);
                if (!shares) continue;
                PhotoPlace at = {0.0, 0.0};
                double distance = 0.0;
                for (size_t n = 0; n < 3; ++n) {
                    const size_t corner = triangle[n];
                    at.x += (*shares)[n] * (column + static_cast<int>(corner % 2)) / shaped.width;
                    at.y += (*shares)[n] * (row + static_cast<int>(corner / 2)) / shaped.height;
                    distance += (*shares)[n] * cell[corner].distance;
                }
                if (distance >= nearest) continue;
                nearest = distance;
                found = at;
            }
        }
        above = std::move(below);
    }
    return found;
}

}  // namespace quorvane::tuner
