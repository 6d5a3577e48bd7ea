#include "sizes/sizes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace quorvane {
namespace {

int ceilDivide(int value, int divisor) { return (value - 1) / divisor + 1; }

Size scaledTo(Size size, int longest) {
    const int side = std::max(size.width, size.height);
    const auto scaled = [=](int length) {
        return std::max(1, static_cast<int>(std::lround(static_cast<double>(length) * longest / side)));
    };
    return {scaled(size.width), scaled(size.height)};
}

Size scaledInto(Size size, int longest) {
    return std::max(size.width, size.height) <= longest ? size : scaledTo(size, longest);
}

Size evenSize(Size size) { return {std::max(2, size.width & ~1), std::max(2, size.height & ~1)}; }

}  // namespace

int photoPixelsPerCell(int photo, int cells) {
    for (int ratio = 1; ratio <= kLargestRatio; ratio *= 2)
        if (photo / cells == ratio && photo / ratio == cells) return ratio;
    return 0;
}

double blockBytes(Size photo, Size grid) {
    const double w = grid.width, h = grid.height;
    return 3.0 * photo.width * photo.height + 57 * w * h + 40 * h * (w + 1) + 12 * (w + 1) * (h + 1);
}

bool blockFits(Size photo, Size grid) {
    return blockBytes(photo, grid) <= std::numeric_limits<int32_t>::max();
}

int64_t triangleCount(Size grid) { return int64_t{2} * grid.width * grid.height; }

Fit fitSizes(Size photo, Size depth, int largest_photo_side, const GridBudget& budget) {
    Size source = scaledInto(photo, largest_photo_side);
    const auto grid_for = [&](int ratio) {
        // A side at the driver's limit cannot grow into the next cell.
        const int most_cells = largest_photo_side / ratio;
        return Size{std::min(ceilDivide(source.width, ratio), most_cells),
                    std::min(ceilDivide(source.height, ratio), most_cells)};
    };
    const auto fits = [&](int ratio) {
        const Size grid = grid_for(ratio);
        return blockFits({grid.width * ratio, grid.height * ratio}, grid);
    };
    const auto keeps_detail = [&](int ratio) {
        const auto keeps = [&](int photo_side, int cells, int depth_side) {
            // The last cell reaches past the photo or, at the limit, stops short of it.
            const int64_t covered = std::min(int64_t{photo_side}, int64_t{cells} * ratio);
            return covered * kDepthPixelsPerCell >= int64_t{depth_side} * ratio;
        };
        const Size grid = grid_for(ratio);
        return keeps(source.width, grid.width, depth.width) &&
               keeps(source.height, grid.height, depth.height);
    };
    const int largest_ratio = std::min(kLargestRatio, largest_photo_side);

    int ratio = 1;
    while (2 * ratio <= largest_ratio && keeps_detail(2 * ratio)) ratio *= 2;
    while (2 * ratio <= largest_ratio && !fits(ratio)) ratio *= 2;
    // Then only a smaller photo helps.
    while (!fits(ratio)) source = scaledInto(source, std::max(source.width, source.height) / 8 * 7);

    if (budget.triangles > 0) {
        const auto within_budget = [&](int some_ratio) {
            return triangleCount(grid_for(some_ratio)) <= budget.triangles;
        };
        for (int coarser = 1; coarser <= largest_ratio; coarser *= 2) {
            if (!fits(coarser)) continue;
            ratio = coarser;
            if (within_budget(ratio)) break;
        }
    }

    Fit fit;
    fit.ratio = ratio;
    fit.grid = grid_for(ratio);
    fit.photo = {fit.grid.width * ratio, fit.grid.height * ratio};
    fit.depth = {fit.grid.width * kDepthPixelsPerCell, fit.grid.height * kDepthPixelsPerCell};
    return fit;
}

Size pictureSize(Size photo, int longest, bool even) {
    const Size size = scaledInto(photo, longest);
    return even ? evenSize(size) : size;
}

Size scaledPictureSize(Size photo, int longest, bool even) {
    const Size size = scaledTo(photo, longest);
    return even ? evenSize(size) : size;
}

Size croppedSize(Size image, Size wanted) {
    const double aspect = static_cast<double>(wanted.width) / wanted.height;
    const int width = static_cast<int>(std::lround(std::min<double>(image.width, image.height * aspect)));
    const int height = static_cast<int>(std::lround(std::min<double>(image.height, image.width / aspect)));
    return {std::max(1, width), std::max(1, height)};
}

FitPlan planFit(Size photo, Size depth, Size picture, int largest_texture, const GridBudget& budget) {
    FitPlan plan;
    const Size part = croppedSize(photo, picture);
    // Less than a pixel of the picture is the aspect's rounding, not another aspect.
    plan.cut = int64_t{photo.width - part.width} * picture.width > photo.width ||
               int64_t{photo.height - part.height} * picture.height > photo.height;
    const auto share = [](int some, int whole, int length) {
        return std::max(1, static_cast<int>(static_cast<int64_t>(length) * some / whole));
    };
    plan.photo = plan.cut ? part : photo;
    plan.depth = {share(plan.photo.width, photo.width, depth.width),
                  share(plan.photo.height, photo.height, depth.height)};
    plan.fit = fitSizes(plan.photo, plan.depth, largest_texture, budget);
    return plan;
}

}  // namespace quorvane
