#ifndef QUORVANE_MEDIA_DEPTH_STEREO_DEPTH_H
#define QUORVANE_MEDIA_DEPTH_STEREO_DEPTH_H

#include <string>
#include <vector>

#include "media/depth/stereo_views.h"
#include "media/picture/picture_file.h"

namespace quorvane::media {

/// The depth of a pair's left view, of its size and with levels of 16 bit, larger = nearer, linear in
/// 1 / distance. Sets `remarks` to what a user should know, a line each, such as that the views were
/// exchanged, which is put right where it is certain.
///
/// Throws Error with one line about `name` where the views are no stereo pair: where they show different
/// things, or the same from one place.
///
/// Views may differ in exposure and be turned, shifted and scaled a little against each other; cameras may
/// lie one above the other, as a camera held upright has them. They are matched at up to a megapixel and
/// refined at full size. Cost for 12 megapixels: 3 s of
/// CPU time, 800 MB.
DepthMap depthOfPair(const StereoViews& views, const std::string& name, std::vector<std::string>* remarks);

}  // namespace quorvane::media

#endif
