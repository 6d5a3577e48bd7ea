#include "bench/views/stereo_pair.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "bench/views/measures.h"
#include "bench/views/png_file.h"
#include "bench/views/shifted_views.h"

namespace quorvane::bench {
namespace {

/// In pixels; where nothing was measured, the farther of the row's neighbours.
Plane disparities(const DepthMap& scaled, int scale) {
    Plane plane(scaled.width, scaled.height);
    constexpr float kNone = std::numeric_limits<float>::max();
    for (int y = 0; y < plane.height; ++y) {
        std::vector<float> from_left(static_cast<size_t>(plane.width), kNone);
        float last = kNone;
        for (int x = 0; x < plane.width; ++x) {
            if (scaled.at(x, y) != 0) last = static_cast<float>(scaled.at(x, y)) / static_cast<float>(scale);
            from_left[static_cast<size_t>(x)] = last;
        }
        last = kNone;
        for (int x = plane.width - 1; x >= 0; --x) {
            if (scaled.at(x, y) != 0) last = from_left[static_cast<size_t>(x)];
            const float farther = std::min(last, from_left[static_cast<size_t>(x)]);
            plane.at(x, y) = farther == kNone ? 0.0f : farther;
        }
    }
    return plane;
}

/// What the right camera sees of the left photo's surfaces: a disparity a pixel, -1 where it sees none.
Plane seenFromRight(const Plane& left) {
    // A surface is whole between neighbours that differ by less than this.
    constexpr float kCrack = 1.01f;
    Plane right(left.width, left.height, -1.0f);
    for (int y = 0; y < left.height; ++y)
        for (int x = 0; x < left.width; ++x) {
            const float disparity = left.at(x, y);
            const float from = static_cast<float>(x) - disparity;
            float to = from + 1.0f;
            if (x + 1 < left.width && std::abs(left.at(x + 1, y) - disparity) < kCrack)
                to = std::max(to, static_cast<float>(x + 1) - left.at(x + 1, y));
            for (int i = std::max(0, static_cast<int>(std::ceil(from - 0.5f)));
                 i < left.width && static_cast<float>(i) + 0.5f < to; ++i)
                right.at(i, y) = std::max(right.at(i, y), disparity);
        }
    return right;
}

}  // namespace

StereoPair readStereoPair(const std::string& folder, const std::string& name, int scale) {
    StereoPair pair;
    const std::string stem = folder + "/" + name;
    pair.left = readPng(stem + "_left.png");
    const int width = pair.left.width & ~3, height = pair.left.height & ~3;
    pair.left = cut(pair.left, 0, 0, width, height);
    pair.right = cut(readPng(stem + "_right.png"), 0, 0, width, height);
    const Plane disparity = disparities(cut(readGrayPng(stem + "_disp.png"), 0, 0, width, height), scale);

    const auto [least, most] = std::minmax_element(disparity.samples.begin(), disparity.samples.end());
    pair.strength = (*most - *least + 1.0) / (1.0 / ShiftedViews::kNearest - 1.0 / ShiftedViews::kFarthest);
    // The farthest comes to lie within a pixel of where the farthest is drawn.
    pair.back = static_cast<int>(
        std::ceil(pair.strength * (1.0 / ShiftedViews::kFarthest - 1.0 / ShiftedViews::kPivot) - *least));
    pair.depth = DepthMap(width, height);
    for (size_t i = 0; i < pair.depth.samples.size(); ++i)
        pair.depth.samples[i] =
            depthByteAt(1.0 / ((static_cast<double>(disparity.samples[i]) + pair.back) / pair.strength +
                               1.0 / ShiftedViews::kPivot));

    Plane seen = seenFromRight(disparity);
    pair.judged = Mask(width, height, 1);
    pair.hidden = Mask(width, height);
    Mask jumps(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = width - 1; x >= 0 && seen.at(x, y) < 0.0f; --x) pair.judged.at(x, y) = 0;
        for (int x = 0; x < width; ++x) {
            if (seen.at(x, y) >= 0.0f || pair.judged.at(x, y) == 0) continue;
            int next = x;
            while (seen.at(next, y) < 0.0f) ++next;
            const float farther = x > 0 ? std::min(seen.at(x - 1, y), seen.at(next, y)) : seen.at(next, y);
            for (; x < next; ++x) {
                seen.at(x, y) = farther;
                pair.hidden.at(x, y) = 1;
            }
        }
    }
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const auto jump_to = [&](int i, int j) {
                if (pair.judged.at(x, y) == 0 || pair.judged.at(i, j) == 0) return;
                if (std::abs(seen.at(x, y) - seen.at(i, j)) > 3.0f) jumps.at(x, y) = jumps.at(i, j) = 1;
            };
            if (x + 1 < width) jump_to(x + 1, y);
            if (y + 1 < height) jump_to(x, y + 1);
        }
    pair.band = grown(jumps, 4);
    for (size_t i = 0; i < pair.band.samples.size(); ++i)
        if (pair.judged.samples[i] == 0) pair.band.samples[i] = 0;
    return pair;
}

}  // namespace quorvane::bench
