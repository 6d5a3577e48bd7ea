#ifndef QUORVANE_KERNELS_GUIDED_FILTER_H
#define QUORVANE_KERNELS_GUIDED_FILTER_H

#include <cstdint>

namespace quorvane {

struct Path;

/// One filtering, as guided_filter_qrv describes it.
struct GuidedFiltering {
    const uint8_t* guide;
    const uint8_t* input;
    uint8_t* output;  ///< may be `guide` or `input`
    int width;
    int height;  ///< at most 66051
    int rx;      ///< 0..width
    int ry;      ///< 0..height
    float eps;
    unsigned char* buffer;  ///< guidedFilterBufferSize(width, height) bytes of any alignment
};

/// Bytes: 20 a pixel and 8 for every entry of a (width + 1) x (height + 1) table.
constexpr int guidedFilterBufferSize(int width, int height) {
    return 20 * width * height + 8 * (width + 1) * (height + 1);
}

namespace reference {

/// Carries out a filtering in double precision. The vector paths work in single precision: they agree with
/// each other to the byte, and round to another neighbour than this one in at most one byte of 10,000.
void guidedFilter(const GuidedFiltering& filtering);

}  // namespace reference

/// Carries out a filtering on `path`. Radii may be any here: they are clipped to the image.
void guidedFilter(const Path& path, GuidedFiltering filtering);

}  // namespace quorvane

#endif
