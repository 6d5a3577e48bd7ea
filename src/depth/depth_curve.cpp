#include "depth/depth_curve.h"

#include "kernels/clamped_cast.h"

void quorvane::scaleDepthCurve(float contrast, uint8_t (&curve)[256]) noexcept {
    for (int depth = 0; depth < 256; ++depth) {
        const float scaled = (static_cast<float>(depth) * contrast) * 0.03125f + 0.0f;
        curve[depth] = u_depth_table[clampedCast<uint32_t>(scaled) & 0xff];
    }
}
