#include "media/depth/stereo_match.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <future>
#include <utility>
#include <vector>

namespace quorvane::media {
namespace {

constexpr int kCensusX = 4, kCensusY = 3;  // radii; 62 neighbours
// A step of one costs little, so that slopes are followed; a larger one costs less where the photo has an
// edge.
constexpr int kSmallStep = 12, kLargeStep = 100, kLeastLargeStep = 24;
constexpr double kEdge = 12.0;  // levels between neighbours that halve the cost of a large step
// For what would lie outside the right view: as bad as a poor match.
constexpr uint8_t kOutside = 24;
// Two views that agree differ by this many pixels at most.
constexpr float kAgreement = 1.0f;
// Surfaces smaller than this part of the view are mistakes.
constexpr int kSmallestIsland = 5000;

/// Which neighbours of each pixel are darker, a bit each.
std::vector<uint64_t> census(const Plane& image) {
    const int w = image.width, h = image.height;
    // Beyond the border the border's pixels go on.
    const int stride = w + 2 * kCensusX;
    std::vector<float> padded(static_cast<size_t>(stride) * static_cast<size_t>(h + 2 * kCensusY));
    for (int y = 0; y < h + 2 * kCensusY; ++y)
        for (int x = 0; x < stride; ++x)
            padded[static_cast<size_t>(y) * static_cast<size_t>(stride) + static_cast<size_t>(x)] =
                image.at(std::clamp(x - kCensusX, 0, w - 1), std::clamp(y - kCensusY, 0, h - 1));
    std::vector<uint64_t> codes(image.samples.size());
    for (int y = 0; y < h; ++y) {
        uint64_t* const row = &codes[static_cast<size_t>(y) * static_cast<size_t>(w)];
        const float* const middle =
            &padded[static_cast<size_t>(y + kCensusY) * static_cast<size_t>(stride) + kCensusX];
        for (int dy = -kCensusY; dy <= kCensusY; ++dy)
            for (int dx = -kCensusX; dx <= kCensusX; ++dx) {
                if (dx == 0 && dy == 0) continue;
                const float* const other = middle + dy * stride + dx;
                for (int x = 0; x < w; ++x)
                    row[x] = row[x] << 1 | static_cast<uint64_t>(other[x] < middle[x]);
            }
    }
    return codes;
}

inline uint64_t bitsIn(uint64_t x) {
    x -= x >> 1 & 0x5555555555555555u;
    x = (x & 0x3333333333333333u) + (x >> 2 & 0x3333333333333333u);
    x = (x + (x >> 4)) & 0x0f0f0f0f0f0f0f0fu;
    x += x >> 8;
    x += x >> 16;
    x += x >> 32;
    return x & 0x7f;
}

/// A cost or a sum of them for each pixel and disparity.
template <typename Value>
struct Volume {
    int width, height, depth;
    std::vector<Value> values;

    Volume(int w, int h, int d)
        : width(w),
          height(h),
          depth(d),
          values(static_cast<size_t>(w) * static_cast<size_t>(h) * static_cast<size_t>(d)) {}
    Value* at(int x, int y) { return values.data() + start(x, y); }
    const Value* at(int x, int y) const { return values.data() + start(x, y); }

  private:
    size_t start(int x, int y) const {
        return (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) *
               static_cast<size_t>(depth);
    }
};

Volume<uint8_t> matchingCosts(const Plane& left, const Plane& right, int lowest, int count) {
    const int w = left.width, h = left.height;
    const std::vector<uint64_t> ours = census(left), theirs = census(right);
    Volume<uint8_t> costs(w, h, count);
    std::vector<uint64_t> mirrored(static_cast<size_t>(w));
    for (int y = 0; y < h; ++y) {
        const uint64_t* const row = &ours[static_cast<size_t>(y) * static_cast<size_t>(w)];
        const uint64_t* const other = &theirs[static_cast<size_t>(y) * static_cast<size_t>(w)];
        // So that growing disparities lie one behind the other.
        std::reverse_copy(other, other + w, mirrored.begin());
        for (int x = 0; x < w; ++x) {
            uint8_t* const cost = costs.at(x, y);
            // The right view has x - lowest - i.
            const int first = std::clamp(x - lowest - (w - 1), 0, count);
            const int end = std::clamp(x - lowest + 1, first, count);
            std::fill(cost, cost + first, kOutside);
            std::fill(cost + end, cost + count, kOutside);
            const uint64_t code = row[x];
            const uint64_t* const from = mirrored.data() + (w - 1 - x + lowest);
            for (int i = first; i < end; ++i) cost[i] = static_cast<uint8_t>(bitsIn(code ^ from[i]));
        }
    }
    return costs;
}

/// One pixel's costs along a path, from those of the pixel before it; adds them to `sum`. Returns the least.
inline int16_t follow(const uint8_t* __restrict cost, const int16_t* __restrict before, int16_t least_before,
                      int16_t large_step, int count, int16_t* __restrict now, int16_t* __restrict sum) {
    const auto jump = static_cast<int16_t>(least_before + large_step);
    int16_t least = INT16_MAX;
    for (int d = 0; d < count; ++d) {
        const auto below = static_cast<int16_t>(before[d - 1] + kSmallStep);
        const auto above = static_cast<int16_t>(before[d + 1] + kSmallStep);
        const int16_t best = std::min(std::min(before[d], jump), std::min(below, above));
        const auto value = static_cast<int16_t>(cost[d] + best - least_before);
        now[d] = value;
        sum[d] = static_cast<int16_t>(sum[d] + value);
        least = std::min(least, value);
    }
    return least;
}

/// The costs of one row's pixels along one direction, with room beside each for what lies out of range.
class PathRow {
  public:
    PathRow(int width, int count)
        : m_step(static_cast<size_t>(count) + 2), m_least(static_cast<size_t>(width)) {
        m_values.assign(m_step * static_cast<size_t>(width), kNever);
    }
    int16_t* at(int x) { return &m_values[static_cast<size_t>(x) * m_step + 1]; }
    int16_t& least(int x) { return m_least[static_cast<size_t>(x)]; }

  private:
    static constexpr int16_t kNever = 16'000;
    size_t m_step;
    std::vector<int16_t> m_values, m_least;
};

/// Adds the costs along the four directions that come from the rows above and from the left, or, `backwards`,
/// their opposites.
void addPaths(const Plane& photo, const Volume<uint8_t>& costs, bool backwards, Volume<int16_t>* sums) {
    const int w = costs.width, h = costs.height, count = costs.depth;
    constexpr std::array<std::pair<int, int>, 4> kFrom = {{{-1, 0}, {-1, -1}, {0, -1}, {1, -1}}};
    std::vector<PathRow> rows[2] = {std::vector<PathRow>(4, PathRow(w, count)),
                                    std::vector<PathRow>(4, PathRow(w, count))};
    std::array<int16_t, 256> large_steps;
    for (size_t i = 0; i < large_steps.size(); ++i)
        large_steps[i] = static_cast<int16_t>(
            std::max<double>(kLeastLargeStep, kLargeStep / (1.0 + static_cast<double>(i) / kEdge)));
    const std::vector<int16_t> none(static_cast<size_t>(count) + 2, 0);
    const int sign = backwards ? -1 : 1;
    for (int row = 0; row < h; ++row) {
        const int y = backwards ? h - 1 - row : row;
        std::vector<PathRow>& now = rows[row & 1];
        std::vector<PathRow>& above = rows[~row & 1];
        for (int column = 0; column < w; ++column) {
            const int x = backwards ? w - 1 - column : column;
            for (size_t k = 0; k < kFrom.size(); ++k) {
                const int from_x = x + sign * kFrom[k].first, from_y = y + sign * kFrom[k].second;
                const bool inside = from_x >= 0 && from_x < w && from_y >= 0 && from_y < h;
                PathRow& source = kFrom[k].second == 0 ? now[k] : above[k];
                const float step = inside ? std::abs(photo.at(x, y) - photo.at(from_x, from_y)) : 0.0f;
                now[k].least(x) = follow(costs.at(x, y), inside ? source.at(from_x) : none.data() + 1,
                                         inside ? source.least(from_x) : int16_t{0},
                                         large_steps[static_cast<size_t>(std::min(step, 255.0f))], count,
                                         now[k].at(x), sums->at(x, y));
            }
        }
    }
}

/// The least of three neighbours' parabola, -0.5 to 0.5 from the middle one.
float vertex(int before, int middle, int after) {
    const int bend = before - 2 * middle + after;
    return bend <= 0 ? 0.0f : 0.5f * static_cast<float>(before - after) / static_cast<float>(bend);
}

/// Takes out islands: connected disparities that hardly differ, fewer than `least` pixels of them.
void removeIslands(const Plane& plane, int least, GrayImage* sure) {
    const int w = plane.width, h = plane.height;
    std::vector<uint8_t> seen(plane.samples.size());
    std::vector<std::pair<int, int>> island;
    for (int y0 = 0; y0 < h; ++y0)
        for (int x0 = 0; x0 < w; ++x0) {
            const auto seenAt = [&](int x, int y) -> uint8_t& {
                return seen[static_cast<size_t>(y) * static_cast<size_t>(w) + static_cast<size_t>(x)];
            };
            if (seenAt(x0, y0) != 0 || sure->at(x0, y0) == 0) continue;
            island.assign(1, {x0, y0});
            seenAt(x0, y0) = 1;
            for (size_t i = 0; i < island.size(); ++i) {
                const auto [x, y] = island[i];
                for (const auto& [dx, dy] : {std::pair{1, 0}, {-1, 0}, {0, 1}, {0, -1}}) {
                    const int nx = x + dx, ny = y + dy;
                    if (nx < 0 || nx >= w || ny < 0 || ny >= h || seenAt(nx, ny) != 0 ||
                        sure->at(nx, ny) == 0 || std::abs(plane.at(nx, ny) - plane.at(x, y)) > 1.0f)
                        continue;
                    seenAt(nx, ny) = 1;
                    island.emplace_back(nx, ny);
                }
            }
            if (static_cast<int>(island.size()) < least)
                for (const auto& [x, y] : island) sure->at(x, y) = 0;
        }
}

/// 255 where the pixels beside a pixel hardly differ from it. What lies above and below tells little of where
/// in its row a pixel is.
GrayImage flatParts(const Plane& image) {
    constexpr double kLeastVariance = 0.3;                  // squared levels: what coding leaves of nothing
    constexpr double kWhite = 250.0, kWhiteVariance = 4.0;  // what is overexposed shows only noise
    const int w = image.width;
    GrayImage flat(w, image.height);
    // Sums of a row's samples and of their squares, up to each.
    std::vector<double> sums(static_cast<size_t>(w) + 1), squares(sums.size());
    for (int y = 0; y < image.height; ++y) {
        const float* const row = image.row(y);
        for (size_t x = 0; x < static_cast<size_t>(w); ++x) {
            const double value = row[x];
            sums[x + 1] = sums[x] + value;
            squares[x + 1] = squares[x] + value * value;
        }
        for (int x = 0; x < w; ++x) {
            const auto left = static_cast<size_t>(std::max(0, x - kCensusX)),
                       right = static_cast<size_t>(std::min(w, x + kCensusX + 1));
            const auto count = static_cast<double>(right - left);
            const double mean = (sums[right] - sums[left]) / count;
            const double variance = (squares[right] - squares[left]) / count - mean * mean;
            const bool is_flat = variance < kLeastVariance || (mean > kWhite && variance < kWhiteVariance);
            flat.at(x, y) = is_flat ? 255 : 0;
        }
    }
    return flat;
}

/// Takes out what is found where the right view does not reach: there a row that goes on as it does further
/// inside has no counterpart, and what looks like one is a mistake, such as a pattern that repeats itself.
void removeBeyondBorder(DisparityRange range, Disparities* found) {
    const int w = found->plane.width, h = found->plane.height, stretch = std::max(8, w / 20);
    std::vector<float> inside;
    /// The median disparity of the row's part that begins there.
    const auto medianFrom = [&](int begin, int y) {
        inside.clear();
        for (int x = std::max(0, begin); x < std::min(w, begin + stretch); ++x)
            if (found->sure.at(x, y) != 0) inside.push_back(found->plane.at(x, y));
        if (static_cast<int>(inside.size()) < stretch / 4) return 0.0f;
        const auto middle = inside.begin() + static_cast<std::ptrdiff_t>(inside.size() / 2);
        std::nth_element(inside.begin(), middle, inside.end());
        return *middle;
    };
    for (int y = 0; y < h; ++y) {
        const auto left = static_cast<int>(range.highest > 0 ? medianFrom(range.highest, y) : 0.0f);
        for (int x = 0; x < std::min(left, w); ++x) found->sure.at(x, y) = 0;
        const auto right =
            static_cast<int>(range.lowest < 0 ? medianFrom(w + range.lowest - stretch, y) : 0.0f);
        for (int x = std::max(0, w + right); x < w; ++x) found->sure.at(x, y) = 0;
    }
}

}  // namespace

Disparities matchViews(const Plane& left, const Plane& right, DisparityRange range) {
    const int w = left.width, h = left.height;
    // Whole vectors.
    constexpr int kLanes = 16;
    const int count = (range.highest - range.lowest + kLanes) / kLanes * kLanes;
    const Volume<uint8_t> costs = matchingCosts(left, right, range.lowest, count);
    Volume<int16_t> sums(w, h, count), backward_sums(w, h, count);
    // A future hands on what is thrown, such as memory that runs out.
    std::future<void> backwards =
        std::async(std::launch::async, [&] { addPaths(left, costs, true, &backward_sums); });
    addPaths(left, costs, false, &sums);
    backwards.get();
    for (size_t i = 0; i < sums.values.size(); ++i)
        sums.values[i] = static_cast<int16_t>(sums.values[i] + backward_sums.values[i]);

    Disparities found = {Plane(w, h), GrayImage(w, h), flatParts(left)};
    std::vector<int> ours(static_cast<size_t>(w)), theirs(static_cast<size_t>(w));
    for (int y = 0; y < h; ++y) {
        std::vector<int16_t> best(static_cast<size_t>(w), INT16_MAX);
        for (int x = 0; x < w; ++x) {
            const int16_t* const sum = sums.at(x, y);
            const auto d = static_cast<int>(std::min_element(sum, sum + count) - sum);
            ours[static_cast<size_t>(x)] = d;
            found.plane.at(x, y) = static_cast<float>(range.lowest + d) +
                                   (d > 0 && d < count - 1 ? vertex(sum[d - 1], sum[d], sum[d + 1]) : 0.0f);
            // The best of the same sums for each pixel of the right view.
            for (int i = 0; i < count; ++i) {
                const int there = x - range.lowest - i;
                if (there < 0 || there >= w || sum[i] >= best[static_cast<size_t>(there)]) continue;
                best[static_cast<size_t>(there)] = sum[i];
                theirs[static_cast<size_t>(there)] = i;
            }
        }
        for (int x = 0; x < w; ++x) {
            const int d = ours[static_cast<size_t>(x)], there = x - range.lowest - d;
            const bool agrees =
                there >= 0 && there < w &&
                static_cast<float>(std::abs(theirs[static_cast<size_t>(there)] - d)) <= kAgreement;
            found.sure.at(x, y) = agrees && found.flat.at(x, y) == 0 ? 255 : 0;
        }
    }
    removeBeyondBorder(range, &found);
    removeIslands(found.plane, std::max(8, w * h / kSmallestIsland), &found.sure);
    return found;
}

}  // namespace quorvane::media
