#ifndef QUORVANE_APPS_DRAWING_PAGE_H
#define QUORVANE_APPS_DRAWING_PAGE_H

#include "apps/quorvane/drawing/view_options.h"
#include "apps/quorvane/input/depth_source.h"
#include "apps/quorvane/terminal/talk.h"
#include "media/clip/share_page.h"
#include "media/picture/image.h"
#include "sizes/sizes.h"

namespace quorvane::app {

/// The web element draws no larger photo.
constexpr int kLongestPageSide = 2048;

/// What the web element draws a photo with.
struct PagePicture {
    media::RgbImage photo;   ///< of the size that was asked for
    media::GrayImage depth;  ///< shaped: a sample a cell of the grid
    media::ElementSettings settings;
};

/// Composes a picture of `size` that will be seen from wherever the view goes, `amount` times as far as it
/// could. Needs no GL. Throws Error.
PagePicture pagePicture(const ViewOptions& options, const Talk& talk, Size size, double amount, Input input);

}  // namespace quorvane::app

#endif
