#ifndef QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_APPLE_HEIC_H
#define QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_APPLE_HEIC_H

#include <optional>
#include <string>

#include "media/picture/image.h"

namespace quorvane::test {

/// Item IDs of the files below; those that a file lacks are left out.
constexpr uint32_t kHeicPhoto = 1, kHeicDepth = 2, kHeicMatte = 3, kHeicGainMap = 4, kHeicDepthXmp = 5,
                   kHeicSecondView = 6;

struct AppleHeicOptions {
    bool matte = false, gain_map = false;  ///< beside the depth, of its size, listed before it
    bool depth = true;
    bool avif = false;  ///< AV1 in place of HEVC

    // Quarter turns against the clock, as the irot box counts them; then the mirroring of the imir box, 0:
    // top and bottom change places, 1: left and right.
    int photo_turns = 0, depth_turns = 0;
    std::optional<int> photo_mirror, depth_mirror;

    /// The depth representation information: its type (1: disparity) and range in 1 / distance, or the
    /// distances.
    struct Range {
        int type = 1;
        std::optional<double> d_min, d_max, z_near, z_far;
    };
    std::optional<Range> range;

    std::string depth_xmp;  ///< a packet of the depth's own

    enum class Fault {
        kNone,
        kDepthBeyondFile,  ///< the depth's bytes are said to lie behind the file's end
        kDepthNotCoded,    ///< its bytes are no picture
        kNoReference,      ///< nothing says whose the depth is
        kNoAuxType,        ///< the depth does not say that it is one
        kHugeDepth,        ///< the depth says that it has 20,000 x 20,000 pixels
    };
    Fault fault = Fault::kNone;
};

/// A HEIC file as iPhones write it in portrait mode. Both pictures at least 128 pixels wide and high. The
/// depth is kept without loss.
std::string appleHeicFile(const media::RgbImage& photo, const media::GrayImage& depth,
                          const AppleHeicOptions& options = {});

/// The same with samples of `bits` bits, 8, 10 or 12.
std::string appleHeicFile(const media::RgbImage& photo, const media::Image<uint16_t, 1>& depth, int bits,
                          const AppleHeicOptions& options = {});

struct StereoHeicOptions {
    bool avif = false;
    bool photo_is_right = false;             ///< what viewers show is the right view
    uint32_t second_view = kHeicSecondView;  ///< what the group calls the second view
};

/// A HEIC file of two pictures and a stereo pair group, as headsets write it.
std::string stereoHeicFile(const media::RgbImage& left, const media::RgbImage& right,
                           const StereoHeicOptions& options = {});

}  // namespace quorvane::test

#endif
