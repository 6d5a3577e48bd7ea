#ifndef QUORVANE_MEDIA_PICTURE_COLOUR_MAP_H
#define QUORVANE_MEDIA_PICTURE_COLOUR_MAP_H

#include <array>
#include <vector>

#include "media/picture/image.h"

namespace quorvane::media {

/// A colour on the scale 0..255, or a difference of two.
using MapColour = std::array<double, 3>;

/// A colour map as a curve through RGB: evenly spaced positions from 0 to 1, the lowest value first.
struct ColourMap {
    const char* name;
    std::vector<MapColour> curve;
};

/// The known map that the colours of `image` were taken from, or null. A photo's colours fill RGB too widely
/// for any: of the coloured pixels nine in ten must lie within 12 levels of the curve, half within 6, and
/// they must use a quarter of it. If several maps qualify, as jet and hot may with their reds, the one that
/// is near most pixels, gray ones included.
const ColourMap* recogniseColourMap(const RgbImage& image);

/// Reads colours back through `map`: the position on its curve, 0 to 255, unrounded. `known` becomes 0 where
/// a colour is far off the curve, 255 elsewhere; it stays empty where none is.
Plane positionsOnColourMap(const RgbImage& image, const ColourMap& map, GrayImage* known);

}  // namespace quorvane::media

#endif
