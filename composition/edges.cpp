// The renderer reduces a depth map to a sample a cell and takes the mean of each sample and its four
// neighbours; its vertices stand between four samples. A jump from near to far becomes a slope over about
// four cells, two to each side. Where near samples are grown by two cells, the slope starts at the near
// thing's outline: two growths by a sample and its four neighbours, the shape of that mean.

#include "composition/edges.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace quorvane {
namespace {

struct Plane {
    Size size;
    std::vector<uint8_t> samples;

    explicit Plane(Size s) : size(s), samples(static_cast<size_t>(s.width) * static_cast<size_t>(s.height)) {}
    uint8_t* row(int y) { return samples.data() + static_cast<size_t>(y) * static_cast<size_t>(size.width); }
    const uint8_t* row(int y) const { return const_cast<Plane*>(this)->row(y); }
};

/// Scales linearly; neither side shrinks.
Plane enlarged(const uint8_t* depth, Size from, Size to) {
    Plane plane(to);
    struct Place {
        int first, second;
        float share;  // of the second
    };
    const auto places = [](int own, int wanted) {
        std::vector<Place> all;
        for (int i = 0; i < wanted; ++i) {
            const double at = std::clamp((i + 0.5) * own / wanted - 0.5, 0.0, own - 1.0);
            const int first = static_cast<int>(at);
            all.push_back({first, std::min(first + 1, own - 1), static_cast<float>(at - first)});
        }
        return all;
    };
    const std::vector<Place> columns = places(from.width, to.width), rows = places(from.height, to.height);
    for (int y = 0; y < to.height; ++y) {
        const Place& v = rows[static_cast<size_t>(y)];
        const auto row = [&](int index) {
            return depth + static_cast<size_t>(index) * static_cast<size_t>(from.width);
        };
        const uint8_t *upper = row(v.first), *lower = row(v.second);
        for (int x = 0; x < to.width; ++x) {
            const Place& h = columns[static_cast<size_t>(x)];
            const auto across = [&](const uint8_t* line) {
                const float left = line[h.first];
                return left + (static_cast<float>(line[h.second]) - left) * h.share;
            };
            const float top = across(upper);
            plane.row(y)[x] = static_cast<uint8_t>(top + (across(lower) - top) * v.share + 0.5f);
        }
    }
    return plane;
}

/// The nearest of the means of a cell's four quarters: thin things stay, single wrong samples do not. Where a
/// cell has fewer than two samples, a quarter is one of them.
Plane reduced(const uint8_t* depth, Size from, Size grid) {
    struct Range {
        int first, last;
    };
    const auto halves = [](int own, int cells) {
        std::vector<Range> all;
        for (int64_t i = 0; i < 2 * int64_t{cells}; ++i) {
            const int first = static_cast<int>(i * own / (2 * cells));
            all.push_back({first, std::max(first, static_cast<int>((i + 1) * own / (2 * cells)) - 1)});
        }
        return all;
    };
    const std::vector<Range> columns = halves(from.width, grid.width),
                             rows = halves(from.height, grid.height);
    Plane plane(grid);
    std::vector<uint32_t> sums(static_cast<size_t>(from.width));
    for (size_t j = 0; j < rows.size(); ++j) {
        const auto line = [&](int y) {
            return depth + static_cast<size_t>(y) * static_cast<size_t>(from.width);
        };
        std::copy_n(line(rows[j].first), sums.size(), sums.begin());
        for (int y = rows[j].first + 1; y <= rows[j].last; ++y) {
            const uint8_t* samples = line(y);
            for (size_t x = 0; x < sums.size(); ++x) sums[x] += samples[x];
        }
        uint8_t* cells = plane.row(static_cast<int>(j / 2));
        for (size_t i = 0; i < columns.size(); ++i) {
            uint64_t sum = 0;
            for (int x = columns[i].first; x <= columns[i].last; ++x) sum += sums[static_cast<size_t>(x)];
            const uint64_t count = static_cast<uint64_t>(columns[i].last - columns[i].first + 1) *
                                   static_cast<uint64_t>(rows[j].last - rows[j].first + 1);
            cells[i / 2] = std::max(cells[i / 2], static_cast<uint8_t>((sum + count / 2) / count));
        }
    }
    return plane;
}

struct Nearer {
    uint8_t operator()(uint8_t a, uint8_t b) const { return std::max(a, b); }
};
struct Farther {
    uint8_t operator()(uint8_t a, uint8_t b) const { return std::min(a, b); }
};

/// The most extreme of the (2 * radius + 1) squared samples around each.
template <typename Choose>
Plane extremesAround(const Plane& plane, int radius, Choose choose) {
    const int width = plane.size.width, height = plane.size.height;
    const auto padding = static_cast<size_t>(radius);
    Plane across(plane.size), both(plane.size);
    std::vector<uint8_t> line(static_cast<size_t>(width) + 2 * padding);
    for (int y = 0; y < height; ++y) {
        const uint8_t* from = plane.row(y);
        std::fill_n(line.begin(), padding, from[0]);
        std::copy_n(from, width, line.begin() + radius);
        std::fill_n(line.end() - radius, padding, from[width - 1]);
        uint8_t* to = across.row(y);
        std::copy_n(line.data(), width, to);
        for (int i = 1; i <= 2 * radius; ++i) {
            const uint8_t* shifted = line.data() + i;
            for (int x = 0; x < width; ++x) to[x] = choose(to[x], shifted[x]);
        }
    }
    for (int y = 0; y < height; ++y) {
        uint8_t* to = both.row(y);
        std::copy_n(across.row(std::max(0, y - radius)), width, to);
        for (int j = std::max(0, y - radius) + 1; j <= std::min(height - 1, y + radius); ++j) {
            const uint8_t* other = across.row(j);
            for (int x = 0; x < width; ++x) to[x] = choose(to[x], other[x]);
        }
    }
    return both;
}

/// Makes ramps of up to about 2 * radius samples jumps again: a sample takes the nearest or the farthest
/// depth around it, whichever is closer to its own. Slopes, where both are as close, and small differences
/// stay.
void harden(Plane* plane, int radius) {
    constexpr int kLeastJump = 16;
    const Plane near = extremesAround(*plane, radius, Nearer());
    const Plane far = extremesAround(*plane, radius, Farther());
    for (size_t i = 0; i < plane->samples.size(); ++i) {
        const int up = near.samples[i] - plane->samples[i], down = plane->samples[i] - far.samples[i];
        if (up + down <= kLeastJump || 4 * std::abs(up - down) <= up + down) continue;
        plane->samples[i] = up < down ? near.samples[i] : far.samples[i];
    }
}

/// Each sample becomes the nearest of itself and its four neighbours.
Plane grown(const Plane& plane) {
    const int width = plane.size.width, height = plane.size.height;
    Plane result(plane.size);
    for (int y = 0; y < height; ++y) {
        const uint8_t* own = plane.row(y);
        const uint8_t* above = plane.row(std::max(0, y - 1));
        const uint8_t* below = plane.row(std::min(height - 1, y + 1));
        uint8_t* to = result.row(y);
        for (int x = 0; x < width; ++x) to[x] = std::max({own[x], above[x], below[x]});
        for (int x = 1; x < width; ++x) to[x] = std::max(to[x], own[x - 1]);
        for (int x = 0; x + 1 < width; ++x) to[x] = std::max(to[x], own[x + 1]);
    }
    return result;
}

std::vector<uint8_t> repeatedInCells(const Plane& plane) {
    const size_t width = static_cast<size_t>(plane.size.width) * kDepthPixelsPerCell;
    std::vector<uint8_t> samples(width * static_cast<size_t>(plane.size.height) * kDepthPixelsPerCell);
    uint8_t* to = samples.data();
    for (int y = 0; y < plane.size.height; ++y) {
        const uint8_t* const first = to;
        for (int x = 0; x < plane.size.width; ++x, to += kDepthPixelsPerCell)
            std::fill_n(to, kDepthPixelsPerCell, plane.row(y)[x]);
        for (int i = 1; i < kDepthPixelsPerCell; ++i, to += width) std::copy_n(first, width, to);
    }
    return samples;
}

/// Adds the widths of a line's strong jumps. A jump is told from a slope by the flat ground at both ends of a
/// window around it.
void addRises(const uint8_t* line, int length, int least_jump, std::vector<float>* rises) {
    constexpr int kWindow = 18, kFlat = 2;
    for (int i = 0; i + kWindow < length; ++i) {
        const uint8_t* window = line + i;
        const int jump = window[kWindow] - window[0];
        if (std::abs(jump) < least_jump) continue;
        const auto levelsFrom = [&](int index, int base) { return std::abs(window[index] - window[base]); };
        if (10 * levelsFrom(kFlat, 0) > std::abs(jump) ||
            10 * levelsFrom(kWindow - kFlat, kWindow) > std::abs(jump))
            continue;
        const auto risen = [&](int index) {
            return static_cast<float>(window[index] - window[0]) / static_cast<float>(jump);
        };
        // Where `part` of the height is passed between `index` and the next sample.
        const auto crossing = [&](int index, float part) {
            const float before = risen(index);
            return static_cast<float>(index) + (part - before) / (risen(index + 1) - before);
        };
        int low = 0, high = kWindow;
        while (risen(low + 1) <= 0.1f) ++low;
        while (risen(high - 1) >= 0.9f) --high;
        rises->push_back(crossing(high - 1, 0.9f) - crossing(low, 0.1f));
    }
}

}  // namespace

double edgeBlur(const uint8_t* depth, Size size) {
    // As many lines as tell; a map's range without the tails that noise adds does not matter here.
    constexpr int kMostLines = 200, kLeastJump = 12;
    const size_t count = static_cast<size_t>(size.width) * static_cast<size_t>(size.height);
    const auto [least, most] = std::minmax_element(depth, depth + count);
    const int least_jump = std::max(kLeastJump, (*most - *least) / 8);

    std::vector<float> rises;
    const int row_step = size.height / kMostLines + 1, column_step = size.width / kMostLines + 1;
    for (int y = 0; y < size.height; y += row_step)
        addRises(depth + static_cast<size_t>(y) * static_cast<size_t>(size.width), size.width, least_jump,
                 &rises);
    std::vector<uint8_t> column(static_cast<size_t>(size.height));
    for (int x = 0; x < size.width; x += column_step) {
        for (int y = 0; y < size.height; ++y)
            column[static_cast<size_t>(y)] =
                depth[static_cast<size_t>(y) * static_cast<size_t>(size.width) + static_cast<size_t>(x)];
        addRises(column.data(), size.height, least_jump, &rises);
    }
    if (rises.empty()) return 0.0;
    const auto middle = rises.begin() + static_cast<std::ptrdiff_t>(rises.size() / 2);
    std::nth_element(rises.begin(), middle, rises.end());
    return static_cast<double>(*middle);
}

std::vector<uint8_t> cleanEdges(const uint8_t* depth, Size size, Size grid) {
    const Size at_least = {std::max(size.width, grid.width), std::max(size.height, grid.height)};
    Plane plane = size == at_least ? reduced(depth, size, grid)
                                   : reduced(enlarged(depth, size, at_least).samples.data(), at_least, grid);

    constexpr double kHardEnough = 1.7;
    constexpr int kLargestRadius = 3;
    const double blur = edgeBlur(plane.samples.data(), grid);
    const int radius = std::min(kLargestRadius, static_cast<int>(std::lround((blur - kHardEnough) / 2.0)));
    if (radius > 0) harden(&plane, radius);

    // A cell that is made of many samples is near as soon as a part of it is, which already is half a growth.
    const auto has_many = [](int samples, int cells) { return 2 * int64_t{samples} >= 3 * int64_t{cells}; };
    const bool many_samples = has_many(size.width, grid.width) && has_many(size.height, grid.height);
    // The softer a map, the less it knows where outlines are; a near thing's rim is missed first.
    const bool soft = radius >= 2;
    const int growths = (many_samples ? 1 : 2) + (soft ? 1 : 0);
    for (int i = 0; i < growths; ++i) plane = grown(plane);
    return repeatedInCells(plane);
}

}  // namespace quorvane
