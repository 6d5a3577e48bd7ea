#include <cutils/properties.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "diagnostics/log.h"
#include "quorvane/esRenderer.h"

namespace {

constexpr size_t kDefaultTextSize = 32;
constexpr size_t kValueSize = 128;

/// The set for every device orientation but 4 and 7.
LibParam secondTunedSet() {
    LibParam set;
    set.rotate_z_trans = 50.0f;
    set.rotate_x_boundary = 14.0f;
    set.rotate_y_boundary = 10.0f;
    set.depth_contrast = 30.0f;
    set.border_deadzone = 18;
    return set;
}

/// Looks properties up with the current value as the default, in its text form.
class PropertyReader {
  public:
    int integer(const char* key, int current) {
        std::snprintf(m_default, sizeof m_default, "%d", current);
        property_get(key, m_value, m_default);
        return std::atoi(m_value);
    }

    /// An unset property cuts `current` to the six decimals of its text. One whose text is too long for the
    /// buffer (about 1e24 and more) is kept as it is instead of being cut to another number.
    float real(const char* key, float current) {
        const int length = std::snprintf(m_default, sizeof m_default, "%f", static_cast<double>(current));
        const bool fits = static_cast<size_t>(length) < sizeof m_default;
        if (!fits) m_default[0] = '\0';
        const int found = property_get(key, m_value, m_default);
        if (!fits && found <= 0) return current;
        return static_cast<float>(std::atof(m_value));
    }

  private:
    char m_default[kDefaultTextSize] = {};
    char m_value[kValueSize] = {};
};

}  // namespace

void ESRenderer::getProperties(uint32_t orientation) {
    LOGD("getProperties() orientation=%d\n", static_cast<int>(orientation));
    if (orientation != 7 && orientation != 4) params = secondTunedSet();

    PropertyReader properties;
    m_debugEnable = static_cast<uint32_t>(properties.integer("quorvane.debug", 0));
    params.rotate_z_trans = properties.real("quorvane.para1", params.rotate_z_trans);
    params.rotate_x_boundary = properties.real("quorvane.para2", params.rotate_x_boundary);
    params.rotate_y_boundary = properties.real("quorvane.para3", params.rotate_y_boundary);
    params.trans_to_rotate_scale = properties.real("quorvane.para4", params.trans_to_rotate_scale);
    params.far_offset_ext = properties.real("quorvane.para5", params.far_offset_ext);
    params.z_post_offset = properties.real("quorvane.para6", params.z_post_offset);
    params.guided_filter_rx = properties.integer("quorvane.para7", params.guided_filter_rx);
    params.guided_filter_ry = properties.integer("quorvane.para8", params.guided_filter_ry);
    params.guided_filter_eps = properties.real("quorvane.para9", params.guided_filter_eps);
    params.depth_contrast = properties.real("quorvane.para10", params.depth_contrast);
    params.border_deadzone = properties.integer("quorvane.para11", params.border_deadzone);
    params.fov_scale = properties.real("quorvane.para12", params.fov_scale);
    params.offset_gain = properties.real("quorvane.para13", params.offset_gain);
    params.offset_len = properties.real("quorvane.para14", params.offset_len);

    if (m_debugEnable == 0) return;
    LOGD("rotate_z_trans           : %f\n", static_cast<double>(params.rotate_z_trans));
    LOGD("rotate_x_boundary        : %f\n", static_cast<double>(params.rotate_x_boundary));
    LOGD("rotate_y_boundary        : %f\n", static_cast<double>(params.rotate_y_boundary));
    LOGD("trans_to_rotate_scale    : %f\n", static_cast<double>(params.trans_to_rotate_scale));
    LOGD("far_offset_ext           : %f\n", static_cast<double>(params.far_offset_ext));
    LOGD("z_post_offset            : %f\n", static_cast<double>(params.z_post_offset));
    LOGD("guided_filter_rx         : %d\n", params.guided_filter_rx);
    LOGD("guided_filter_ry         : %d\n", params.guided_filter_ry);
    LOGD("guided_filter_eps        : %f\n", static_cast<double>(params.guided_filter_eps));
    LOGD("depth_contrast           : %f\n", static_cast<double>(params.depth_contrast));
    LOGD("border_deadzone          : %d\n", params.border_deadzone);
    LOGD("fov_scale                : %f\n", static_cast<double>(params.fov_scale));
    LOGD("offset_gain              : %f\n", static_cast<double>(params.offset_gain));
    LOGD("offset_len               : %f\n", static_cast<double>(params.offset_len));
}
