#include "host/parameters.h"

#include <cutils/properties.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "quorvane/host/ParallaxView.h"

namespace quorvane {
namespace {

/// What a checked host adds to a field of LibParam.
struct Range {
    /// Of the field, so that its name stands in the component's table alone.
    constexpr bool isOf(const Parameter& parameter) const {
        return real != nullptr ? parameter.real == real
                               : parameter.integer != nullptr && parameter.integer == integer;
    }
    constexpr Range(float LibParam::*field, double a_minimum, double a_maximum, TakesEffect effect,
                    const char* a_meaning)
        : real(field), minimum(a_minimum), maximum(a_maximum), takes_effect(effect), meaning(a_meaning) {}
    constexpr Range(int32_t LibParam::*field, double a_minimum, double a_maximum, TakesEffect effect,
                    const char* a_meaning)
        : integer(field), minimum(a_minimum), maximum(a_maximum), takes_effect(effect), meaning(a_meaning) {}

    float LibParam::*real = nullptr;
    int32_t LibParam::*integer = nullptr;
    double minimum, maximum;
    TakesEffect takes_effect;
    const char* meaning;
};

// Wide enough for every tuning that makes a picture; beyond lie divisions by zero, empty frusta and views
// past the mesh's edge.
constexpr Range kRanges[] = {
    {&LibParam::rotate_z_trans, 1.0, 1000.0, TakesEffect::kEachFrame,
     "pivot distance in front of the camera, object units"},
    {&LibParam::rotate_x_boundary, -45.0, 45.0, TakesEffect::kEachFrame,
     "degrees about the vertical axis at full swing"},
    {&LibParam::rotate_y_boundary, -45.0, 45.0, TakesEffect::kEachFrame,
     "degrees about the horizontal axis at full swing"},
    {&LibParam::trans_to_rotate_scale, -2.0, 2.0, TakesEffect::kEachFrame,
     "gain from view position to angle"},
    {&LibParam::far_offset_ext, 0.0, 10000.0, TakesEffect::kEachFrame, "far plane beyond 64 object units"},
    {&LibParam::z_post_offset, -1000.0, 1000.0, TakesEffect::kNever,
     "kept for hosts that set it; changes no picture"},
    {&LibParam::guided_filter_rx, 0.0, 1024.0, TakesEffect::kNextDepth,
     "depth smoothing radius in grid cells, horizontal"},
    {&LibParam::guided_filter_ry, 0.0, 1024.0, TakesEffect::kNextDepth,
     "depth smoothing radius in grid cells, vertical"},
    {&LibParam::guided_filter_eps, 0.0, 1.0, TakesEffect::kNextDepth,
     "depth smoothing regulariser; larger follows the photo's edges less"},
    {&LibParam::depth_contrast, 0.0, 64.0, TakesEffect::kNextDepth,
     "gain before the depth curve, 32 = unchanged; above it the nearest depths fold over"},
    {&LibParam::border_deadzone, 3.0, 100000.0, TakesEffect::kNextMotion,
     "picture size / this = ignored border in pixels"},
    {&LibParam::fov_scale, 0.05, 1.0, TakesEffect::kEachFrame, "visible part of the mesh, both axes"},
    {&LibParam::offset_gain, -1000.0, 1000.0, TakesEffect::kNever,
     "kept for hosts that set it; changes no picture"},
    {&LibParam::offset_len, -1000.0, 1000.0, TakesEffect::kNever,
     "kept for hosts that set it; changes no picture"},
};

constexpr const Range* rangeOf(const Parameter& parameter) {
    for (const Range& range : kRanges)
        if (range.isOf(parameter)) return &range;
    return nullptr;
}

constexpr bool everyParameterHasARange() {
    for (const Parameter& parameter : kParameters)
        if (rangeOf(parameter) == nullptr) return false;
    return true;
}
static_assert(everyParameterHasARange());

std::vector<ParameterInfo> describeAll() {
    std::vector<ParameterInfo> all;
    for (const Parameter& parameter : kParameters) {
        const Range& range = *rangeOf(parameter);
        all.push_back({parameter.name, parameter.integer != nullptr, range.minimum, range.maximum,
                       range.takes_effect, range.meaning});
    }
    return all;
}

/// The field of that name; null when there is none.
const Parameter* field(const std::string& name) {
    for (const Parameter& parameter : kParameters)
        if (name == parameter.name) return &parameter;
    return nullptr;
}

const ParameterInfo* find(const std::string& name) {
    for (const ParameterInfo& info : ParallaxView::parameters())
        if (name == info.name) return &info;
    return nullptr;
}

Status unknown(const std::string& name) {
    std::string sentence = "unknown parameter '" + name + "'; known are";
    for (const Parameter& parameter : kParameters)
        sentence += std::string(&parameter == kParameters ? " " : ", ") + parameter.name;
    return Status::failure(sentence);
}

}  // namespace

bool takesFirstSet(uint32_t orientation) { return orientation == 4 || orientation == 7; }

LibParam tunedSet(uint32_t orientation) { return takesFirstSet(orientation) ? LibParam() : secondTunedSet(); }

double farDistance(const LibParam& parameters) {
    return 64.0 + static_cast<double>(parameters.far_offset_ext);
}

LibParam startingParameters(uint32_t orientation, std::vector<std::string>* overridden) {
    LibParam values = tunedSet(orientation);
    for (const Parameter& parameter : kParameters) {
        std::array<char, 128> value = {};
        if (property_get(parameter.property, value.data(), "") <= 0) continue;
        if (parameter.integer != nullptr)
            values.*parameter.integer = std::atoi(value.data());
        else
            values.*parameter.real = static_cast<float>(std::atof(value.data()));
        if (overridden != nullptr) overridden->emplace_back(parameter.name);
    }
    return values;
}

Status storeParameter(const std::string& name, double value, LibParam* parameters) {
    Status status = ParallaxView::checkParameter(name, value);
    if (!status) return status;
    if (const Parameter* found = field(name)) found->store(value, parameters);
    return status;
}

const std::vector<ParameterInfo>& ParallaxView::parameters() {
    static const std::vector<ParameterInfo> all = describeAll();
    return all;
}

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
    if (status) status = storeParameter(name, value, &m_renderer.params);
    if (status) usePivot();
    return status;
}

Status ParallaxView::parameter(const std::string& name, double* value) const {
    Status status = checkCaller();
    if (!status) return status;
    const Parameter* found = field(name);
    if (found == nullptr) return unknown(name);
    *value = found->of(m_renderer.params);
    return Status::success();
}

}  // namespace quorvane
