#ifndef QUORVANE_KERNELS_DENOISE_H
#define QUORVANE_KERNELS_DENOISE_H

#include <cstdint>

#include "kernels/paths.h"

namespace quorvane {

QUORVANE_IN_EVERY_PATH(
    /// Averages every sample of a width x height plane with its four neighbours, the edge repeated;
    /// truncates. The planes do not overlap.
    void crossDenoise(const uint8_t* src, uint8_t* dst, int width, int height);

    /// Replaces each of `count` samples by what `table` holds for it.
    void lookUp(uint8_t* samples, size_t count, const uint8_t* table);)

inline constexpr void (*crossDenoisePaths[])(const uint8_t*, uint8_t*, int,
                                             int) = QUORVANE_EVERY_PATH(crossDenoise);
inline constexpr void (*lookUpPaths[])(uint8_t*, size_t, const uint8_t*) = QUORVANE_EVERY_PATH(lookUp);

}  // namespace quorvane

#endif
