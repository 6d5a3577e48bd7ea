#include "sizes/detail.h"

#include <algorithm>
#include <cmath>

namespace quorvane {
namespace {

// Somewhat below kMostTexels, so that these sizes still do where a little more of the photo becomes visible.
constexpr double kAimedTexels = 1.18;

// A narrower border than this is not missed.
constexpr int kLargestCut = 100;

/// What so many texels a drawn pixel make of the whole photo, rounded by `round`.
template <typename Round>
Size sizeWith(double texels, const Shown& shown, Round round) {
    const auto side = [&](int drawn) {
        return std::max(1, static_cast<int>(round(std::min(drawn * texels / shown.visible, 1e9))));
    };
    return {side(shown.drawn.width), side(shown.drawn.height)};
}

Size leastSize(const Shown& shown) {
    return sizeWith(kFewestTexels, shown, [](double side) { return std::ceil(side); });
}

Fit fitOf(Size grid, int ratio) {
    Fit fit;
    fit.ratio = ratio;
    fit.grid = grid;
    fit.photo = {grid.width * ratio, grid.height * ratio};
    fit.depth = {grid.width * kDepthPixelsPerCell, grid.height * kDepthPixelsPerCell};
    return fit;
}

Size cells(Size photo, int ratio) {
    return {std::max(1, photo.width / ratio), std::max(1, photo.height / ratio)};
}

/// The largest grid of about the same aspect that the budget has.
Size within(const GridBudget& budget, Size grid) {
    const double most = budget.triangles / 2.0;
    const double all = static_cast<double>(grid.width) * grid.height;
    if (all <= most) return grid;
    const double scale = std::sqrt(most / all);
    return {std::max(1, static_cast<int>(grid.width * scale)),
            std::max(1, static_cast<int>(grid.height * scale))};
}

bool isAtLeast(Size some, Size other) { return some.width >= other.width && some.height >= other.height; }

/// Keeps the photo's pixels where the driver and the memory allow it.
Fit fitAsItIs(Size photo, Size depth, int largest_photo_side, const GridBudget& budget) {
    const Fit fit = fitSizes(photo, depth, largest_photo_side, budget);
    const Fit cut = fitOf(cells(photo, fit.ratio), fit.ratio);
    const auto is_narrow = [](int rest, int side) { return rest >= 0 && rest * kLargestCut <= side; };
    const bool keeps = std::max(photo.width, photo.height) <= largest_photo_side &&
                       blockFits(cut.photo, cut.grid) &&
                       is_narrow(photo.width - cut.photo.width, photo.width) &&
                       is_narrow(photo.height - cut.photo.height, photo.height);
    return keeps ? cut : fit;
}

}  // namespace

Size aimedPhoto(const Shown& shown) {
    const Size aimed = sizeWith(kAimedTexels, shown, [](double side) { return std::floor(side); });
    const Size least = leastSize(shown);
    return {std::max(aimed.width, least.width), std::max(aimed.height, least.height)};
}

Fit fitShown(Size photo, Size depth, int largest_photo_side, const GridBudget& budget, const Shown& shown) {
    const Size least = leastSize(shown);
    Size aimed = aimedPhoto(shown);
    aimed = {std::min(aimed.width, photo.width), std::min(aimed.height, photo.height)};
    if (!isAtLeast(aimed, least) || std::max(aimed.width, aimed.height) > largest_photo_side)
        return fitAsItIs(photo, depth, largest_photo_side, budget);
    if (budget.triangles == 0) return fitAsItIs(aimed, depth, largest_photo_side, budget);
    for (int ratio = 1; ratio <= kLargestRatio; ratio *= 2) {
        const Fit fit = fitOf(within(budget, cells(aimed, ratio)), ratio);
        if (isAtLeast(fit.photo, least) && blockFits(fit.photo, fit.grid)) return fit;
    }
    return fitAsItIs(aimed, depth, largest_photo_side, budget);
}

FitPlan planShown(Size photo, Size depth, Size picture, int largest_texture, const GridBudget& budget,
                  const Shown& shown) {
    FitPlan plan = planFit(photo, depth, picture, largest_texture, budget);
    plan.fit = fitShown(plan.photo, plan.depth, largest_texture, budget, shown);
    if (isCutToCells(plan.fit, plan.photo)) {
        const auto share = [](int some, int whole, int length) {
            return std::max(1, static_cast<int>(std::lround(static_cast<double>(length) * some / whole)));
        };
        plan.depth = {share(plan.fit.photo.width, plan.photo.width, plan.depth.width),
                      share(plan.fit.photo.height, plan.photo.height, plan.depth.height)};
        plan.photo = plan.fit.photo;
    }
    return plan;
}

bool isCutToCells(const Fit& fit, Size photo) {
    const auto is_cut = [&](int side, int whole) { return side <= whole && whole - side < fit.ratio; };
    return is_cut(fit.photo.width, photo.width) && is_cut(fit.photo.height, photo.height);
}

bool showsDetail(const Fit& fit, Size photo, const Shown& shown) {
    const auto most = sizeWith(kMostTexels, shown, [](double side) { return std::ceil(side); });
    const Size least = leastSize(shown);
    const auto does = [&](int side, int whole, int fewest, int largest) {
        return (side >= fewest || whole - side < fit.ratio) && side < largest + fit.ratio;
    };
    return does(fit.photo.width, photo.width, least.width, most.width) &&
           does(fit.photo.height, photo.height, least.height, most.height);
}

}  // namespace quorvane
