#ifndef QUORVANE_APPS_TUNER_CORE_PICKING_H
#define QUORVANE_APPS_TUNER_CORE_PICKING_H

#include <optional>

#include "quorvane/esRenderer.h"
#include "quorvane/host/PhotoView.h"

namespace quorvane::tuner {

/// From the photo's left and top, 0 to 1.
struct PhotoPlace {
    double x = 0.5;
    double y = 0.5;
};

/// What of the photo a picture shows at a place, 0 to 1 from its left and top: the frontmost cell of the bent
/// grid that covers it. `view_x` and `view_y` are where the renderer stands, `m_transX` and `m_transY`.
/// Nothing where the picture shows no cell.
std::optional<PhotoPlace> photoPlaceAt(const Geometry& geometry, const Pixels& shaped, const LibParam& values,
                                       float view_x, float view_y, double x, double y);

}  // namespace quorvane::tuner

#endif
