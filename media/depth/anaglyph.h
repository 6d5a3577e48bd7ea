#ifndef QUORVANE_MEDIA_DEPTH_ANAGLYPH_H
#define QUORVANE_MEDIA_DEPTH_ANAGLYPH_H

#include "media/picture/image.h"

namespace quorvane::media {

/// Whether a photo is an anaglyph, two views in complementary colours for a pair of coloured glasses: its red
/// channel shows things in other columns than the other two do, far more than a lens's colour fringes. 0.3 s.
bool isAnaglyph(const RgbImage& photo);

}  // namespace quorvane::media

#endif
