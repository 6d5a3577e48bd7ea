#ifndef QUORVANE_VIEW_ANGLE_H
#define QUORVANE_VIEW_ANGLE_H

namespace quorvane {

/// Truncated on purpose: the angles that hosts tuned were converted with this value.
constexpr double PI = 3.1415926;

}  // namespace quorvane

#endif
