#include "apps/quorvane/drawing/page.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/quorvane/drawing/clip_drawing.h"
#include "apps/quorvane/drawing/planning.h"
#include "host/parameters.h"
#include "media/picture/crop.h"
#include "media/picture/resample.h"
#include "quorvane/host/ParallaxView.h"
#include "quorvane/parameters.h"

namespace quorvane::app {
namespace {

/// Whether frames are drawn with it; the others have gone into the shaped depth.
bool isOfFrames(const Parameter& parameter) {
    for (const ParameterInfo& info : ParallaxView::parameters())
        if (info.name == std::string_view(parameter.name))
            return info.takes_effect == TakesEffect::kEachFrame ||
                   info.takes_effect == TakesEffect::kNextMotion;
    return false;
}

std::vector<std::pair<std::string, double>> changedParameters(int orientation, const PicturePlan& plan) {
    LibParam values = startingParameters(static_cast<uint32_t>(orientation), nullptr);
    std::vector<std::pair<std::string, double>> changed;
    for (const Parameter& parameter : kParameters) {
        for (const auto& [name, value] : plan.parameters)
            if (name == parameter.name) parameter.store(value, &values);
        if (isOfFrames(parameter) && parameter.of(values) != parameter.of(LibParam()))
            changed.emplace_back(parameter.name, parameter.of(values));
    }
    return changed;
}

/// A browser has one number of samples, and draws with these or without.
std::string antialiasOf(const ViewOptions& options) {
    if (options.supersample > 1) return std::to_string(options.supersample);
    return options.samples == 1 ? "none" : "auto";
}

}  // namespace

PagePicture pagePicture(const ViewOptions& options, const Talk& talk, Size size, double amount, Input input) {
    ViewOptions view = options;
    // A page draws every picture in time.
    if (view.grid.triangles > kAutoGridLive.triangles) view.grid = kAutoGridLive;
    // Its photo has the page's size, whatever the grid.
    view.whole_photo = true;
    const Target target = {size, 1, pathEverywhere(amount), kLongestPageSide};
    const Size whole = {input.photo.width, input.photo.height};
    const auto photo_for = [&](const FitPlan& fit) { return fittedPhoto(fit, whole, input.photo); };
    const FittedPicture fitted = fitPicture(view, target, whole, photo_for, input.depth.plane);
    const FitPlan& fit = fitted.fit;
    const PicturePlan& plan = fitted.plan;
    saySwing(plan, talk);

    PagePicture picture;
    picture.photo =
        media::resample(fit.cut ? media::crop(input.photo, fit.photo) : std::move(input.photo), size);
    picture.depth = media::GrayImage(fit.fit.grid.width, fit.fit.grid.height);
    picture.depth.samples = plan.shaped;
    picture.settings = {amount * plan.swing, antialiasOf(options), changedParameters(view.orientation, plan)};
    return picture;
}

}  // namespace quorvane::app
