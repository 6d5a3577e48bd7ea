#include "media/embedded/heif_plane.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>

#include "media/embedded/heif_file.h"

namespace quorvane::media {
namespace {

void requireSize(int width, int height, long long most_pixels) {
    if (width < 1 || height < 1) throw std::runtime_error("it has no pixels");
    if (1LL * width * height > most_pixels)
        throw std::runtime_error(std::to_string(width) + " x " + std::to_string(height) +
                                 " pixels; at most " + std::to_string(most_pixels) + " are read");
}

}  // namespace

HeifPlane decodeHeifItem(std::string_view file, uint32_t item, long long most_pixels) {
    const HeifFile opened = openHeif(file);
    const HeifHandle handle = auxiliaryPicture(opened.primary.get(), item);
    // Before it is cropped.
    const int width_said = heif_image_handle_get_ispe_width(handle.get());
    const int height_said = heif_image_handle_get_ispe_height(handle.get());
    requireSize(width_said, height_said, most_pixels);
    // A picture of tiles says its size a second time.
    heif_context_set_maximum_image_size_limit(opened.context.get(), std::max(width_said, height_said));
    // As it is coded: a conversion to gray would change what the samples mean.
    heif_image* decoded = nullptr;
    throwIfFailed(
        heif_decode_image(handle.get(), &decoded, heif_colorspace_undefined, heif_chroma_undefined, nullptr));
    const HeifImage image(decoded);
    if (!heif_image_has_channel(image.get(), heif_channel_Y))
        throw std::runtime_error("its pixels are coded as RGB; a plane has one channel");
    HeifPlane plane;
    plane.width = heif_image_get_width(image.get(), heif_channel_Y);
    plane.height = heif_image_get_height(image.get(), heif_channel_Y);
    plane.bits = heif_image_get_bits_per_pixel_range(image.get(), heif_channel_Y);
    requireSize(plane.width, plane.height, most_pixels);
    if (plane.bits < 8 || plane.bits > 16)
        throw std::runtime_error("samples of " + std::to_string(plane.bits) + " bits; 8 to 16 are read");

    int stride = 0;
    const uint8_t* rows = heif_image_get_plane_readonly(image.get(), heif_channel_Y, &stride);
    if (rows == nullptr) throw std::runtime_error("it has no pixels");
    const size_t width = static_cast<size_t>(plane.width), height = static_cast<size_t>(plane.height);
    plane.samples.resize(width * height);
    for (size_t y = 0; y < height; ++y) {
        const uint8_t* row = rows + y * static_cast<size_t>(stride);
        uint16_t* out = plane.samples.data() + y * width;
        if (plane.bits == 8)
            std::copy_n(row, width, out);
        else
            std::memcpy(out, row, width * 2);
    }
    return plane;
}

}  // namespace quorvane::media
