#ifndef QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_STEREO_SCENE_H
#define QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_STEREO_SCENE_H

#include "media/picture/image.h"

namespace quorvane::test {

/// Two views of a textured floor that rises to a wall, with a board and a nearer disc before it; all sizes
/// and disparities grow with the width.
struct StereoScene {
    media::RgbImage left, right;
    media::Plane disparity;   ///< of the left view, in pixels
    media::GrayImage hidden;  ///< 255 where the right view does not see what the left one does
};
StereoScene stereoScene(int width, int height);

/// `image` turned clockwise about its middle by `angle_deg`, moved down by `down` pixels, and each level made
/// `gain` times as high plus `offset`.
media::RgbImage displaced(const media::RgbImage& image, double angle_deg, double down, double gain,
                          double offset);

}  // namespace quorvane::test

#endif
