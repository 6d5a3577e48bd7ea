#ifndef QUORVANE_SOFTWARE_KERNELS_CELL_H
#define QUORVANE_SOFTWARE_KERNELS_CELL_H

#include "software/kernels/drawing.h"

// What the reference and the vector code of the drawing kernels have in common.

namespace quorvane::software {

/// A triangle of less, in square pixels, is not drawn: what is linear over it could be anything.
constexpr float kLeastArea = 1e-9f;

/// An edge that falls by less, in pixels, counts as falling by so much: where it crosses rows stays a number.
constexpr float kLeastFall = 1e-30f;

/// How many times wider than high the diagonal of a cell may be, so that places can be counted from it.
constexpr float kFlattestDiagonal = 16;

/// How far from a cell's bounds a pixel's centre may lie, so that rounding leaves none out; and where samples
/// lie up to half a pixel from it.
constexpr float kReach = 1.0f / 256;
constexpr float kSampleReach = 0.5f + kReach;

/// A texel's place has so many fractional bits, and colours are blended with so many.
constexpr int kPlaceBits = 15;
constexpr int kPlaceOne = 1 << kPlaceBits;
constexpr float kPlaceUnit = kPlaceOne;
constexpr int kColourBits = 7;
constexpr int kPartsCut = kColourBits - kColourPartBits;

/// The colour of four pixels, from the sum of theirs with kColourPartBits.
static inline uint8_t meanOfFour(int sum) {
    return static_cast<uint8_t>((sum + (1 << (kColourPartBits + 1))) >> (kColourPartBits + 2));
}

constexpr int kTile = 8;

/// Whether any of these pixels may have samples of their own. An inline function would be compiled for one
/// path and linked for all.
static inline bool touchesMarked(const Band& band, int left, int right, int top, int bottom) {
    for (int row = (top - band.top) / kTile; row <= (bottom - 1 - band.top) / kTile; ++row)
        for (int column = left / kTile; column <= (right - 1) / kTile; ++column)
            if (band.marked_tiles[row * band.tile_stride + column] != 0) return true;
    return false;
}

}  // namespace quorvane::software

#endif
