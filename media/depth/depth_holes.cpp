#include "media/depth/depth_holes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace quorvane::media {

Extreme findExtreme(const Plane& plane, bool low) {
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
        uint8_t& mark = extreme.others.at(x, y);
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

void fillFromNeighbours(GrayImage known, Plane* plane) {
    struct Level {
        Plane mean;
        GrayImage known;
    };
    std::vector<Level> levels;
    levels.push_back({std::move(*plane), std::move(known)});
    while (levels.back().mean.width > 1 || levels.back().mean.height > 1) {
        const Level& fine = levels.back();
        const int width = (fine.mean.width + 1) / 2, height = (fine.mean.height + 1) / 2;
        Level coarse = {Plane(width, height), GrayImage(width, height)};
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                float sum = 0.0f, count = 0.0f;
                for (int fine_y = 2 * y; fine_y < std::min(2 * y + 2, fine.mean.height); ++fine_y)
                    for (int fine_x = 2 * x; fine_x < std::min(2 * x + 2, fine.mean.width); ++fine_x) {
                        if (fine.known.at(fine_x, fine_y) == 0) continue;
                        sum += fine.mean.at(fine_x, fine_y);
                        count += 1.0f;
                    }
                coarse.mean.at(x, y) = count > 0.0f ? sum / count : 0.0f;
                coarse.known.at(x, y) = count > 0.0f ? 255 : 0;
            }
        levels.push_back(std::move(coarse));
    }

    for (size_t level = levels.size() - 1; level-- > 0;) {
        const Plane& coarse = levels[level + 1].mean;
        Level& fine = levels[level];
        for (int y = 0; y < fine.mean.height; ++y)
            for (int x = 0; x < fine.mean.width; ++x) {
                if (fine.known.at(x, y) != 0) continue;
                // Linear between the four nearest blocks.
                const int x0 = x / 2, y0 = y / 2;
                const int x1 = std::clamp(x % 2 == 0 ? x0 - 1 : x0 + 1, 0, coarse.width - 1);
                const int y1 = std::clamp(y % 2 == 0 ? y0 - 1 : y0 + 1, 0, coarse.height - 1);
                fine.mean.at(x, y) = (9.0f * coarse.at(x0, y0) + 3.0f * coarse.at(x1, y0) +
                                      3.0f * coarse.at(x0, y1) + coarse.at(x1, y1)) /
                                     16.0f;
            }
    }
    *plane = std::move(levels[0].mean);
}

}  // namespace quorvane::media
