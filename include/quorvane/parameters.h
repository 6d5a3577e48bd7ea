#ifndef QUORVANE_PARAMETERS_H
#define QUORVANE_PARAMETERS_H

#include <cstdint>
#include <optional>

#include "esRenderer.h"

namespace quorvane {

/// A field of LibParam. It has one of two types, and so a pointer to one of two kinds of member.
struct Parameter {
    const char* name;              ///< of the field
    const char* property;          ///< the system property that overrides it in `getProperties`
    float LibParam::*real;         ///< null for a whole number
    int32_t LibParam::*integer;    ///< null for a real number
    std::optional<double> second;  ///< in the second tuned set, where that differs from LibParam's default

    constexpr Parameter(const char* a_name, const char* a_property, float LibParam::*field,
                        std::optional<double> a_second = {})
        : name(a_name), property(a_property), real(field), integer(nullptr), second(a_second) {}
    constexpr Parameter(const char* a_name, const char* a_property, int32_t LibParam::*field,
                        std::optional<double> a_second = {})
        : name(a_name), property(a_property), real(nullptr), integer(field), second(a_second) {}

    double of(const LibParam& set) const {
        return integer != nullptr ? set.*integer : static_cast<double>(set.*real);
    }

    /// `value` is one that the field can hold; a fraction is cut off where it holds whole numbers.
    void store(double value, LibParam* set) const {
        if (integer != nullptr)
            set->*integer = static_cast<int32_t>(value);
        else
            set->*real = static_cast<float>(value);
    }
};

/// All of them, in the order of their declaration, which is also that of the properties.
inline constexpr Parameter kParameters[] = {
    {"rotate_z_trans", "quorvane.para1", &LibParam::rotate_z_trans, 50.0},
    {"rotate_x_boundary", "quorvane.para2", &LibParam::rotate_x_boundary, 14.0},
    {"rotate_y_boundary", "quorvane.para3", &LibParam::rotate_y_boundary, 10.0},
    {"trans_to_rotate_scale", "quorvane.para4", &LibParam::trans_to_rotate_scale},
    {"far_offset_ext", "quorvane.para5", &LibParam::far_offset_ext},
    {"z_post_offset", "quorvane.para6", &LibParam::z_post_offset},
    {"guided_filter_rx", "quorvane.para7", &LibParam::guided_filter_rx},
    {"guided_filter_ry", "quorvane.para8", &LibParam::guided_filter_ry},
    {"guided_filter_eps", "quorvane.para9", &LibParam::guided_filter_eps},
    {"depth_contrast", "quorvane.para10", &LibParam::depth_contrast, 30.0},
    {"border_deadzone", "quorvane.para11", &LibParam::border_deadzone, 18.0},
    {"fov_scale", "quorvane.para12", &LibParam::fov_scale},
    {"offset_gain", "quorvane.para13", &LibParam::offset_gain},
    {"offset_len", "quorvane.para14", &LibParam::offset_len},
};

/// The tuned set for every orientation but 4 and 7, for which LibParam's own defaults are tuned.
LibParam secondTunedSet();

}  // namespace quorvane

#endif
