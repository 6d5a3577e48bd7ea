#ifndef QUORVANE_DEPTH_DEPTH_CURVE_H
#define QUORVANE_DEPTH_DEPTH_CURVE_H

#include <cstdint>

/// The depth curve: monotone and concave, slope about 2 at 0 and flat near 255, so that far
/// layers part from each other and near ones do not bulge.
// clang-format off
inline constexpr unsigned char u_depth_table[256] = {
      0,   2,   4,   6,   8,  10,  12,  13,  15,  17,  19,  21,  23,  25,  27,  28,
     30,  32,  34,  36,  38,  39,  41,  43,  45,  47,  48,  50,  52,  54,  55,  57,
     59,  61,  62,  64,  66,  67,  69,  71,  72,  74,  76,  77,  79,  81,  82,  84,
     85,  87,  89,  90,  92,  93,  95,  97,  98, 100, 101, 103, 104, 106, 107, 109,
    110, 112, 113, 115, 116, 118, 119, 121, 122, 123, 125, 126, 128, 129, 130, 132,
    133, 135, 136, 137, 139, 140, 141, 143, 144, 145, 146, 148, 149, 150, 152, 153,
    154, 155, 157, 158, 159, 160, 161, 163, 164, 165, 166, 167, 169, 170, 171, 172,
    173, 174, 175, 177, 178, 179, 180, 181, 182, 183, 184, 185, 186, 187, 188, 189,
    190, 191, 192, 193, 194, 195, 196, 197, 198, 199, 200, 201, 202, 203, 204, 205,
    205, 206, 207, 208, 209, 210, 211, 211, 212, 213, 214, 215, 215, 216, 217, 218,
    219, 219, 220, 221, 222, 222, 223, 224, 224, 225, 226, 226, 227, 228, 228, 229,
    230, 230, 231, 232, 232, 233, 233, 234, 235, 235, 236, 236, 237, 237, 238, 238,
    239, 239, 240, 240, 241, 241, 242, 242, 243, 243, 244, 244, 244, 245, 245, 246,
    246, 246, 247, 247, 247, 248, 248, 248, 249, 249, 249, 250, 250, 250, 251, 251,
    251, 251, 252, 252, 252, 252, 252, 253, 253, 253, 253, 253, 254, 254, 254, 254,
    254, 254, 254, 254, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255,
};
// clang-format on

namespace quorvane {

/// The curve for every value of depth scaled by contrast / 32. Only the low 8 bits of the scaled value count,
/// so a contrast above 32 folds the brightest depths over.
void scaleDepthCurve(float contrast, uint8_t (&curve)[256]) noexcept;

}  // namespace quorvane

#endif
