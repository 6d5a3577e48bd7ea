#ifndef QUORVANE_MEDIA_PICTURE_VIPS_H
#define QUORVANE_MEDIA_PICTURE_VIPS_H

#include <string>
#include <vips/vips8>

#include "media/picture/image.h"
#include "system/error.h"

namespace quorvane::media {

/// Starts libvips on the first call, with its own messages silenced: failures are reported once, as an Error.
void startVips();

/// libvips' last error as one line, and clears it. Where it says nothing, or where another thread that failed
/// at the same time has taken the text, `otherwise`: what the caller knows.
std::string vipsReason(const std::string& otherwise);

/// The bytes of a file that libvips has made in memory, which is freed.
std::string takeBytes(VipsBlob* blob);

template <typename Sample>
constexpr VipsBandFormat vipsFormat();
template <>
constexpr VipsBandFormat vipsFormat<uint8_t>() {
    return VIPS_FORMAT_UCHAR;
}
template <>
constexpr VipsBandFormat vipsFormat<float>() {
    return VIPS_FORMAT_FLOAT;
}

/// A libvips view of `image`, which must outlive it.
template <typename Sample, int kChannels>
vips::VImage toVips(const Image<Sample, kChannels>& image) {
    startVips();
    const vips::VImage view = vips::VImage::new_from_memory(
        const_cast<Sample*>(image.samples.data()), image.samples.size() * sizeof(Sample), image.width,
        image.height, kChannels, vipsFormat<Sample>());
    const VipsInterpretation interpretation =
        kChannels == 1 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB;
    return view.copy(vips::VImage::option()->set("interpretation", interpretation));
}

/// Computes `image`, of `kChannels` bands, into memory.
template <typename Sample, int kChannels>
Image<Sample, kChannels> fromVips(const vips::VImage& image) {
    Image<Sample, kChannels> out(image.width(), image.height());
    const vips::VImage samples =
        vips::VImage::new_from_memory(out.samples.data(), out.samples.size() * sizeof(Sample), out.width,
                                      out.height, kChannels, vipsFormat<Sample>());
    image.cast(vipsFormat<Sample>()).write(samples);
    return out;
}

}  // namespace quorvane::media

#endif
