// What ParallaxView suggests for the images in use: how much is shown, and what stands still.

#include <algorithm>
#include <cmath>
#include <vector>

#include "composition/frame.h"
#include "composition/pivot.h"
#include "host/look_at.h"
#include "host/text.h"
#include "quorvane/host/ParallaxView.h"
#include "src/view/motion.h"

namespace quorvane {
namespace {

constexpr char kNoDepth[] = "nothing to suggest: no depth map is set for this photo";

ShapedDepth shapedDepthOf(const ESRenderer& renderer) {
    return {renderer.m_vtxW, renderer.m_vtxH, reinterpret_cast<const uint8_t*>(renderer.m_pDepthData)};
}

BentGrid gridOf(const ESRenderer& renderer) {
    return {shapedDepthOf(renderer), static_cast<double>(renderer.m_OBJ_CORD_X),
            static_cast<double>(renderer.m_OBJ_CORD_Y)};
}

Camera cameraOf(const ESRenderer& renderer) {
    const LibParam& params = renderer.params;
    const double gain = static_cast<double>(params.trans_to_rotate_scale);
    Camera camera;
    camera.pivot_distance = static_cast<double>(renderer.m_z_factor);
    camera.x_turn_deg = gain * static_cast<double>(params.rotate_x_boundary);
    camera.y_turn_deg = gain * static_cast<double>(params.rotate_y_boundary);
    camera.far_distance = 64.0 + static_cast<double>(params.far_offset_ext);
    return camera;
}

/// Where the renderer stands after ParallaxView::lookAt(x, y).
ViewPosition positionOf(const ESRenderer& renderer, double x, double y) {
    const auto axis = [&](double position, float extent) {
        const float border = extent / static_cast<float>(renderer.params.border_deadzone);
        const float place =
            heldOffBorder(placeOnPicture(static_cast<float>(position), extent), extent, border);
        return static_cast<double>(viewPosition(place, extent));
    };
    return {axis(x, renderer.m_width), axis(y, renderer.m_height)};
}

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

}  // namespace

Status ParallaxView::suggestFrame(const std::vector<LookPosition>& path, SuggestedFrame* frame) const {
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_depth) return Status::failure(kNoDepth);
    for (const LookPosition& position : path)
        if (!(std::isfinite(position.x) && std::isfinite(position.y)))
            return Status::failure("view position: not a finite number");

    *frame = reducedFrame([&](double swing) {
        std::vector<ViewPosition> positions;
        positions.reserve(path.size());
        for (const LookPosition& position : path)
            positions.push_back(positionOf(m_renderer, swing * static_cast<double>(position.x),
                                           swing * static_cast<double>(position.y)));
        return quorvane::suggestFrame(gridOf(m_renderer), cameraOf(m_renderer), positions);
    });
    return status;
}

Status ParallaxView::suggestFrame(SuggestedFrame* frame) const {
    Status status = checkCaller();
    if (!status) return status;
    if (!m_has_depth) return Status::failure(kNoDepth);

    *frame = reducedFrame([&](double swing) {
        const ViewPosition least = positionOf(m_renderer, -swing, -swing);
        const ViewPosition most = positionOf(m_renderer, swing, swing);
        const ViewPosition reach = {std::max(std::abs(least.x), std::abs(most.x)),
                                    std::max(std::abs(least.y), std::abs(most.y))};
        return quorvane::suggestFrame(gridOf(m_renderer), cameraOf(m_renderer), reach);
    });
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
    if (!(x >= 0.0 && x <= 1.0 && y >= 0.0 && y <= 1.0))
        return Status::failure(text("photo's point (%g, %g): both go from 0 to 1", x, y));
    *rotate_z_trans = distanceOf(depthAt(shapedDepthOf(m_renderer), x, y));
    return status;
}

}  // namespace quorvane
