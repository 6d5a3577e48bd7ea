#include "apps/quorvane/drawing/planning.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "apps/quorvane/terminal/text.h"
#include "media/picture/crop.h"
#include "media/picture/resample.h"
#include "sizes/detail.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

/// What the options say of a picture.
PictureRequest requestFor(const ViewOptions& options) {
    PictureRequest request;
    request.clean_edges = options.clean_edges;
    request.orientation = static_cast<uint32_t>(options.orientation);
    request.parameters = options.settings;
    request.pivot = options.pivot;
    request.pivot_x = options.pivot_x;
    request.pivot_y = options.pivot_y;
    request.frame = options.frame;
    return request;
}

/// All but the images.
PictureRequest requestFor(const ViewOptions& options, const Target& target, const FitPlan& fit) {
    PictureRequest request = requestFor(options);
    request.sizes = {fit.fit.photo.width, fit.fit.photo.height, fit.fit.grid.width, fit.fit.grid.height};
    request.width = target.size.width * target.supersample;
    request.height = target.size.height * target.supersample;
    request.path.emplace();
    for (const Position& position : target.path)
        request.path->push_back(
            {static_cast<float>(position.x), static_cast<float>(position.y), position.zoom});
    return request;
}

// What most photos show, and what few show less than.
constexpr double kUsuallyVisible = 0.95, kLeastUsuallyVisible = 0.85;

/// What the closest picture of a path shows, where `visible` is shown without a zoom.
double zoomedTo(double visible, double closest_zoom) { return std::min(1.0, visible / closest_zoom); }

Shown shownIn(const Target& target, double visible) {
    return {{target.size.width * target.supersample, target.size.height * target.supersample}, visible};
}

/// The part of both images that is used, and the sizes that they are brought to, for a picture that fills
/// itself with the part `visible` of each of the photo's sides.
FitPlan fitFor(const ViewOptions& options, const Target& target, Size photo, Size depth, double visible) {
    return options.whole_photo ? planFit(photo, depth, target.size, target.largest_texture, options.grid)
                               : planShown(photo, depth, target.size, target.largest_texture, options.grid,
                                           shownIn(target, visible));
}

/// `photo` has the size of `fit`, or is empty where it has no part in the plan. `depth` is used as `fit`
/// says.
PicturePlan planFor(const ViewOptions& options, const Target& target, const FitPlan& fit,
                    const media::RgbImage& photo, media::Plane depth) {
    if (Size{depth.width, depth.height} != fit.depth) depth = media::crop(depth, fit.depth);
    const Size plane = options.clean_edges ? Size{depth.width, depth.height} : fit.fit.depth;
    const media::GrayImage bytes = media::toBytes(depth, plane);

    PictureRequest request = requestFor(options, target, fit);
    request.photo = {photo.samples, photo.width, photo.height};
    request.depth = {bytes.samples, bytes.width, bytes.height};
    PicturePlan plan;
    const Status status = planPicture(request, &plan);
    if (!status) throw Error(status.message());
    return plan;
}

}  // namespace

SourcePhoto::SourcePhoto(media::RgbImage all) : pixels(std::move(all)), size({pixels.width, pixels.height}) {}

SourcePhoto::SourcePhoto(media::RgbImage some, Size whole_size, std::function<media::RgbImage()> decode_whole)
    : pixels(std::move(some)), size(whole_size), whole(std::move(decode_whole)) {}

bool planReadsPhoto(const ViewOptions& options) { return planReadsPhoto(requestFor(options)); }

PictureStretch stretchOf(const ViewOptions& options, const Target& target, const FitPlan& fit,
                         const PicturePlan& plan) {
    PictureStretch stretch;
    const Status status = measureStretch(requestFor(options, target, fit), plan, &stretch);
    if (!status) throw Error(status.message());
    return stretch;
}

void saySwing(const PicturePlan& plan, const Talk& talk) {
    if (plan.swing < 1.0 && !talk.quiet)
        std::fprintf(stderr,
                     "frame: the view swings %.2f times as far as asked, so that no border shows in half of "
                     "the photo\n",
                     plan.swing);
}

Size enoughPhoto(const ViewOptions& options, Size picture, Size photo, double closest_zoom) {
    if (options.whole_photo) return photo;
    const Target target = {picture, supersampleInSoftware(options), {}, 0};
    return aimedPhoto(
        shownIn(target, zoomedTo(frameGiven(options).value_or(kLeastUsuallyVisible), closest_zoom)));
}

media::RgbImage fittedPhoto(const FitPlan& fit, Size whole, const media::RgbImage& photo) {
    const auto share = [](int some, int all, int length) {
        return std::max(1, static_cast<int>(std::lround(static_cast<double>(length) * some / all)));
    };
    const Size part = {share(fit.photo.width, whole.width, photo.width),
                       share(fit.photo.height, whole.height, photo.height)};
    return part == Size{photo.width, photo.height} ? media::resample(photo, fit.fit.photo)
                                                   : media::resample(media::crop(photo, part), fit.fit.photo);
}

FittedPicture fitPicture(const ViewOptions& options, const Target& target, Size photo_size,
                         const PhotoFor& photo_for, const media::Plane& depth) {
    const Size depth_size = {depth.width, depth.height};
    const auto planned = [&](double visible) {
        FittedPicture picture;
        picture.fit = fitFor(options, target, photo_size, depth_size, visible);
        if (planReadsPhoto(options)) picture.photo = photo_for(picture.fit);
        picture.plan = planFor(options, target, picture.fit, picture.photo, depth);
        return picture;
    };
    const double zoom = closestZoom(target.path);
    FittedPicture picture = planned(zoomedTo(frameGiven(options).value_or(kUsuallyVisible), zoom));
    const FitPlan& fit = picture.fit;
    const double visible = zoomedTo(picture.plan.fov_scale, zoom);
    if (!options.whole_photo && !showsDetail(fit.fit, fit.photo, shownIn(target, visible)))
        picture = planned(visible);
    return picture;
}

PlannedInput planInput(const ViewOptions& options, const Talk& talk, Target target, SourcePhoto photo,
                       const media::Plane& depth) {
    const auto say = [&talk](const std::string& line) {
        if (talk.verbosity > 0) std::fputs(line.c_str(), stderr);
    };
    // The last one needs no copy, but which one that is shows only afterwards.
    const auto photo_for = [&photo](const FitPlan& fit) {
        const bool has_few = photo.pixels.width < photo.size.width;
        const auto needs_more = [&](int wanted, int has, int part, int whole) {
            return static_cast<int64_t>(wanted) * whole > static_cast<int64_t>(has) * part;
        };
        if (has_few &&
            (needs_more(fit.fit.photo.width, photo.pixels.width, fit.photo.width, photo.size.width) ||
             needs_more(fit.fit.photo.height, photo.pixels.height, fit.photo.height, photo.size.height)))
            photo.pixels = photo.whole();
        return fittedPhoto(fit, photo.size, photo.pixels);
    };
    FittedPicture fitted = fitPicture(options, target, photo.size, photo_for, depth);
    if (fitted.photo.samples.empty()) fitted.photo = photo_for(fitted.fit);
    const FitPlan& plan = fitted.fit;
    const Fit& fit = plan.fit;
    if (plan.cut)
        say(formatted("cut      the middle %d x %d of the photo, for the picture's aspect\n",
                      plan.photo.width, plan.photo.height));
    say(formatted("fitted   photo %d x %d%s, depth %d x %d%s, %d photo pixels a cell\n", fit.photo.width,
                  fit.photo.height, fit.photo == plan.photo ? "" : " (resampled)", fit.depth.width,
                  fit.depth.height, fit.depth == plan.depth ? "" : " (scaled)", fit.ratio));
    saySwing(fitted.plan, talk);
    return {std::move(fitted.photo), std::move(fitted.plan), std::move(target), fitted.fit};
}

}  // namespace quorvane::app
