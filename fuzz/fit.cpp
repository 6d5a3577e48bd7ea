// Size fitting: every promise of sizes/sizes.h, for all sizes from 1 to the largest int, and of the bytes
// that a small depth map becomes.

#include "media/picture/resample.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "promise.h"

namespace {

using quorvane::fuzz::promised;
using namespace quorvane;
using namespace quorvane::media;

constexpr int kLargestInt = std::numeric_limits<int>::max();

/// Half of the sides are small: the larger they are, the fewer of them meet an edge.
int takeSide(FuzzedDataProvider& data) {
    return data.ConsumeIntegralInRange(1, data.ConsumeBool() ? 5000 : kLargestInt);
}

Size takeSize(FuzzedDataProvider& data) {
    const int width = takeSide(data);
    return {width, takeSide(data)};
}

bool isAtLeastOne(Size size) { return size.width >= 1 && size.height >= 1; }
bool fitsInto(Size size, Size box) { return size.width <= box.width && size.height <= box.height; }

/// What the renderer would allocate.
double workingBytes(const Fit& fit) {
    const double w = fit.grid.width, h = fit.grid.height;
    return 3.0 * fit.photo.width * fit.photo.height + 57 * w * h + 40 * h * (w + 1) + 12 * (w + 1) * (h + 1);
}

void checkFit(Size photo, Size depth, int largest, const GridBudget& budget) {
    const Fit fit = fitSizes(photo, depth, largest, budget);
    promised(fit.ratio >= 1 && fit.ratio <= 32 && (fit.ratio & (fit.ratio - 1)) == 0, "a ratio of 1 to 32");
    promised(isAtLeastOne(fit.grid), "no side of the grid is empty");
    promised(int64_t{fit.grid.width} * fit.ratio == fit.photo.width &&
                 int64_t{fit.grid.height} * fit.ratio == fit.photo.height,
             "the photo is a whole number of cells");
    promised(
        int64_t{fit.grid.width} * 4 == fit.depth.width && int64_t{fit.grid.height} * 4 == fit.depth.height,
        "four depth pixels a cell");
    promised(workingBytes(fit) <= kLargestInt, "the working memory stays within 2 GB");
    promised(fit.photo.width <= largest && fit.photo.height <= largest, "the photo stays within the limit");
    const Size coarser = {(fit.grid.width - 1) / 2 + 1, (fit.grid.height - 1) / 2 + 1};
    const double photo_bytes = 3.0 * coarser.width * coarser.height * 4 * fit.ratio * fit.ratio;
    const bool cells_can_grow = 2 * fit.ratio <= std::min(kLargestRatio, largest) &&
                                photo_bytes + 200.0 * coarser.width * coarser.height <= kLargestInt;
    promised(budget.triangles <= 0 || !cells_can_grow || triangleCount(fit.grid) <= budget.triangles,
             "a budget is kept while cells can grow");
    promised(fit.photo.width < int64_t{photo.width} + fit.ratio &&
                 fit.photo.height < int64_t{photo.height} + fit.ratio,
             "the photo grows by less than a cell");
}

void checkPicture(Size photo, int longest) {
    const Size odd = pictureSize(photo, longest, false);
    promised(isAtLeastOne(odd), "no side of the picture is empty");
    promised(fitsInto(odd, photo), "a picture is never larger than its photo");
    promised(std::max(odd.width, odd.height) == std::min(longest, std::max(photo.width, photo.height)),
             "the long side is the photo's or the longest");

    const Size even = pictureSize(photo, longest, true);
    promised(even.width % 2 == 0 && even.height % 2 == 0, "video has even sides");
    promised(isAtLeastOne(even), "no side of a video is empty");
    promised(fitsInto(even, {std::max(2, odd.width), std::max(2, odd.height)}), "sides are rounded down");
}

void checkCrop(Size image, Size wanted) {
    const Size part = croppedSize(image, wanted);
    promised(isAtLeastOne(part) && fitsInto(part, image), "a part lies within its image");
    promised(part.width == image.width || part.height == image.height, "a part is the largest");
    // Within half a pixel of the wanted aspect, or a single pixel thin.
    const double aspect = static_cast<double>(wanted.width) / wanted.height;
    promised(part.width == 1 || part.height == 1 || std::abs(part.width - part.height * aspect) <= 0.51 ||
                 std::abs(part.height - part.width / aspect) <= 0.51,
             "a part has the wanted aspect");
}

void checkBytes(FuzzedDataProvider& data) {
    Image<float, 1> plane(data.ConsumeIntegralInRange(1, 40), data.ConsumeIntegralInRange(1, 40));
    const bool whole = data.ConsumeBool();
    for (float& level : plane.samples)
        level = whole ? data.ConsumeIntegral<uint8_t>() : data.ConsumeFloatingPointInRange(0.0f, 255.0f);
    const Size own = {plane.width, plane.height};
    const Size size = data.ConsumeBool()
                          ? own
                          : Size{data.ConsumeIntegralInRange(1, 200), data.ConsumeIntegralInRange(1, 200)};
    const GrayImage bytes = toBytes(plane, size);
    promised(bytes.width == size.width && bytes.height == size.height, "a depth map scales to any size");
    const auto [low, high] = std::minmax_element(plane.samples.begin(), plane.samples.end());
    // Scaling may leave a whole level a little off, but never by what would change it.
    const float lowest = std::floor(*low), highest = std::ceil(*high);
    for (const uint8_t byte : bytes.samples)
        promised(byte >= lowest && byte <= highest, "levels stay within those of the plane");
    if (size != own) return;
    for (size_t i = 0; i < bytes.samples.size(); ++i) {
        const float away = std::abs(bytes.samples[i] - plane.samples[i]);
        promised(whole ? away == 0.0f : away < 1.0f, "at its own size a plane keeps its levels");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    FuzzedDataProvider data(bytes, size);
    const Size photo = takeSize(data), other = takeSize(data);
    const int largest = takeSide(data);
    checkFit(photo, other, largest, kCoarseGrid);
    checkFit(photo, other, largest, {data.ConsumeIntegralInRange(1, kLargestInt)});
    checkPicture(photo, largest);
    checkCrop(photo, other);
    checkBytes(data);
    return 0;
}
