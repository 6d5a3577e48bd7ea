#include "media/picture/resample.h"

#include <cstdint>

#include "media/picture/dither.h"
#include "media/picture/lanczos.h"
#include "media/picture/vips.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

vips::VImage resized(const vips::VImage& image, Size size, VipsKernel kernel) {
    return image.resize(static_cast<double>(size.width) / image.width(),
                        vips::VImage::option()
                            ->set("vscale", static_cast<double>(size.height) / image.height())
                            ->set("kernel", kernel));
}

Error notResized(const char* what, Size from, Size to) {
    const auto sides = [](Size size) {
        return std::to_string(size.width) + " x " + std::to_string(size.height);
    };
    return Error(std::string(what) + " (" +
                 vipsReason("from " + sides(from) + " to " + sides(to) + " pixels") + ")");
}

}  // namespace

RgbImage resample(const RgbImage& image, Size size) {
    if (Size{image.width, image.height} == size) return image;
    if (size.width <= image.width && size.height <= image.height) return reducedByLanczos(image, size);
    try {
        return fromVips<uint8_t, 3>(resized(toVips(image), size, VIPS_KERNEL_LANCZOS3));
    } catch (const vips::VError&) {
        throw notResized("the photo cannot be resampled", {image.width, image.height}, size);
    }
}

GrayImage toBytes(const Plane& plane, Size size) {
    if (Size{plane.width, plane.height} == size) return dithered(plane);
    try {
        return dithered(fromVips<float, 1>(resized(toVips(plane), size, VIPS_KERNEL_LINEAR)));
    } catch (const vips::VError&) {
        throw notResized("the depth map cannot be scaled", {plane.width, plane.height}, size);
    }
}

}  // namespace quorvane::media
