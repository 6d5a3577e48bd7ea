#include "composition/stretch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "composition/bent_grid.h"

namespace quorvane {
namespace {

/// Twice the area of a triangle; below 0 where it is turned over.
double twiceArea(const PicturePoint& a, const PicturePoint& b, const PicturePoint& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// Goes through the pictures and keeps the largest of every cell.
class Pictures {
  public:
    explicit Pictures(const BentGrid& grid) : m_grid(grid), m_columns(static_cast<size_t>(grid.depth.width)) {
        const auto rows = static_cast<size_t>(grid.depth.height);
        m_vertices.reserve((m_columns + 1) * (rows + 1));
        for (int row = 0; row <= grid.depth.height; ++row)
            for (int column = 0; column <= grid.depth.width; ++column)
                m_vertices.push_back(vertexOf(grid, column, row));
        m_drawn.resize(m_vertices.size());
        m_stretch.times.assign(m_columns * rows, 1.0f);
        m_stretch.seen.assign(m_columns * rows, 0);
    }

    void add(const Camera& camera, double fov_scale, ViewPosition position) {
        const Turn turn(camera, position);
        for (size_t i = 0; i < m_vertices.size(); ++i) {
            const GridVertex turned = turn(m_vertices[i]);
            // The cells of a corner that is not drawn fail every comparison.
            m_drawn[i] = turned.distance < kNearDistance ? PicturePoint{NAN, NAN} : projected(m_grid, turned);
        }
        // Of the picture's whole, with 4 for the photo at rest.
        const double cell_at_rest = 4.0 / static_cast<double>(m_stretch.times.size());
        double streaks = 0.0;
        for (size_t cell = 0; cell < m_stretch.times.size(); ++cell) {
            const PicturePoint* above = &m_drawn[cell / m_columns * (m_columns + 1) + cell % m_columns];
            const PicturePoint* below = above + m_columns + 1;
            const double x = (above[0].x + above[1].x + below[0].x + below[1].x) / 4.0;
            const double y = (above[0].y + above[1].y + below[0].y + below[1].y) / 4.0;
            if (!(std::abs(x) <= fov_scale && std::abs(y) <= fov_scale)) continue;
            m_stretch.seen[cell] = 1;
            // As the mesh is divided into triangles.
            const double area = (std::max(0.0, twiceArea(above[0], above[1], below[0])) +
                                 std::max(0.0, twiceArea(above[1], below[1], below[0]))) /
                                2.0;
            const double times = area / cell_at_rest;
            m_stretch.times[cell] = std::max(m_stretch.times[cell], static_cast<float>(times));
            if (times >= kStreak) streaks += area;
        }
        const double part = streaks / (4.0 * fov_scale * fov_scale);
        m_stretch.streaked_part = std::min(1.0, std::max(m_stretch.streaked_part, part));
    }

    Stretch finish() {
        const auto worst = std::max_element(m_stretch.times.begin(), m_stretch.times.end());
        if (*worst > 1.0f) {
            const auto cell = static_cast<size_t>(worst - m_stretch.times.begin());
            const size_t column = cell % m_columns, row = cell / m_columns;
            m_stretch.worst_x = (static_cast<double>(column) + 0.5) / m_grid.depth.width;
            m_stretch.worst_y = (static_cast<double>(row) + 0.5) / m_grid.depth.height;
            m_stretch.worst_times = static_cast<double>(*worst);
        }
        return std::move(m_stretch);
    }

  private:
    const BentGrid& m_grid;
    size_t m_columns;
    std::vector<GridVertex> m_vertices;
    std::vector<PicturePoint> m_drawn;
    Stretch m_stretch;
};

}  // namespace

Stretch stretchOf(const BentGrid& grid, const Camera& camera, double fov_scale,
                  const std::vector<ViewPosition>& positions) {
    Pictures pictures(grid);
    pictures.add(camera, fov_scale, {});
    for (const ViewPosition& position : positions) pictures.add(camera, fov_scale / position.zoom, position);
    return pictures.finish();
}

}  // namespace quorvane
