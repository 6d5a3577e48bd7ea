#ifndef QUORVANE_MEDIA_DECODER_DECODER_H
#define QUORVANE_MEDIA_DECODER_DECODER_H

#include <cstdint>
#include <string>
#include <string_view>

#include "media/depth/photo_with_depth.h"
#include "media/depth/stereo_views.h"
#include "media/embedded/embedded.h"
#include "media/embedding/photo_with_depth_file.h"
#include "media/picture/picture_file.h"

namespace quorvane::media {

// Files of strangers, decoded where damage and malice end at one line.
//
// A program that calls decodeInWorker() once has every function below done by a process of its own, which is
// started at the first one and kept for the next: it opens no file, starts no program, reaches no network and
// has limits of memory and time. A file that crashes a decoder, or asks it for more than a picture is worth,
// fails with an Error. Other programs, and builds for sanitizers, decode in their own process.
//
// Each function does what the one of the same name in media does. A decoder that takes too long: 10 s of CPU
// time, and half a second more for each million pixels of the picture's header and each megabyte of the file.

/// The worker is `program` with kDecodingWorker as its only argument, and its main calls serveDecoding(). An
/// empty one: from now on there is none. A worker that ran before is ended.
void decodeInWorker(const std::string& program);

constexpr const char* kDecodingWorker = "--decode-for-the-program-that-started-this";

/// What a worker takes at most.
struct DecodingLimits {
    /// Bytes of its address space. A picture of the most pixels that are read takes 2.9 GB on its way to RGB.
    uint64_t memory = uint64_t{6} << 30;
    /// CPU time for a file, and on top for each megabyte and each million pixels that its header says. The
    /// slowest honest pictures, large HEIC files, take a fifth of a second for a million pixels.
    double seconds = 10.0;
    double seconds_a_megabyte = 0.5;
    double seconds_a_million_pixels = 0.5;
};

/// What such a main does: decodes until the other program ends. Returns the exit code.
int serveDecoding(const DecodingLimits& limits = {});

namespace decoder {

Contents lookInside(std::string_view file, const std::string& name);
PictureHeader readPictureHeader(std::string_view bytes, const std::string& name);
RgbImage decodePhoto(std::string_view bytes, const std::string& name);
RgbImage decodePhoto(std::string_view file, const Contents& contents, const std::string& name,
                     std::string* remark);
ShrunkPhoto previewPhoto(std::string_view file, const Contents& contents, const std::string& name,
                         int least_side, std::string* remark);
ShrunkPhoto decodePhotoAtLeast(std::string_view file, const Contents& contents, const std::string& name,
                               Size least, std::string* remark);
DepthMap decodeDepthMap(std::string_view bytes, const std::string& name);
DepthMap decodeDepth(const EmbeddedDepth& depth, const std::string& name, std::string* remark);
SplitPicture decodeSideBySide(std::string_view file, DepthHalf half, const std::string& name);
std::string bareJpeg(std::string_view file, const std::string& name);
StereoViews decodeViews(std::string_view file, const StereoPair& pair, const std::string& name);

}  // namespace decoder

}  // namespace quorvane::media

#endif
