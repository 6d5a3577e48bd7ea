#include "media/depth/depth_holes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>
#include <utility>

namespace quorvane::media {

std::vector<float> someLevels(const Plane& plane, const GrayImage& known) {
    constexpr size_t kMost = 500000;
    std::vector<float> levels;
    for (size_t i = 0; i < plane.samples.size(); i += plane.samples.size() / kMost + 1)
        if (known.samples.empty() || known.samples[i] != 0) levels.push_back(plane.samples[i]);
    std::sort(levels.begin(), levels.end());
    return levels;
}

Extreme findExtreme(const Plane& plane, const GrayImage& known, int bits, bool low) {
    constexpr float kGap = 8.0f / 255.0f, kGapOfMedian = 0.05f;
    constexpr size_t kLeastLevels = 16;
    const std::vector<float>& levels = plane.samples;
    const auto counts = [&known](size_t i) { return known.samples.empty() || known.samples[i] != 0; };
    Extreme extreme;
    float lowest = 255.0f, highest = 0.0f;
    for (size_t i = 0; i < levels.size(); ++i) {
        if (!counts(i)) continue;
        lowest = std::min(lowest, levels[i]);
        highest = std::max(highest, levels[i]);
    }
    if (!(highest > lowest)) return extreme;
    const float end = low ? lowest : highest;
    float gap = highest - lowest;
    size_t at_end = 0, others_count = 0;
    for (size_t i = 0; i < levels.size(); ++i) {
        if (!counts(i)) continue;
        ++(levels[i] == end ? at_end : others_count);
        if (levels[i] != end) gap = std::min(gap, low ? levels[i] - end : end - levels[i]);
    }
    const bool stored_zero = low && end == 0.0f;
    const bool wide = gap >= kGap * (highest - lowest), may_be_zero = stored_zero && bits == 16;
    if (!(wide || may_be_zero) || (others_count < at_end && !stored_zero)) return extreme;
    std::vector<float> others_levels = someLevels(plane, known);
    const auto ends = std::equal_range(others_levels.begin(), others_levels.end(), end);
    others_levels.erase(ends.first, ends.second);
    if (others_levels.empty()) return extreme;
    if (!wide && gap < kGapOfMedian * others_levels[others_levels.size() / 2]) return extreme;
    others_levels.erase(std::unique(others_levels.begin(), others_levels.end()), others_levels.end());
    if (others_levels.size() < kLeastLevels) return extreme;

    const int width = plane.width, height = plane.height;
    extreme.others = GrayImage(width, height);
    std::vector<uint8_t>& others = extreme.others.samples;
    for (size_t i = 0; i < levels.size(); ++i)
        others[i] = counts(i) && levels[i] == end ? uint8_t{1} : uint8_t{255};
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

void fillFromFarSide(const GrayImage& known, Plane* plane) {
    // Around a pixel lie at least an eighth of the longer side in every direction.
    constexpr int kBlocks = 16, kReach = 2;
    // A gap of an empty sixteenth of all levels parts near from far; a fiftieth of the pixels is stray.
    constexpr size_t kBins = 64, kGap = 4, kStray = 50;
    const int width = plane->width, height = plane->height;
    const std::vector<float>& levels = plane->samples;
    float lowest = 255.0f, highest = 0.0f;
    for (size_t i = 0; i < levels.size(); ++i) {
        if (known.samples[i] == 0) continue;
        lowest = std::min(lowest, levels[i]);
        highest = std::max(highest, levels[i]);
    }
    const auto binOf = [&](float level) {
        const float share = (level - lowest) / std::max(highest - lowest, 1e-6f);
        return std::min(kBins - 1, static_cast<size_t>(share * static_cast<float>(kBins)));
    };
    const auto bordersOnHole = [&](int x, int y) {
        if (known.at(x, y) == 0) return false;
        for (int near_y = std::max(0, y - 1); near_y <= std::min(height - 1, y + 1); ++near_y)
            for (int near_x = std::max(0, x - 1); near_x <= std::min(width - 1, x + 1); ++near_x)
                if (known.at(near_x, near_y) == 0) return true;
        return false;
    };

    using Histogram = std::array<size_t, kBins>;
    const int block = std::max(4, (std::max(width, height) + kBlocks - 1) / kBlocks);
    const int blocks_x = (width + block - 1) / block, blocks_y = (height + block - 1) / block;
    const auto blockAt = [blocks_x](int x, int y) {
        return static_cast<size_t>(y) * static_cast<size_t>(blocks_x) + static_cast<size_t>(x);
    };
    std::vector<Histogram> histograms(static_cast<size_t>(blocks_x) * static_cast<size_t>(blocks_y),
                                      Histogram{});
    GrayImage sources(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (bordersOnHole(x, y)) {
                sources.at(x, y) = 255;
                ++histograms[blockAt(x / block, y / block)][binOf(plane->at(x, y))];
            }

    for (int block_y = 0; block_y < blocks_y; ++block_y)
        for (int block_x = 0; block_x < blocks_x; ++block_x) {
            Histogram around = {};
            for (int y = std::max(0, block_y - kReach); y <= std::min(blocks_y - 1, block_y + kReach); ++y)
                for (int x = std::max(0, block_x - kReach); x <= std::min(blocks_x - 1, block_x + kReach);
                     ++x)
                    for (size_t bin = 0; bin < kBins; ++bin) around[bin] += histograms[blockAt(x, y)][bin];
            const size_t all = std::accumulate(around.begin(), around.end(), size_t{0});
            size_t last = kBins, widest = kGap, far_end = kBins;
            for (size_t bin = 0; bin < kBins; ++bin) {
                if (around[bin] * kStray <= all) continue;
                if (last < bin && bin - last - 1 >= widest) {
                    widest = bin - last;
                    far_end = last;
                }
                last = bin;
            }
            for (int y = block_y * block; y < std::min(height, (block_y + 1) * block); ++y)
                for (int x = block_x * block; x < std::min(width, (block_x + 1) * block); ++x)
                    if (sources.at(x, y) != 0 && far_end < kBins && binOf(plane->at(x, y)) > far_end)
                        sources.at(x, y) = 0;
        }
    Plane filled = *plane;
    fillFromNeighbours(std::move(sources), &filled);
    for (size_t i = 0; i < levels.size(); ++i)
        if (known.samples[i] == 0) plane->samples[i] = filled.samples[i];
}

}  // namespace quorvane::media
