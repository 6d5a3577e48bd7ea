#ifndef QUORVANE_COMPOSITION_BENT_GRID_H
#define QUORVANE_COMPOSITION_BENT_GRID_H

#include "composition/geometry.h"

namespace quorvane {

/// Nothing nearer than this is drawn, object units.
constexpr double kNearDistance = 12.0;

/// A corner of the bent grid's cells, object units, x along the photo's rows and y down its columns.
struct GridVertex {
    double x, y, distance;
};

/// In a picture: 1 is its edge at a `fov_scale` of 1.
struct PicturePoint {
    double x, y;
};

/// The corner at the left of `column` and above `row`, each 0 to the number of them, before the view turns.
GridVertex vertexOf(const BentGrid& grid, int column, int row);

/// The camera's turn for a position: about the X axis first, then about the Y axis, both through the pivot.
class Turn {
  public:
    Turn(const Camera& camera, ViewPosition position);

    GridVertex operator()(const GridVertex& vertex) const {
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

/// Where a vertex at a distance above 0 is drawn.
inline PicturePoint projected(const BentGrid& grid, const GridVertex& turned) {
    return {turned.x / turned.distance * kGridDistance / grid.half_width,
            turned.y / turned.distance * kGridDistance / grid.half_height};
}

}  // namespace quorvane

#endif
