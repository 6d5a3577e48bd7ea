#include "host/suggestions.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "composition/frame.h"
#include "composition/pivot.h"
#include "host/look_at.h"
#include "host/parameters.h"
#include "host/text.h"
#include "quorvane/host/ParallaxView.h"

namespace quorvane {
namespace {

constexpr char kNoDepth[] = "nothing to suggest: no depth map is set for this photo";

/// `frame_at(swing)` is the frame for positions multiplied by `swing`. Those that the dead zone holds back
/// shrink less than the swing does, so it may have to be reduced again.
template <typename FrameAt>
SuggestedFrame reducedFrame(FrameAt frame_at) {
    constexpr int kTries = 32;
    double swing = 1.0;
    for (int i = 0; i < kTries; ++i) {
        const Frame frame = frame_at(swing);
        if (frame.swing == 1.0) return {frame.fov_scale, swing};
        swing *= frame.swing;
    }
    // Pictures of a row or two, where the dead zone holds even the rest position aside or the mesh has no
    // size.
    return {kLeastVisiblePart, 0.0};
}

const std::vector<LookPosition> kCorners = {{-1.0f, -1.0f}, {1.0f, 1.0f}};

ViewPosition reachOf(const Composed& composed, const std::vector<LookPosition>& path, double swing) {
    ViewPosition reach;
    for (const LookPosition& place : path) {
        const ViewPosition position = positionOf(composed, place, swing);
        reach.x = std::max(reach.x, std::abs(position.x));
        reach.y = std::max(reach.y, std::abs(position.y));
    }
    return reach;
}

ShapedDepth shapedDepthOf(const ESRenderer& renderer) {
    return {renderer.m_vtxW, renderer.m_vtxH, reinterpret_cast<const uint8_t*>(renderer.m_pDepthData)};
}

Composed composedFrom(const ESRenderer& renderer) {
    return {{shapedDepthOf(renderer), static_cast<double>(renderer.m_OBJ_CORD_X),
             static_cast<double>(renderer.m_OBJ_CORD_Y)},
            renderer.params,
            renderer.m_width,
            renderer.m_height};
}

}  // namespace

Camera cameraOf(const LibParam& params) {
    const double gain = static_cast<double>(params.trans_to_rotate_scale);
    Camera camera;
    camera.pivot_distance = static_cast<double>(params.rotate_z_trans);
    camera.x_turn_deg = gain * static_cast<double>(params.rotate_x_boundary);
    camera.y_turn_deg = gain * static_cast<double>(params.rotate_y_boundary);
    camera.far_distance = farDistance(params);
    return camera;
}

ViewPosition positionOf(const Composed& composed, const LookPosition& place, double swing) {
    const auto axis = [&](float position, float extent) {
        const auto swung = static_cast<float>(swing * static_cast<double>(position));
        return static_cast<double>(lookedFrom(swung, extent, composed.parameters));
    };
    return {axis(place.x, composed.width), axis(place.y, composed.height), place.zoom};
}

Status checkPath(const std::vector<LookPosition>& path) {
    for (const LookPosition& position : path) {
        if (!(std::isfinite(position.x) && std::isfinite(position.y)))
            return Status::failure("view position: not a finite number");
        if (!(position.zoom >= kLeastZoom && position.zoom <= kMostZoom))
            return Status::failure(
                text("zoom: %g; %g to %g is wanted", position.zoom, kLeastZoom, kMostZoom));
    }
    return Status::success();
}

Status checkPhotoPoint(double x, double y) {
    if (x >= 0.0 && x <= 1.0 && y >= 0.0 && y <= 1.0) return Status::success();
    return Status::failure(text("photo's point (%g, %g): both go from 0 to 1", x, y));
}

ViewPosition reachOf(const Composed& composed, const std::optional<std::vector<LookPosition>>& path) {
    return reachOf(composed, path ? *path : kCorners, 1.0);
}

SuggestedFrame frameFor(const Composed& composed, const std::vector<LookPosition>& path) {
    return reducedFrame([&](double swing) {
        std::vector<ViewPosition> positions;
        positions.reserve(path.size());
        for (const LookPosition& place : path) positions.push_back(positionOf(composed, place, swing));
        return suggestFrame(composed.grid, cameraOf(composed.parameters), positions);
    });
}

SuggestedFrame frameFor(const Composed& composed) {
    return reducedFrame([&](double swing) {
        return suggestFrame(composed.grid, cameraOf(composed.parameters), reachOf(composed, kCorners, swing));
    });
}

Status ParallaxView::suggestFrame(const std::vector<LookPosition>& path, SuggestedFrame* frame) const {
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_depth) return Status::failure(kNoDepth);
    status = checkPath(path);
    if (!status) return status;
    *frame = frameFor(composedFrom(m_renderer), path);
    return status;
}

Status ParallaxView::suggestFrame(SuggestedFrame* frame) const {
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_depth) return Status::failure(kNoDepth);
    *frame = frameFor(composedFrom(m_renderer));
    return status;
}

Status ParallaxView::suggestPivot(double* rotate_z_trans) const {
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_depth) return Status::failure(kNoDepth);
    *rotate_z_trans = distanceOf(subjectDepth(shapedDepthOf(m_renderer)));
    return status;
}

Status ParallaxView::suggestPivot(double x, double y, double* rotate_z_trans) const {
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_depth) return Status::failure(kNoDepth);
    status = checkPhotoPoint(x, y);
    if (!status) return status;
    *rotate_z_trans = distanceOf(depthAt(shapedDepthOf(m_renderer), x, y));
    return status;
}

}  // namespace quorvane
