#ifndef QUORVANE_SIZES_DETAIL_H
#define QUORVANE_SIZES_DETAIL_H

#include "sizes/sizes.h"

namespace quorvane {

/// How a picture shows the photo.
struct Shown {
    Size drawn;            ///< the picture, in pixels as they are drawn, before any are averaged
    double visible = 1.0;  ///< the part of each of the photo's sides that fills it: the parameter fov_scale
};

// Photo pixels for each drawn one, in the middle of the picture. With fewer the picture is blurred. With more
// its fine textures alias and flicker, because a pixel is drawn from the four nearest of them.
constexpr double kFewestTexels = 1.0;
constexpr double kMostTexels = 1.25;

/// Like fitSizes, but a photo that is finer than the picture shows is made smaller: to between kFewestTexels
/// and kMostTexels, within which the size is chosen that gives the finest grid in the budget. Every other
/// photo keeps its pixels: where it is no whole number of cells, `photo` is less than a cell smaller, which
/// is to be cut off rather than resampled away; only where that would be more than a hundredth of a side does
/// the photo grow by less than a cell instead.
Fit fitShown(Size photo, Size depth, int largest_photo_side, const GridBudget& budget, const Shown& shown);

/// Like planFit, with the sizes of fitShown. Where pixels are to be cut off, `photo` and `depth` are what is
/// left of them.
FitPlan planShown(Size photo, Size depth, Size picture, int largest_texture, const GridBudget& budget,
                  const Shown& shown);

/// Whether the sizes that were found for another part being visible do for this one: to find them again would
/// not bring the texels any closer to their range.
bool showsDetail(const Fit& fit, Size photo, const Shown& shown);

/// Whether `fit` wants pixels cut off the photo's border, not a resampled photo.
bool isCutToCells(const Fit& fit, Size photo);

/// What fitShown makes of a larger photo at most.
Size aimedPhoto(const Shown& shown);

}  // namespace quorvane

#endif
