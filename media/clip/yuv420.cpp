#include "media/clip/yuv420.h"

#include <cassert>

#include "composition/bt709.h"

namespace quorvane::media {
namespace {

/// The three colours of pixels, each sample 0..255 times 256.
struct Row {
    explicit Row(size_t width) : red(width), green(width), blue(width) {}
    std::vector<uint16_t> red, green, blue;
};

void lumaRow(const uint8_t* pixels, size_t width, uint8_t* luma) {
    for (size_t x = 0; x < width; ++x) {
        const auto at = [&](size_t c) { return static_cast<uint16_t>(pixels[4 * x + c] << 8); };
        luma[x] = bt709::luma(at(0), at(1), at(2));
    }
}

/// The mean of every 2 x 2 pixels of two rows.
void meanRow(const uint8_t* above, const uint8_t* below, size_t width, Row* mean) {
    for (size_t x = 0; x < width; ++x) {
        const auto at = [&](size_t c) {
            const size_t left = 8 * x + c, right = left + 4;
            return static_cast<uint16_t>((above[left] + above[right] + below[left] + below[right]) << 6);
        };
        mean->red[x] = at(0);
        mean->green[x] = at(1);
        mean->blue[x] = at(2);
    }
}

}  // namespace

size_t yuv420Bytes(Size size) {
    return static_cast<size_t>(size.width) * static_cast<size_t>(size.height) * 3 / 2;
}

void toYuv420(const RgbaImage& image, std::vector<uint8_t>* planes) {
    assert(image.width % 2 == 0 && image.height % 2 == 0);
    planes->resize(yuv420Bytes({image.width, image.height}));
    const size_t width = static_cast<size_t>(image.width), half = width / 2;
    uint8_t* luma = planes->data();
    uint8_t* cb = luma + width * static_cast<size_t>(image.height);
    uint8_t* cr = cb + half * static_cast<size_t>(image.height) / 2;
    Row mean(half);
    for (int y = 0; y < image.height; y += 2, luma += 2 * width, cb += half, cr += half) {
        lumaRow(image.row(y), width, luma);
        lumaRow(image.row(y + 1), width, luma + width);
        meanRow(image.row(y), image.row(y + 1), half, &mean);
        const uint16_t *red = mean.red.data(), *green = mean.green.data(), *blue = mean.blue.data();
        for (size_t x = 0; x < half; ++x) cb[x] = bt709::cb(red[x], green[x], blue[x]);
        for (size_t x = 0; x < half; ++x) cr[x] = bt709::cr(red[x], green[x], blue[x]);
    }
}

}  // namespace quorvane::media
