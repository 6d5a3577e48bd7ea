#ifndef QUORVANE_BENCH_VIEWS_MEASURES_H
#define QUORVANE_BENCH_VIEWS_MEASURES_H

#include "bench/views/picture.h"

namespace quorvane::bench {

/// Sums up how far drawn pixels are from true ones.
struct Error {
    double squares = 0.0;
    double samples = 0.0;
    /// The peak signal-to-noise ratio in dB; 0 where there are no samples.
    double decibels() const;
};

/// Over the mask's pixels.
void addError(const Picture& drawn, const Picture& truth, const Mask& mask, Error* error);

/// The structural similarity of the lumas (Gaussian window, sigma 1.5 pixels): its mean over the mask.
double similarity(const Picture& drawn, const Picture& truth, const Mask& mask);

/// The mask grown by `radius` pixels on each side.
Mask grown(const Mask& mask, int radius);

/// `plane` under a Gaussian window.
Plane blurred(const Plane& plane, double sigma);

}  // namespace quorvane::bench

#endif
