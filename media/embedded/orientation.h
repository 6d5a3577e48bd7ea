#ifndef QUORVANE_MEDIA_EMBEDDED_ORIENTATION_H
#define QUORVANE_MEDIA_EMBEDDED_ORIENTATION_H

namespace quorvane::media {

/// One of the eight ways to put a picture on its rectangle. Bits, in the order in which they are applied:
/// mirror left to right, mirror top to bottom, exchange rows and columns.
using Turn = unsigned;
constexpr Turn kMirrored = 1, kFlipped = 2, kTransposed = 4;
constexpr Turn kTurns = 8;

constexpr Turn kClockwise180 = kMirrored | kFlipped;
constexpr Turn kClockwise90 = kFlipped | kTransposed;
constexpr Turn kClockwise270 = kMirrored | kTransposed;

/// Both turns in one, `first` before `second`.
constexpr Turn followedBy(Turn first, Turn second) {
    // Exchanging rows and columns makes a mirror of left and right one of top and bottom.
    const bool transposed = (first & kTransposed) != 0;
    const Turn mirrored = transposed ? (second & kFlipped) >> 1 : second & kMirrored;
    const Turn flipped = transposed ? (second & kMirrored) << 1 : second & kFlipped;
    return first ^ (mirrored | flipped | (second & kTransposed));
}

/// The turn that brings a picture with Exif's orientation, 1 to 8, upright.
constexpr Turn turnOfExif(int orientation) {
    constexpr Turn kTurnsOfExif[] = {0, 1, 3, 2, 4, 6, 7, 5};
    return kTurnsOfExif[orientation - 1];
}

/// Exif's orientation that asks for a turn.
constexpr int exifOfTurn(Turn turn) {
    constexpr int kExifOfTurns[] = {1, 2, 4, 3, 5, 8, 6, 7};
    return kExifOfTurns[turn];
}

}  // namespace quorvane::media

#endif
