#include <cmath>
#include <cstdio>
#include <type_traits>

#include "quorvane/host/ParallaxView.h"

namespace quorvane {
namespace {

// Wide enough for every tuning that makes a picture; beyond lie divisions by zero, empty frusta and views
// past the mesh's edge.
const std::vector<ParameterInfo> kParameters = {
    {"rotate_z_trans", false, 1.0, 1000.0, TakesEffect::kNextDepth,
     "pivot distance in front of the camera, object units"},
    {"rotate_x_boundary", false, -45.0, 45.0, TakesEffect::kEachFrame,
     "degrees about the vertical axis at full swing"},
    {"rotate_y_boundary", false, -45.0, 45.0, TakesEffect::kEachFrame,
     "degrees about the horizontal axis at full swing"},
    {"trans_to_rotate_scale", false, -2.0, 2.0, TakesEffect::kEachFrame, "gain from view position to angle"},
    {"far_offset_ext", false, 0.0, 10000.0, TakesEffect::kEachFrame, "far plane beyond 64 object units"},
    {"z_post_offset", false, -1000.0, 1000.0, TakesEffect::kNever,
     "kept for hosts that set it; changes no picture"},
    {"guided_filter_rx", true, 0.0, 1024.0, TakesEffect::kNextDepth,
     "depth smoothing radius in grid cells, horizontal"},
    {"guided_filter_ry", true, 0.0, 1024.0, TakesEffect::kNextDepth,
     "depth smoothing radius in grid cells, vertical"},
    {"guided_filter_eps", false, 0.0, 1.0, TakesEffect::kNextDepth,
     "depth smoothing regulariser; larger follows the photo's edges less"},
    {"depth_contrast", false, 0.0, 64.0, TakesEffect::kNextDepth,
     "gain before the depth curve, 32 = unchanged; above it the nearest depths fold over"},
    {"border_deadzone", true, 3.0, 100000.0, TakesEffect::kNextMotion,
     "picture size / this = ignored border in pixels"},
    {"fov_scale", false, 0.05, 1.0, TakesEffect::kEachFrame, "visible part of the mesh, both axes"},
    {"offset_gain", false, -1000.0, 1000.0, TakesEffect::kNever,
     "kept for hosts that set it; changes no picture"},
    {"offset_len", false, -1000.0, 1000.0, TakesEffect::kNever,
     "kept for hosts that set it; changes no picture"},
};

/// Calls use(field) with the field of that name; false when there is none.
template <typename Params, typename Use>
bool withField(Params& params, const std::string& name, Use use) {
    if (name == "rotate_z_trans") return use(params.rotate_z_trans), true;
    if (name == "rotate_x_boundary") return use(params.rotate_x_boundary), true;
    if (name == "rotate_y_boundary") return use(params.rotate_y_boundary), true;
    if (name == "trans_to_rotate_scale") return use(params.trans_to_rotate_scale), true;
    if (name == "far_offset_ext") return use(params.far_offset_ext), true;
    if (name == "z_post_offset") return use(params.z_post_offset), true;
    if (name == "guided_filter_rx") return use(params.guided_filter_rx), true;
    if (name == "guided_filter_ry") return use(params.guided_filter_ry), true;
    if (name == "guided_filter_eps") return use(params.guided_filter_eps), true;
    if (name == "depth_contrast") return use(params.depth_contrast), true;
    if (name == "border_deadzone") return use(params.border_deadzone), true;
    if (name == "fov_scale") return use(params.fov_scale), true;
    if (name == "offset_gain") return use(params.offset_gain), true;
    if (name == "offset_len") return use(params.offset_len), true;
    return false;
}

const ParameterInfo* find(const std::string& name) {
    for (const ParameterInfo& info : kParameters)
        if (name == info.name) return &info;
    return nullptr;
}

Status unknown(const std::string& name) {
    std::string sentence = "unknown parameter '" + name + "'; known are";
    for (const ParameterInfo& info : kParameters)
        sentence += std::string(&info == &kParameters[0] ? " " : ", ") + info.name;
    return Status::failure(sentence);
}

}  // namespace

const std::vector<ParameterInfo>& ParallaxView::parameters() { return kParameters; }

Status ParallaxView::checkParameter(const std::string& name, double value) {
    const ParameterInfo* info = find(name);
    if (info == nullptr) return unknown(name);

    const bool in_range = value >= info->minimum && value <= info->maximum;
    if (!in_range || (info->integer && value != std::floor(value))) {
        char sentence[160];
        std::snprintf(sentence, sizeof sentence, "%s: %g is not %s from %g to %g", info->name, value,
                      info->integer ? "a whole number" : "a number", info->minimum, info->maximum);
        return Status::failure(sentence);
    }
    return Status::success();
}

Status ParallaxView::setParameter(const std::string& name, double value) {
    Status status = checkCaller();
    if (status) status = checkParameter(name, value);
    if (!status) return status;
    withField(m_renderer.params, name,
              [value](auto& field) { field = static_cast<std::remove_reference_t<decltype(field)>>(value); });
    return Status::success();
}

Status ParallaxView::parameter(const std::string& name, double* value) const {
    Status status = checkCaller();
    if (!status) return status;
    if (!withField(m_renderer.params, name, [value](const auto& field) { *value = field; }))
        return unknown(name);
    return Status::success();
}

}  // namespace quorvane
