#ifndef QUORVANE_MEDIA_DEPTH_STEREO_VIEWS_H
#define QUORVANE_MEDIA_DEPTH_STEREO_VIEWS_H

#include <string>
#include <string_view>

#include "media/embedded/embedded.h"
#include "media/picture/image.h"
#include "media/picture/picture_file.h"

namespace quorvane::media {

/// Two views of one scene, of one size, upright.
struct StereoViews {
    RgbImage left, right;
};

/// Decodes both views of a pair that was found in `file`, or that the user says is there. Squeezed halves are
/// stretched to what they show; a middle column or row that belongs to neither is dropped; a right view of
/// another size is resampled to the left one's. Throws Error with a message about `name`, also where the two
/// differ in aspect by more than 2 %.
StereoViews decodeViews(std::string_view file, const StereoPair& pair, const std::string& name,
                        long long most_pixels = kMostPixels);

}  // namespace quorvane::media

#endif
