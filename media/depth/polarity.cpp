#include "media/depth/polarity.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "media/depth/depth_holes.h"
#include "media/picture/wide_vectors.h"

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

/// Where the cells of a row or column of `cells` begin and end in `pixels`: each has one at least.
struct Stretch {
    int from, to;
};
Stretch stretchOf(int cell, int cells, int pixels) {
    const auto first = [cells, pixels](int of) {
        return static_cast<int>(static_cast<int64_t>(of) * pixels / cells);
    };
    return {first(cell), std::max(first(cell) + 1, first(cell + 1))};
}

/// The cells' means of `value(x, y)`, over the pixels that `counts(x, y)` names; a cell of which fewer than
/// the share `least` count has no value.
template <typename Value, typename Counts>
Grid meansOf(int image_width, int image_height, int width, int height, double least, Value value,
             Counts counts) {
    Grid grid(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const Stretch across = stretchOf(x, width, image_width),
                          down = stretchOf(y, height, image_height);
            double sum = 0.0;
            int counted = 0;
            for (int j = down.from; j < down.to; ++j)
                for (int i = across.from; i < across.to; ++i)
                    if (counts(i, j)) {
                        sum += value(i, j);
                        ++counted;
                    }
            const size_t cell = grid.index(x, y);
            grid.known[cell] =
                counted > 0 && counted >= least * (across.to - across.from) * (down.to - down.from);
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
    // Laser scanners answer for one pixel in twenty.
    const double share =
        known.samples.empty()
            ? 1.0
            : 1.0 - static_cast<double>(std::count(known.samples.begin(), known.samples.end(), 0)) /
                        static_cast<double>(known.samples.size());
    Grid grid = meansOf(
        plane.width, plane.height, std::max(1, static_cast<int>(plane.width / scale)),
        std::max(1, static_cast<int>(plane.height / scale)), std::min(0.5, share),
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

/// The photo's luma on such a grid. It has thirty times as many pixels as the depth map, so rows are added up
/// first.
Grid lumaOf(const RgbImage& photo, const Grid& like) {
    Grid grid(like.width, like.height);
    grid.known.assign(grid.known.size(), true);
    std::vector<uint32_t> sums(static_cast<size_t>(photo.width) * 3);
    for (int y = 0; y < grid.height; ++y) {
        const Stretch down = stretchOf(y, grid.height, photo.height);
        std::fill(sums.begin(), sums.end(), 0);
        for (int j = down.from; j < down.to; ++j)
            withWideVectors([to = sums.data(), from = photo.row(j), size = sums.size()] {
                for (size_t i = 0; i < size; ++i) to[i] += from[i];
            });
        for (int x = 0; x < grid.width; ++x) {
            const Stretch across = stretchOf(x, grid.width, photo.width);
            std::array<double, 3> rgb = {};
            for (int i = across.from; i < across.to; ++i)
                for (size_t c = 0; c < 3; ++c) rgb[c] += sums[static_cast<size_t>(i) * 3 + c];
            const double pixels = (across.to - across.from) * (down.to - down.from);
            grid.values[grid.index(x, y)] = (0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2]) / pixels;
        }
    }
    return grid;
}

/// Pearson's correlation of pairs of numbers.
class Correlation {
  public:
    void add(double a, double b) {
        ++m_count;
        m_a += a;
        m_b += b;
        m_aa += a * a;
        m_bb += b * b;
        m_ab += a * b;
    }
    /// 0 where one of both is constant.
    double value() const {
        if (m_count == 0.0) return 0.0;
        const double spread = (m_aa - m_a * m_a / m_count) * (m_bb - m_b * m_b / m_count);
        return spread > 1e-9 ? (m_ab - m_a * m_b / m_count) / std::sqrt(spread) : 0.0;
    }

  private:
    double m_count = 0.0, m_a = 0.0, m_b = 0.0, m_aa = 0.0, m_bb = 0.0, m_ab = 0.0;
};

/// How the levels go with the way down the picture.
double withHeight(const Grid& levels) {
    Correlation correlation;
    for (int y = 0; y < levels.height; ++y)
        for (int x = 0; x < levels.width; ++x)
            if (levels.knows(x, y)) correlation.add(levels.at(x, y), y);
    return correlation.value();
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

/// Of the smooth slopes that lean up or down, how many more fall towards the picture's lower border than
/// towards its upper one, -1 to 1; steep ones count more. Walls lean to the side and say nothing.
double slopes(const Grid& levels) {
    // Steps are no slopes, and noise is none either; a few cells say nothing.
    constexpr double kLeast = 0.008, kMost = 0.12, kFull = 0.03, kLean = 1.5, kFew = 200.0;
    double sum = 0.0, weights = 0.0;
    for (int y = 2; y < levels.height - 2; ++y)
        for (int x = 2; x < levels.width - 2; ++x) {
            if (!levels.knows(x, y - 2) || !levels.knows(x, y) || !levels.knows(x, y + 2)) continue;
            const double slope = levels.at(x, y + 2) - levels.at(x, y - 2);
            const double bend = levels.at(x, y + 2) + levels.at(x, y - 2) - 2.0 * levels.at(x, y);
            if (std::abs(slope) < kLeast || std::abs(slope) > kMost || std::abs(bend) > 0.5 * std::abs(slope))
                continue;
            if (levels.knows(x - 2, y) && levels.knows(x + 2, y) &&
                std::abs(slope) < kLean * std::abs(levels.at(x + 2, y) - levels.at(x - 2, y)))
                continue;
            const double weight = std::min(1.0, std::abs(slope) / kFull);
            sum += slope > 0.0 ? weight : -weight;
            weights += weight;
        }
    return sum / (weights + kFew);
}

/// How much more often smooth surfaces bulge towards the higher levels than away from them, -1 to 1. Of a
/// plane that leans, distances bend away from the viewer and 1 / distance is straight; what is round is
/// nearest in its middle in either.
double bulges(const Grid& levels) {
    constexpr int kReach = 4;
    constexpr double kLeast = 0.01, kMost = 0.25, kStraight = 0.02, kStep = 0.35, kFew = 200.0;
    double sum = 0.0, counted = 0.0;
    const auto count = [&](int x, int y, int dx, int dy) {
        if (!levels.knows(x - dx, y - dy) || !levels.knows(x, y) || !levels.knows(x + dx, y + dy)) return;
        const double before = levels.at(x - dx, y - dy), after = levels.at(x + dx, y + dy);
        const double slope = std::abs(after - before), bend = before + after - 2.0 * levels.at(x, y);
        if (slope < kLeast || slope > kMost || std::abs(bend) <= kStraight * slope ||
            std::abs(bend) > kStep * slope)
            return;
        sum += bend < 0.0 ? 1.0 : -1.0;
        ++counted;
    };
    for (int y = 0; y < levels.height; ++y)
        for (int x = 0; x < levels.width; ++x) {
            if (x >= kReach && x + kReach < levels.width) count(x, y, kReach, 0);
            if (y >= kReach && y + kReach < levels.height) count(x, y, 0, kReach);
        }
    return sum / (counted + kFew);
}

/// Which side of the steps in depth has more of the photo's contrast: 1 the higher levels' side, -1 the lower
/// ones'. Between both sides may lie a few cells without a level, as sensors leave them at steps.
double contrastAtSteps(const Grid& levels, const Grid& luma) {
    constexpr int kReach = 5, kGap = 6;
    constexpr double kStep = 0.08, kNoise = 2.0, kFew = 60.0;
    double high = 0.0, low = 0.0, steps = 0.0;
    const auto walk = [&](int length, auto level, auto known, auto light) {
        int before = -1;
        for (int at = 0; at < length; ++at) {
            if (!known(at)) continue;
            const int last = before;
            before = at;
            if (last < kReach || at + kReach >= length || at - last > kGap + 1) continue;
            const double step = level(at) - level(last);
            if (std::abs(step) < kStep) continue;
            bool clear = true;
            double photo_before = 0.0, photo_after = 0.0;
            for (int i = 1; i <= kReach && clear; ++i) {
                clear = known(last - i) && known(at + i) &&
                        std::abs(level(last - i + 1) - level(last - i)) <= std::abs(step) &&
                        std::abs(level(at + i) - level(at + i - 1)) <= std::abs(step);
                photo_before += std::abs(light(last - i + 1) - light(last - i));
                photo_after += std::abs(light(at + i) - light(at + i - 1));
            }
            if (!clear) continue;
            const double all = photo_before + photo_after + kNoise;
            high += (step > 0.0 ? photo_after : photo_before) / all;
            low += (step > 0.0 ? photo_before : photo_after) / all;
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

/// How the distance between neighbouring levels grows with the level, -1 to 1: sensors that measure a shift,
/// of a pattern or between two views, tell far distances in coarser steps. 0 for 8 bit, and where levels are
/// mixed.
double growingSteps(const Plane& plane, const GrayImage& known) {
    constexpr size_t kFewLevels = 50;
    constexpr double kClear = 0.6;
    std::vector<float> used = someLevels(plane, known);
    // Stray samples at either end lie apart from the others, whatever the sensor.
    const auto stray = static_cast<std::ptrdiff_t>(used.size() / 100);
    used = std::vector<float>(used.begin() + stray, used.end() - stray);
    used.erase(std::unique(used.begin(), used.end()), used.end());
    if (used.size() < kFewLevels) return 0.0;
    Correlation growth;
    for (size_t i = 1; i < used.size(); ++i)
        growth.add(used[i], std::log(static_cast<double>(used[i]) - static_cast<double>(used[i - 1])));
    const double grows = growth.value();
    return std::abs(grows) >= kClear ? grows : 0.0;
}

/// What the words of a file's name say: positive where larger is nearer.
double wordsOf(const std::string& name) {
    constexpr double kWord = 1.5;
    std::string lower = name.substr(name.find_last_of('/') + 1);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    const auto has = [&lower](const char* word) { return lower.find(word) != std::string::npos; };
    for (const char* word : {"disp", "inverse", "invdepth", "inv_depth", "inv-depth", "idepth"})
        if (has(word)) return kWord;
    for (const char* word : {"distance", "metric", "millimet", "_mm", "-mm", "lidar", "kinect", "zbuffer"})
        if (has(word)) return -kWord;
    return 0.0;
}

}  // namespace

bool looksMeasured(const Plane& plane, const GrayImage& known) {
    constexpr float kMost = 0.85f * 255.0f, kLeastShare = 0.02f;
    float lowest = 255.0f, highest = 0.0f;
    for (size_t i = 0; i < plane.samples.size(); ++i) {
        if (!known.samples.empty() && known.samples[i] == 0) continue;
        lowest = std::min(lowest, plane.samples[i]);
        highest = std::max(highest, plane.samples[i]);
    }
    return highest < kMost && lowest > kLeastShare * highest;
}

double confidenceLargerIsFarther(const RgbImage& photo, const Plane& plane, const GrayImage& known,
                                 const PolarityClues& clues) {
    const Grid levels = levelsOf(plane, known);
    const Grid luma = lumaOf(photo, levels);
    double nearer = wordsOf(clues.name);  // positive where larger is nearer
    nearer += 6.0 * contrastAtSteps(levels, luma);
    nearer += 2.5 * bulges(levels);
    if (clues.upright) {
        nearer += 2.0 * withHeight(levels);
        nearer += 2.0 * borders(levels);
        nearer += 1.5 * slopes(levels);
    }
    if (clues.bits > 8) {
        nearer -= 3.0 * growingSteps(plane, known);
        if (looksMeasured(plane, known)) nearer -= 0.5;
    }
    return 1.0 / (1.0 + std::exp(nearer));
}

}  // namespace quorvane::media
