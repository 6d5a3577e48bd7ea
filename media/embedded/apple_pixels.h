#ifndef QUORVANE_MEDIA_EMBEDDED_APPLE_PIXELS_H
#define QUORVANE_MEDIA_EMBEDDED_APPLE_PIXELS_H

#include "media/embedded/embedded.h"
#include "media/embedded/xmp.h"

namespace quorvane::media {

// What the XMP in Apple's pictures says about their samples.

/// The role of an auxiliary picture by the URN of its type; kOther for types that do not matter here.
ImageRole appleRole(std::string_view type);

/// The role of a picture behind a JPEG by its XMP; nothing where that is not Apple's. Mattes and gain maps
/// may call themselves depth: only one that was measured as disparity or distance is.
std::optional<ImageRole> appleRole(const Xmp& xmp);

/// Fills in what the samples, 0 to `most`, measure. Leaves `depth` as it is where the XMP says nothing of it.
void describeAppleDepth(const Xmp& xmp, int most, EmbeddedDepth* depth);

}  // namespace quorvane::media

#endif
