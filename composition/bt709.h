#ifndef QUORVANE_COMPOSITION_BT709_H
#define QUORVANE_COMPOSITION_BT709_H

#include <cstddef>
#include <cstdint>

// Y'CbCr by BT.709 (ITU-R BT.709-6, 3.2 and 3.4) in limited range: luma 16 to 235, Cb and Cr 16 to 240. Each
// sample is within 0.52 of the exact value.
//
// Sums are in 1/256 of a level: each product is the upper half of one of 16 by 16 bit, which vector units
// have for eight or more samples at once. Cut off rather than rounded, three of them are too low by at most
// 3/256, half of which is added back.

namespace quorvane::bt709 {

constexpr uint8_t kBlackLuma = 16, kNoColour = 128;

constexpr uint16_t upperHalf(uint16_t a, uint16_t b) {
    return static_cast<uint16_t>((static_cast<uint32_t>(a) * b) >> 16);
}

/// A weight of samples 0..255, for levels 0..`range`.
constexpr uint16_t weight(double part, int range) {
    return static_cast<uint16_t>(part * range / 255.0 * 65536.0 + 0.5);
}

constexpr double kRed = 0.2126, kGreen = 0.7152, kBlue = 0.0722;
constexpr int kLumaRange = 219, kColourRange = 224;
constexpr uint16_t kLumaFloor = kBlackLuma * 256 + 128 + 1, kColourMiddle = kNoColour * 256 + 128;

constexpr uint16_t kLumaRed = weight(kRed, kLumaRange), kLumaGreen = weight(kGreen, kLumaRange),
                   kLumaBlue = weight(kBlue, kLumaRange);

// Cb = (B - Y) / (2 - 2 kBlue) and Cr = (R - Y) / (2 - 2 kRed): of one's own colour one half, of the other
// two what is taken away.
constexpr uint16_t kHalf = weight(0.5, kColourRange);
constexpr uint16_t kCbRed = weight(0.5 * kRed / (1.0 - kBlue), kColourRange);
constexpr uint16_t kCbGreen = weight(0.5 * kGreen / (1.0 - kBlue), kColourRange);
constexpr uint16_t kCrGreen = weight(0.5 * kGreen / (1.0 - kRed), kColourRange);
constexpr uint16_t kCrBlue = weight(0.5 * kBlue / (1.0 - kRed), kColourRange);

// Of samples 0..255 times 256.

constexpr uint8_t luma(uint16_t red, uint16_t green, uint16_t blue) {
    return static_cast<uint8_t>(
        (upperHalf(red, kLumaRed) + upperHalf(green, kLumaGreen) + upperHalf(blue, kLumaBlue) + kLumaFloor) >>
        8);
}

constexpr uint8_t cb(uint16_t red, uint16_t green, uint16_t blue) {
    return static_cast<uint8_t>(
        (kColourMiddle + upperHalf(blue, kHalf) - upperHalf(red, kCbRed) - upperHalf(green, kCbGreen)) >> 8);
}

constexpr uint8_t cr(uint16_t red, uint16_t green, uint16_t blue) {
    return static_cast<uint8_t>(
        (kColourMiddle + upperHalf(red, kHalf) - upperHalf(green, kCrGreen) - upperHalf(blue, kCrBlue)) >> 8);
}

}  // namespace quorvane::bt709

#endif
