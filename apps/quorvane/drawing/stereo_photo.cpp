#include "apps/quorvane/drawing/stereo_photo.h"

#include <array>
#include <cmath>

#include "media/embedding/mpo_file.h"
#include "media/embedding/spatial_heic.h"

namespace quorvane::app {
namespace {

/// The mean distance between people's eyes. N. A. Dodgson, "Variation and extrema of human interpupillary
/// distance", Proc. SPIE 5291, 2004.
constexpr double kEyeDistance = 63.0;

media::RgbImage opaque(const media::RgbaImage& image) {
    media::RgbImage out(image.width, image.height);
    for (size_t i = 0; i < out.samples.size(); ++i) out.samples[i] = image.samples[i / 3 * 4 + i % 3];
    return out;
}

/// The cameras of two views that are made parallel. Nothing says how large a photo's things are, so they are
/// taken for as large as they look to eyes that stand as far apart as people's do.
media::StereoCameras camerasOf(const DrawnView& left, const DrawnView& right) {
    media::StereoCameras cameras;
    cameras.focal_width = left.zoom / (2.0 * left.lens.half_width);
    cameras.focal_height = left.zoom / (2.0 * left.lens.half_height);
    const auto axis = [&](const DrawnView& view) {
        constexpr double kRadians = 3.14159265358979323846 / 180.0;
        return 0.5 + cameras.focal_width * std::tan(view.turn_deg * kRadians);
    };
    cameras.left_axis = axis(left);
    cameras.right_axis = axis(right);
    cameras.baseline_mm = right.turn_deg > left.turn_deg ? kEyeDistance : 0.0;
    return cameras;
}

}  // namespace

std::string stereoPhoto(View* view, const Stereo& stereo, Position middle, Size size, StageTimes* times,
                        const media::OutputFormat& format, int quality) {
    std::array<DrawnView, 2> eyes;
    const std::vector<StereoView> views = viewsAround(stereo, middle);
    std::array<media::RgbImage, 2> pictures;
    for (size_t i = 0; i < 2; ++i) {
        times->measure(Stage::kDraw, [&] { view->draw(views[i].position); });
        times->measure(Stage::kReadBack, [&] { view->readBack(&eyes[i].drawn); });
        setParallel(middle, stereo, *view, &eyes[i]);
        pictures[i] = opaque(finished(size, times, &eyes[i]));
    }
    const auto write = format.extension == ".mpo" ? media::mpoFile : media::spatialHeic;
    return times->measure(Stage::kEncode, [&] {
        return write(pictures[0], pictures[1], camerasOf(eyes[0], eyes[1]), quality);
    });
}

}  // namespace quorvane::app
