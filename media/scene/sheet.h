#ifndef QUORVANE_MEDIA_SCENE_SHEET_H
#define QUORVANE_MEDIA_SCENE_SHEET_H

#include <string>
#include <vector>

#include "media/picture/image.h"

namespace quorvane::media {

struct Panel {
    std::string label;
    RgbImage image;
};

/// The panels in rows of `columns`, each scaled into a box of the first one's aspect, `panel_width` pixels
/// wide, with its label below. Throws Error.
RgbImage contactSheet(const std::vector<Panel>& panels, int columns, int panel_width);

/// A gray plane as a picture.
RgbImage toRgb(const GrayImage& gray);

/// Without the fourth channel.
RgbImage toRgb(const RgbaImage& rgba);

}  // namespace quorvane::media

#endif
