#ifndef QUORVANE_MEDIA_SCENE_SAMPLE_SCENE_H
#define QUORVANE_MEDIA_SCENE_SAMPLE_SCENE_H

#include "media/picture/image.h"

namespace quorvane::media {

/// A picture and its depth map of the same size.
struct SampleScene {
    RgbImage photo;
    GrayImage depth;  ///< edges are hard: no in-between values
};

/// Paints a lake at dawn: far hills, birches at the left, a round paper lantern at the right, grass in front.
/// Width and height are clamped to 64..8192; the composition adapts to any aspect. The same size gives the
/// same bytes on every run.
///
/// A pixel's depth is that of the layer that covers most of it: sky and birds 20..40, hills and far woods
/// 50..105, water and meadow from 90 at the horizon to 215 at the bottom edge, what stands on the ground
/// about that of its foot, and the lantern a ball that bulges to 235.
SampleScene makeSampleScene(int width, int height);

}  // namespace quorvane::media

#endif
