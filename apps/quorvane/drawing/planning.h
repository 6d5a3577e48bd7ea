#ifndef QUORVANE_APPS_DRAWING_PLANNING_H
#define QUORVANE_APPS_DRAWING_PLANNING_H

#include <functional>
#include <vector>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/drawing/view_options.h"
#include "apps/quorvane/terminal/talk.h"
#include "media/picture/image.h"
#include "quorvane/host/PicturePlan.h"
#include "sizes/sizes.h"

namespace quorvane::app {

/// A picture is no larger than this unless it is asked to be.
constexpr int kLongestSide = 1920;

/// A picture that is asked for, and who draws it.
struct Target {
    Size size;                   ///< pixels
    int supersample = 1;         ///< drawn this many times as large on either axis
    std::vector<Position> path;  ///< all that it is seen from
    int largest_texture = 0;     ///< that the driver takes
};

/// Whether the photo's pixels have a part in the plan.
bool planReadsPhoto(const ViewOptions& options);

/// Says on standard error where the view swings less far than was asked.
void saySwing(const PicturePlan& plan, const Talk& talk);

/// How far the pictures of `plan` stretch, which fitPicture made of the same. Throws Error.
PictureStretch stretchOf(const ViewOptions& options, const Target& target, const FitPlan& fit,
                         const PicturePlan& plan);

/// How many pixels of a photo of that size are enough to decode for almost every depth map, for pictures as
/// close as `closest_zoom`; all of them where the options want them.
Size enoughPhoto(const ViewOptions& options, Size picture, Size photo, double closest_zoom);

/// Brings `photo`, all of which has `whole` pixels or fewer where it was shrunk, to the size of `fit`.
media::RgbImage fittedPhoto(const FitPlan& fit, Size whole, const media::RgbImage& photo);

/// Gives the photo brought to the size of a plan.
using PhotoFor = std::function<media::RgbImage(const FitPlan& fit)>;

struct FittedPicture {
    FitPlan fit;
    PicturePlan plan;
    media::RgbImage photo;  ///< empty where it has no part in the plan
};

/// Both plans together: the photo's size depends on how much of it will be seen, which only the second says.
/// `depth` is on the scale 0..255, larger = nearer. Needs no GL. Throws Error.
FittedPicture fitPicture(const ViewOptions& options, const Target& target, Size photo_size,
                         const PhotoFor& photo_for, const media::Plane& depth);

/// Both images as the renderer takes them together.
struct PlannedInput {
    media::RgbImage photo;
    PicturePlan plan;
    Target target;  ///< that it was planned for
    FitPlan fit;
};

/// A photo that may have been shrunk while it was decoded.
struct SourcePhoto {
    /// All pixels, which is what no `whole` gives.
    SourcePhoto(media::RgbImage all);  // NOLINT(google-explicit-constructor)
    SourcePhoto(media::RgbImage some, Size whole_size, std::function<media::RgbImage()> decode_whole);

    media::RgbImage pixels;
    Size size;                               ///< of the whole photo
    std::function<media::RgbImage()> whole;  ///< called where `pixels` are too few
};

/// Cuts the images to the picture's aspect, fits their sizes to each other and plans the picture. `depth` is
/// on the scale 0..255, larger = nearer. Arithmetic only: any thread, no context. Throws Error.
PlannedInput planInput(const ViewOptions& options, const Talk& talk, Target target, SourcePhoto photo,
                       const media::Plane& depth);

}  // namespace quorvane::app

#endif
