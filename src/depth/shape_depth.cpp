#include "depth/shape_depth.h"

#include <cstddef>
#include <cstring>

#include "depth/depth_curve.h"

void quorvane::shapeDepth(const Path& path, const DepthShaping& s,
                          const std::function<void(ShapingStep, bool)>& step_done) {
    const size_t size = static_cast<size_t>(s.width) * static_cast<size_t>(s.height);

    const bool photo_reduced =
        downsize(path, s.photo_width, s.photo_height, s.photo, s.width, s.height, s.guide, true);
    step_done(ShapingStep::kReducePhoto, photo_reduced);

    const bool depth_reduced =
        downsize(path, s.depth_width, s.depth_height, s.depth, s.width, s.height, s.shaped, false);
    step_done(ShapingStep::kReduceDepth, depth_reduced);

    path.crossDenoise(s.guide, s.scratch, s.width, s.height);
    step_done(ShapingStep::kDenoiseGuide, true);

    guidedFilter(path,
                 {s.scratch, s.shaped, s.shaped, s.width, s.height, s.rx, s.ry, s.eps, s.filter_buffer});
    step_done(ShapingStep::kFilter, true);

    std::memcpy(s.scratch, s.shaped, size);
    path.crossDenoise(s.scratch, s.shaped, s.width, s.height);
    uint8_t curve[256];
    scaleDepthCurve(s.contrast, curve);
    path.lookUp(s.shaped, size, curve);
    step_done(ShapingStep::kDenoiseAndCurve, true);
}
