#include "composition/pivot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace quorvane {
namespace {

constexpr int kLevels = 256;

double sampleAt(const ShapedDepth& depth, int x, int y) {
    const auto i = static_cast<size_t>(std::clamp(x, 0, depth.width - 1));
    const auto j = static_cast<size_t>(std::clamp(y, 0, depth.height - 1));
    return depth.samples[j * static_cast<size_t>(depth.width) + i];
}

/// How much each level counts, by the cells that have it.
std::array<double, kLevels> importanceOfLevels(const ShapedDepth& depth) {
    // Subjects stand about the middle, a little above it more often than below.
    constexpr double kMiddleX = 0.5, kMiddleY = 0.47, kWidth = 0.2, kHeight = 0.25;
    // Levels over the picture's height: a face has some 60, a floor that reaches the middle 300.
    constexpr double kSteep = 120.0;
    const int reach = std::max(1, depth.height / 24);
    std::array<double, kLevels> levels = {};
    for (int y = 0; y < depth.height; ++y)
        for (int x = 0; x < depth.width; ++x) {
            const double u = ((x + 0.5) / depth.width - kMiddleX) / kWidth;
            const double v = ((y + 0.5) / depth.height - kMiddleY) / kHeight;
            const int above = std::max(0, y - reach), below = std::min(depth.height - 1, y + reach);
            const double rise = (sampleAt(depth, x, below) - sampleAt(depth, x, above)) /
                                std::max(1, below - above) * depth.height / kSteep;
            levels[static_cast<size_t>(sampleAt(depth, x, y))] +=
                std::exp(-0.5 * (u * u + v * v)) / (1.0 + rise * rise);
        }
    return levels;
}

}  // namespace

double subjectDepth(const ShapedDepth& depth) {
    // A thing's own relief: half a head's.
    constexpr double kRelief = 12.0;
    constexpr int kShifts = 12;
    // What the farthest things count, where the nearest ones count about 1.
    constexpr double kFarthest = 0.02;
    const std::array<double, kLevels> levels = importanceOfLevels(depth);
    const auto ends = std::minmax_element(
        depth.samples, depth.samples + static_cast<size_t>(depth.width) * static_cast<size_t>(depth.height));
    const int lowest = *ends.first, highest = *ends.second;
    const double far = lowest, range = std::max(1, highest - lowest);
    struct Thing {
        double counts, mean;
    };
    const auto thingAt = [&](double level) {
        double sum = 0.0, moment = 0.0;
        for (int other = lowest; other <= highest; ++other) {
            const double off = (other - level) / kRelief;
            const double share = std::exp(-0.5 * off * off) * levels[static_cast<size_t>(other)];
            sum += share;
            moment += share * other;
        }
        return Thing{sum, sum > 0.0 ? moment / sum : level};
    };
    double most = -1.0, best = 0.0;
    for (int level = lowest; level <= highest; ++level) {
        const double nearness = (level - far) / range;
        const double counts = thingAt(level).counts * (kFarthest + nearness * nearness);
        if (counts <= most) continue;
        most = counts;
        best = level;
    }
    // Nearness, which tells which thing it is, has put the level on the thing's near side.
    for (int i = 0; i < kShifts; ++i) best = thingAt(best).mean;
    return best;
}

double depthAt(const ShapedDepth& depth, double x, double y) {
    const int column = static_cast<int>(std::floor(x * depth.width));
    const int row = static_cast<int>(std::floor(y * depth.height));
    const int reach = std::max(1, std::min(depth.width, depth.height) / 60);
    std::vector<double> around;
    for (int j = row - reach; j <= row + reach; ++j)
        for (int i = column - reach; i <= column + reach; ++i) around.push_back(sampleAt(depth, i, j));
    const auto middle = around.begin() + static_cast<std::ptrdiff_t>(around.size() / 2);
    std::nth_element(around.begin(), middle, around.end());
    return *middle;
}

}  // namespace quorvane
