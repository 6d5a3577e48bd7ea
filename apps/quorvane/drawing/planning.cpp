#include "apps/quorvane/drawing/planning.h"

#include <utility>

#include "media/picture/resample.h"
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
        request.path->push_back({static_cast<float>(position.x), static_cast<float>(position.y)});
    return request;
}

}  // namespace

FitPlan fitFor(const ViewOptions& options, const Target& target, Size photo, Size depth) {
    return planFit(photo, depth, target.size, target.largest_texture, options.grid);
}

bool planReadsPhoto(const ViewOptions& options) { return planReadsPhoto(requestFor(options)); }

PicturePlan planFor(const ViewOptions& options, const Target& target, const FitPlan& fit,
                    const media::RgbImage& photo, media::Plane depth) {
    if (fit.cut) depth = media::crop(depth, fit.depth);
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

PictureStretch stretchOf(const ViewOptions& options, const Target& target, const FitPlan& fit,
                         const PicturePlan& plan) {
    PictureStretch stretch;
    const Status status = measureStretch(requestFor(options, target, fit), plan, &stretch);
    if (!status) throw Error(status.message());
    return stretch;
}

}  // namespace quorvane::app
