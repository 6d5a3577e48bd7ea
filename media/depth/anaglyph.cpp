#include "media/depth/anaglyph.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "media/depth/edge_agreement.h"
#include "media/depth/stereo_align.h"

namespace quorvane::media {

bool isAnaglyph(const RgbImage& photo) {
    constexpr int kSide = 400;
    const double shrink = std::min(1.0, static_cast<double>(kSide) / std::max(photo.width, photo.height));
    const auto side = [shrink](int length) {
        return std::max(1, static_cast<int>(std::lround(length * shrink)));
    };
    const std::vector<Plane> colours =
        reduced(photo, {0, 0, static_cast<double>(photo.width), static_cast<double>(photo.height)},
                side(photo.width), side(photo.height));
    Plane cyan = colours[1];
    for (size_t i = 0; i < cyan.samples.size(); ++i)
        cyan.samples[i] = (colours[1].samples[i] + colours[2].samples[i]) / 2;
    int tried = 0;
    std::vector<Correspondence> agreeing;
    align(correspondences(colours[0], cyan, &tried), cyan.height, &agreeing);

    constexpr size_t kFewest = 30;
    constexpr double kShift = 1.0;  // pixels at this size; colour fringes have a fifth of it
    constexpr double kMostly = 0.4;
    const auto shifted = std::count_if(agreeing.begin(), agreeing.end(),
                                       [](const Correspondence& c) { return std::abs(c.dx) > kShift; });
    return agreeing.size() >= kFewest && agreeing.size() * 4 >= static_cast<size_t>(tried) &&
           static_cast<double>(shifted) > kMostly * static_cast<double>(agreeing.size());
}

}  // namespace quorvane::media
