#ifndef QUORVANE_KERNELS_DENOISE_H
#define QUORVANE_KERNELS_DENOISE_H

#include <cstdint>

namespace quorvane::reference {

/// Averages every sample of a width x height plane with its four neighbours, the edge repeated; truncates.
/// Both planes are row-major bytes without row padding, sides at least 1, and do not overlap.
void crossDenoise(const uint8_t* src, uint8_t* dst, int width, int height);

}  // namespace quorvane::reference

#endif
