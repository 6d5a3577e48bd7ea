#ifndef QUORVANE_APPS_DRAWING_OVERLAYS_H
#define QUORVANE_APPS_DRAWING_OVERLAYS_H

#include <cstdint>
#include <functional>
#include <vector>

#include "media/picture/image.h"
#include "sizes/sizes.h"

namespace quorvane::app {

struct Colour {
    uint8_t red, green, blue;
};

/// A number for every place of a picture: u and v go from 0 at its left and top to 1.
using Field = std::function<double(double u, double v)>;

/// Between the samples of a plane, linear; at its border like the nearest sample. `plane` has to stay.
Field fieldOf(const media::GrayImage& plane);

/// Draws a line, on a dark rim, along what is not below 0 of the field; also where that ends at the image's
/// border, if the field is below 0 beyond.
void drawContour(const Field& field, Colour colour, media::RgbImage* image);

/// Draws an upright cross, open in the middle.
void drawCross(double u, double v, Colour colour, media::RgbImage* image);

/// The picture, gray and darkened, under the colours for how many times as large as at rest its parts are
/// drawn: yellow for 2, orange for 4, red for 8 and pink from 16. `times` has a value a cell of `grid`; where
/// a pixel shows several cells, the largest counts.
media::RgbImage heatMap(const media::RgbImage& image, const std::vector<float>& times, Size grid);

}  // namespace quorvane::app

#endif
