#ifndef QUORVANE_MEDIA_DEPTH_DEPTH_HOLES_H
#define QUORVANE_MEDIA_DEPTH_DEPTH_HOLES_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "media/picture/image.h"

namespace quorvane::media {

/// The pixels at one end of a plane's range, where they stand apart from all the others.
struct Extreme {
    std::vector<size_t> pieces;  ///< the size of each connected piece, in pixels, smallest first
    size_t pixels = 0;
    size_t largest_at_border = 0;  ///< of the pieces that touch the plane's border
    GrayImage others;              ///< 0 at the pixels, 255 elsewhere
};

/// The lowest (`low`) or highest level of `plane`, which is on 0..255, where no other pixel comes within 8
/// levels of it, the others use at least 16 levels and are at least half of all; else no pixels.
inline Extreme findExtreme(const Image<float, 1>& plane, bool low) {
    constexpr float kGap = 8.0f;
    constexpr std::ptrdiff_t kLeastLevels = 16;
    const std::vector<float>& levels = plane.samples;
    const float end = low ? *std::min_element(levels.begin(), levels.end())
                          : *std::max_element(levels.begin(), levels.end());
    Extreme extreme;
    std::array<bool, 256> used = {};
    size_t others_count = 0;
    for (const float level : levels) {
        if (level == end) continue;
        ++others_count;
        if ((low ? level - end : end - level) < kGap) return extreme;
        used[static_cast<size_t>(level)] = true;
    }
    if (others_count * 2 < levels.size() || std::count(used.begin(), used.end(), true) < kLeastLevels)
        return extreme;

    const int width = plane.width, height = plane.height;
    extreme.others = GrayImage(width, height);
    std::vector<uint8_t>& others = extreme.others.samples;
    std::transform(levels.begin(), levels.end(), others.begin(),
                   [end](float level) { return level == end ? uint8_t{1} : uint8_t{255}; });
    std::vector<std::pair<int, int>> waiting;
    const auto visit = [&](int x, int y) {
        if (x < 0 || y < 0 || x >= width || y >= height) return;
        uint8_t& mark = others[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
        if (mark != 1) return;
        mark = 0;
        waiting.emplace_back(x, y);
    };
    for (int start_y = 0; start_y < height; ++start_y)
        for (int start_x = 0; start_x < width; ++start_x) {
            size_t size = 0;
            bool at_border = false;
            visit(start_x, start_y);
            while (!waiting.empty()) {
                const auto [x, y] = waiting.back();
                waiting.pop_back();
                ++size;
                at_border = at_border || x == 0 || y == 0 || x == width - 1 || y == height - 1;
                for (int dy = -1; dy <= 1; ++dy)
                    for (int dx = -1; dx <= 1; ++dx) visit(x + dx, y + dy);
            }
            if (size == 0) continue;
            extreme.pieces.push_back(size);
            extreme.pixels += size;
            if (at_border) extreme.largest_at_border = std::max(extreme.largest_at_border, size);
        }
    std::sort(extreme.pieces.begin(), extreme.pieces.end());
    return extreme;
}

/// Gives the pixels where `known`, of the plane's size, is 0 a level from the known ones around them: means
/// of ever larger blocks, interpolated on the way back down (pull-push, Gortler et al., "The Lumigraph",
/// 1996). Known pixels keep theirs. Takes time and memory in proportion to the pixels; at least one pixel
/// must be known.
inline void fillFromNeighbours(GrayImage known, Image<float, 1>* plane) {
    struct Level {
        Image<float, 1> mean;
        GrayImage known;
    };
    const auto at = [](const Image<float, 1>& image, int x, int y) {
        return static_cast<size_t>(y) * static_cast<size_t>(image.width) + static_cast<size_t>(x);
    };
    std::vector<Level> levels;
    levels.push_back({std::move(*plane), std::move(known)});
    while (levels.back().mean.width > 1 || levels.back().mean.height > 1) {
        const Level& fine = levels.back();
        const int width = (fine.mean.width + 1) / 2, height = (fine.mean.height + 1) / 2;
        Level coarse = {Image<float, 1>(width, height), GrayImage(width, height)};
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                float sum = 0.0f, count = 0.0f;
                for (int fine_y = 2 * y; fine_y < std::min(2 * y + 2, fine.mean.height); ++fine_y)
                    for (int fine_x = 2 * x; fine_x < std::min(2 * x + 2, fine.mean.width); ++fine_x) {
                        const size_t from = at(fine.mean, fine_x, fine_y);
                        if (fine.known.samples[from] == 0) continue;
                        sum += fine.mean.samples[from];
                        count += 1.0f;
                    }
                const size_t to = at(coarse.mean, x, y);
                coarse.mean.samples[to] = count > 0.0f ? sum / count : 0.0f;
                coarse.known.samples[to] = count > 0.0f ? 255 : 0;
            }
        levels.push_back(std::move(coarse));
    }

    for (size_t level = levels.size() - 1; level-- > 0;) {
        const Image<float, 1>& coarse = levels[level + 1].mean;
        Level& fine = levels[level];
        for (int y = 0; y < fine.mean.height; ++y)
            for (int x = 0; x < fine.mean.width; ++x) {
                const size_t to = at(fine.mean, x, y);
                if (fine.known.samples[to] != 0) continue;
                // Linear between the four nearest blocks.
                const int x0 = x / 2, y0 = y / 2;
                const int x1 = std::clamp(x % 2 == 0 ? x0 - 1 : x0 + 1, 0, coarse.width - 1);
                const int y1 = std::clamp(y % 2 == 0 ? y0 - 1 : y0 + 1, 0, coarse.height - 1);
                fine.mean.samples[to] =
                    (9.0f * coarse.samples[at(coarse, x0, y0)] + 3.0f * coarse.samples[at(coarse, x1, y0)] +
                     3.0f * coarse.samples[at(coarse, x0, y1)] + coarse.samples[at(coarse, x1, y1)]) /
                    16.0f;
            }
    }
    *plane = std::move(levels[0].mean);
}

}  // namespace quorvane::media

#endif
