#ifndef QUORVANE_HOST_SUGGESTIONS_H
#define QUORVANE_HOST_SUGGESTIONS_H

#include <optional>
#include <vector>

#include "composition/geometry.h"
#include "quorvane/esRenderer.h"
#include "quorvane/host/PicturePlan.h"

namespace quorvane {

/// Everything that a frame depends on but the positions.
struct Composed {
    BentGrid grid;
    LibParam parameters;
    float width = 0.0f;  ///< of the picture, pixels
    float height = 0.0f;
};

Camera cameraOf(const LibParam& parameters);

/// Where the renderer stands after ParallaxView::lookAt of `place`, `swing` times as far aside.
ViewPosition positionOf(const Composed& composed, const LookPosition& place, double swing);

Status checkPath(const std::vector<LookPosition>& path);

/// Of a point whose coordinates go from 0 to 1.
Status checkPhotoPoint(double x, double y);

/// How far the view swings on either axis from positions of lookAt, or from all of them.
ViewPosition reachOf(const Composed& composed, const std::optional<std::vector<LookPosition>>& path);

/// The largest frame without a border from positions of lookAt.
SuggestedFrame frameFor(const Composed& composed, const std::vector<LookPosition>& path);

/// The same for all positions that lookAt takes.
SuggestedFrame frameFor(const Composed& composed);

}  // namespace quorvane

#endif
