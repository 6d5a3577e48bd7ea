#include "media/clip/yuv420.h"

#include <cassert>

namespace quorvane::media {
namespace {

// Sums are in 1/256 of a level: each product is the upper half of one of 16 by 16 bit, which vector units
// have for eight or more samples at once. Cut off rather than rounded, three of them are too low by at most
// 3/256, half of which is added back.
constexpr uint16_t upperHalf(uint16_t a, uint16_t b) {
    return static_cast<uint16_t>((static_cast<uint32_t>(a) * b) >> 16);
}

/// A weight of samples 0..255, for levels 0..`range`.
constexpr uint16_t weight(double part, int range) {
    return static_cast<uint16_t>(part * range / 255.0 * 65536.0 + 0.5);
}

constexpr double kRed = 0.2126, kGreen = 0.7152, kBlue = 0.0722;
constexpr int kLumaRange = 219, kColourRange = 224;
constexpr uint16_t kLumaFloor = 16 * 256 + 128 + 1, kColourMiddle = 128 * 256 + 128;

constexpr uint16_t kLumaRed = weight(kRed, kLumaRange), kLumaGreen = weight(kGreen, kLumaRange),
                   kLumaBlue = weight(kBlue, kLumaRange);

// Cb = (B - Y) / (2 - 2 kBlue) and Cr = (R - Y) / (2 - 2 kRed): of one's own colour one half, of the other
// two what is taken away.
constexpr uint16_t kHalf = weight(0.5, kColourRange);
constexpr uint16_t kCbRed = weight(0.5 * kRed / (1.0 - kBlue), kColourRange);
constexpr uint16_t kCbGreen = weight(0.5 * kGreen / (1.0 - kBlue), kColourRange);
constexpr uint16_t kCrGreen = weight(0.5 * kGreen / (1.0 - kRed), kColourRange);
constexpr uint16_t kCrBlue = weight(0.5 * kBlue / (1.0 - kRed), kColourRange);

/// The three colours of pixels, each sample 0..255 times 256.
struct Row {
    explicit Row(size_t width) : red(width), green(width), blue(width) {}
    std::vector<uint16_t> red, green, blue;
};

void lumaRow(const uint8_t* pixels, size_t width, uint8_t* luma) {
    for (size_t x = 0; x < width; ++x) {
        const auto at = [&](size_t c) { return static_cast<uint16_t>(pixels[4 * x + c] << 8); };
        luma[x] = static_cast<uint8_t>((upperHalf(at(0), kLumaRed) + upperHalf(at(1), kLumaGreen) +
                                        upperHalf(at(2), kLumaBlue) + kLumaFloor) >>
                                       8);
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

void colourRow(const uint16_t* own, const uint16_t* one, uint16_t one_weight, const uint16_t* other,
               uint16_t other_weight, size_t width, uint8_t* colour) {
    for (size_t x = 0; x < width; ++x)
        colour[x] =
            static_cast<uint8_t>((kColourMiddle + upperHalf(own[x], kHalf) - upperHalf(one[x], one_weight) -
                                  upperHalf(other[x], other_weight)) >>
                                 8);
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
        colourRow(mean.blue.data(), mean.red.data(), kCbRed, mean.green.data(), kCbGreen, half, cb);
        colourRow(mean.red.data(), mean.green.data(), kCrGreen, mean.blue.data(), kCrBlue, half, cr);
    }
}

}  // namespace quorvane::media
