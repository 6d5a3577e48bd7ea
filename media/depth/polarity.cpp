#include "media/depth/polarity.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace quorvane::media {
namespace {

/// A small plane whose cells may have no value.
struct Grid {
    int width, height;
    std::vector<double> values;
    std::vector<bool> known;

    Grid(int w, int h)
        : width(w),
          height(h),
          values(static_cast<size_t>(w) * static_cast<size_t>(h), 0.0),
          known(values.size(), false) {}
    size_t index(int x, int y) const {
        return static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
    }
    double at(int x, int y) const { return values[index(x, y)]; }
    bool knows(int x, int y) const { return known[index(x, y)]; }
};

/// The cells' means of `value(x, y)`, over the pixels that `counts(x, y)` names; a cell of which fewer than
/// half count has no value.
template <typename Value, typename Counts>
Grid meansOf(int image_width, int image_height, int width, int height, Value value, Counts counts) {
    const auto first = [](int cell, int cells, int pixels) {
        return static_cast<int>(static_cast<int64_t>(cell) * pixels / cells);
    };
    Grid grid(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int left = first(x, width, image_width), top = first(y, height, image_height);
            const int right = std::max(left + 1, first(x + 1, width, image_width));
            const int bottom = std::max(top + 1, first(y + 1, height, image_height));
            double sum = 0.0;
            int counted = 0;
            for (int j = top; j < bottom; ++j)
                for (int i = left; i < right; ++i)
                    if (counts(i, j)) {
                        sum += value(i, j);
                        ++counted;
                    }
            const size_t cell = grid.index(x, y);
            grid.known[cell] = counted > 0 && counted * 2 >= (right - left) * (bottom - top);
            if (counted > 0) grid.values[cell] = sum / counted;
        }
    return grid;
}

/// The levels on a grid, 0 to 1 over the range that all but a few of them use.
Grid levelsOf(const Plane& plane, const GrayImage& known) {
    constexpr double kLongest = 128.0;
    const double scale = std::max(1.0, std::max(plane.width, plane.height) / kLongest);
    const auto index = [&plane](int x, int y) {
        return static_cast<size_t>(y) * static_cast<size_t>(plane.width) + static_cast<size_t>(x);
    };
    Grid grid = meansOf(
        plane.width, plane.height, std::max(1, static_cast<int>(plane.width / scale)),
        std::max(1, static_cast<int>(plane.height / scale)),
        [&](int x, int y) { return static_cast<double>(plane.samples[index(x, y)]); },
        [&](int x, int y) { return known.samples.empty() || known.samples[index(x, y)] != 0; });
    std::vector<double> sorted;
    for (size_t i = 0; i < grid.values.size(); ++i)
        if (grid.known[i]) sorted.push_back(grid.values[i]);
    if (sorted.empty()) return grid;
    std::sort(sorted.begin(), sorted.end());
    const size_t stray = sorted.size() / 50;
    const double lowest = sorted[stray], range = sorted[sorted.size() - 1 - stray] - lowest;
    for (double& value : grid.values)
        value = range > 0.0 ? std::clamp((value - lowest) / range, -0.2, 1.2) : 0.0;
    return grid;
}

Grid lumaOf(const RgbImage& photo, const Grid& like) {
    return meansOf(
        photo.width, photo.height, like.width, like.height,
        [&photo](int x, int y) {
            const uint8_t* rgb = &photo.samples[(static_cast<size_t>(y) * static_cast<size_t>(photo.width) +
                                                 static_cast<size_t>(x)) *
                                                3];
            return 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2];
        },
        [](int, int) { return true; });
}

/// Pearson's correlation of the levels with `weight(x, y)`, over the cells from `margin` cells off the border
/// that have a level.
template <typename Weight>
double correlationWith(const Grid& levels, int margin, Weight weight) {
    double n = 0, sum_w = 0, sum_v = 0, sum_ww = 0, sum_vv = 0, sum_wv = 0;
    for (int y = margin; y < levels.height - margin; ++y)
        for (int x = margin; x < levels.width - margin; ++x) {
            if (!levels.knows(x, y)) continue;
            const double w = weight(x, y), v = levels.at(x, y);
            ++n;
            sum_w += w;
            sum_v += v;
            sum_ww += w * w;
            sum_vv += v * v;
            sum_wv += w * v;
        }
    if (n == 0) return 0.0;
    const double spread = (sum_ww - sum_w * sum_w / n) * (sum_vv - sum_v * sum_v / n);
    return spread > 1e-9 ? (sum_wv - sum_w * sum_v / n) / std::sqrt(spread) : 0.0;
}

double contrast(const Grid& luma, int x, int y) {
    return std::log1p(
        std::hypot(luma.at(x + 1, y) - luma.at(x - 1, y), luma.at(x, y + 1) - luma.at(x, y - 1)));
}

/// The mean of the lowest eighth less that of the highest.
double borders(const Grid& levels) {
    const int eighth = std::max(1, levels.height / 8);
    const auto mean = [&levels](int from, int to) {
        double sum = 0.0, count = 0.0;
        for (int y = from; y < to; ++y)
            for (int x = 0; x < levels.width; ++x)
                if (levels.knows(x, y)) {
                    sum += levels.at(x, y);
                    ++count;
                }
        return std::pair(sum, count);
    };
    const auto [top, in_top] = mean(0, eighth);
    const auto [bottom, in_bottom] = mean(levels.height - eighth, levels.height);
    return in_top > 0 && in_bottom > 0 ? bottom / in_bottom - top / in_top : 0.0;
}

/// Of the smooth slopes, how many more fall towards the picture's lower border than towards its upper one, -1
/// to 1.
double slopes(const Grid& levels) {
    // Steps are no slopes, and noise is none either; a few cells say nothing.
    constexpr double kLeast = 0.004, kMost = 0.1, kFew = 200.0;
    double rising = 0.0, falling = 0.0;
    for (int y = 2; y < levels.height - 2; ++y)
        for (int x = 0; x < levels.width; ++x) {
            if (!levels.knows(x, y - 2) || !levels.knows(x, y) || !levels.knows(x, y + 2)) continue;
            const double slope = levels.at(x, y + 2) - levels.at(x, y - 2);
            const double bend = levels.at(x, y + 2) + levels.at(x, y - 2) - 2.0 * levels.at(x, y);
            if (std::abs(slope) < kLeast || std::abs(slope) > kMost || std::abs(bend) > 0.5 * std::abs(slope))
                continue;
            ++(slope > 0.0 ? rising : falling);
        }
    return (rising - falling) / (rising + falling + kFew);
}

/// Which side of the steps in depth has more of the photo's contrast: 1 the higher levels' side, -1 the lower
/// ones'.
double contrastAtSteps(const Grid& levels, const Grid& luma) {
    constexpr int kReach = 3;
    constexpr double kStep = 0.05, kNoise = 2.0, kFew = 60.0;
    double high = 0.0, low = 0.0, steps = 0.0;
    const auto walk = [&](int length, auto level, auto known, auto light) {
        for (int at = kReach + 1; at < length - kReach - 2; ++at) {
            const double step = level(at + 1) - level(at);
            if (std::abs(step) < kStep) continue;
            bool clear = true;
            for (int i = -kReach; i <= kReach + 1; ++i) clear = clear && known(at + i);
            for (int i = -kReach; i <= kReach; ++i)
                clear = clear && std::abs(level(at + i + 1) - level(at + i)) <= std::abs(step);
            if (!clear) continue;
            double before = 0.0, after = 0.0;
            for (int i = 1; i <= kReach; ++i) {
                after += std::abs(light(at + 1 + i) - light(at + i));
                before += std::abs(light(at + 1 - i) - light(at - i));
            }
            const double all = before + after + kNoise;
            high += (step > 0.0 ? after : before) / all;
            low += (step > 0.0 ? before : after) / all;
            ++steps;
        }
    };
    for (int y = 0; y < levels.height; ++y)
        walk(
            levels.width, [&](int x) { return levels.at(x, y); }, [&](int x) { return levels.knows(x, y); },
            [&](int x) { return luma.at(x, y); });
    for (int x = 0; x < levels.width; ++x)
        walk(
            levels.height, [&](int y) { return levels.at(x, y); }, [&](int y) { return levels.knows(x, y); },
            [&](int y) { return luma.at(x, y); });
    return steps > 0.0 ? (high - low) / std::max(1.0, high + low) * steps / (steps + kFew) : 0.0;
}

}  // namespace

double confidenceLargerIsFarther(const RgbImage& photo, const Plane& plane, const GrayImage& known) {
    const Grid levels = levelsOf(plane, known);
    const Grid luma = lumaOf(photo, levels);
    double nearer = 0.0;  // positive where larger is nearer
    nearer += 2.5 * correlationWith(levels, 0, [](int, int y) { return static_cast<double>(y); });
    nearer += 0.8 * borders(levels);
    nearer += 1.0 * slopes(levels);
    nearer += 4.0 * contrastAtSteps(levels, luma);
    nearer += 0.4 * correlationWith(levels, 1, [&](int x, int y) { return contrast(luma, x, y); });
    return 1.0 / (1.0 + std::exp(2.0 * nearer));
}

}  // namespace quorvane::media
