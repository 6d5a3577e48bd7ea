#include "media/depth/stereo_depth.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "media/depth/depth_doctor.h"
#include "media/depth/edge_agreement.h"
#include "media/depth/polarity.h"
#include "media/depth/stereo_align.h"
#include "media/depth/stereo_match.h"
#include "media/picture/turn.h"
#include "sizes/sizes.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

constexpr double kMostMatched = 1e6;       // that are matched
constexpr double kMostCandidates = 1.3e8;  // pixels times disparities
constexpr int kSmallSide = 400;            // of the views in which everything is looked for first

/// A picture as planes of red, green and blue, and of their luma.
struct Planes {
    std::vector<Plane> colours;
    Plane gray;
};

Plane lumaOf(const std::vector<Plane>& colours) {
    Plane gray(colours[0].width, colours[0].height);
    for (size_t i = 0; i < gray.samples.size(); ++i)
        gray.samples[i] =
            0.299f * colours[0].samples[i] + 0.587f * colours[1].samples[i] + 0.114f * colours[2].samples[i];
    return gray;
}

Size scaledTo(Size size, double factor) {
    const auto side = [factor](int length) {
        return std::max(1, static_cast<int>(std::lround(length * factor)));
    };
    return {side(size.width), side(size.height)};
}

Plane reducedTo(const Plane& plane, Size size) {
    if (plane.width == size.width && plane.height == size.height) return plane;
    return reduced(plane, {0, 0, static_cast<double>(plane.width), static_cast<double>(plane.height)},
                   size.width, size.height)[0];
}

Planes planesOf(const RgbImage& image, Size size) {
    Planes planes;
    planes.colours =
        reduced(image, {0, 0, static_cast<double>(image.width), static_cast<double>(image.height)},
                size.width, size.height);
    planes.gray = lumaOf(planes.colours);
    return planes;
}

Planes reducedTo(const Planes& planes, Size size) {
    Planes out;
    for (const Plane& colour : planes.colours) out.colours.push_back(reducedTo(colour, size));
    out.gray = reducedTo(planes.gray, size);
    return out;
}

Planes turnedBy(const Planes& planes, Turn turn) {
    Planes out;
    for (const Plane& colour : planes.colours) out.colours.push_back(turned(colour, turn));
    out.gray = turned(planes.gray, turn);
    return out;
}

/// Two views, the left one first, and how they lie.
struct Pair {
    Planes left, right;
};

Pair turnedBy(const Pair& pair, Turn turn) { return {turnedBy(pair.left, turn), turnedBy(pair.right, turn)}; }

/// What was found out about a pair at small size.
struct Look {
    double agreeing = 0.0;  ///< share of the corners that have their counterpart where the alignment puts it
    Alignment alignment;
    std::vector<double> disparities;  ///< of those, ascending
};

Look lookAt(const Pair& small) {
    int tried = 0;
    const std::vector<Correspondence> found = correspondences(small.left.gray, small.right.gray, &tried);
    Look look;
    std::vector<Correspondence> agreeing;
    look.alignment = align(found, small.left.gray.height, &agreeing);
    // A few corners agree by chance.
    constexpr size_t kFewest = 12;
    if (agreeing.size() >= kFewest) look.agreeing = static_cast<double>(agreeing.size()) / tried;
    for (const Correspondence& c : agreeing) {
        // The alignment also moves things to the side.
        const double turned = c.dx - look.alignment.scale * c.x + look.alignment.turn * c.y;
        look.disparities.push_back(-turned);
    }
    std::sort(look.disparities.begin(), look.disparities.end());
    return look;
}

/// `sorted` is not empty.
double quantile(const std::vector<double>& sorted, double share) {
    return sorted[static_cast<size_t>(share * static_cast<double>(sorted.size() - 1))];
}

std::vector<double> sureOnes(const Disparities& found) {
    std::vector<double> sure;
    for (size_t i = 0; i < found.plane.samples.size(); ++i)
        if (found.sure.samples[i] != 0) sure.push_back(found.plane.samples[i]);
    std::sort(sure.begin(), sure.end());
    return sure;
}

/// Whether the first view is the left one, by what is hidden: 1 yes, -1 no, 0 nothing shows. Where
/// disparities rise to the right, surfaces overlap in the other view, and a strip of the first one is hidden
/// there. It belongs to the farther surface: the one to its left if the views are in order. So it should look
/// like what lies to its left, and unlike what lies to its right.
double orderShown(const std::vector<Plane>& colours, const Disparities& found) {
    constexpr double kLeastStep = 2.0;
    constexpr double kNoise = 15.0;  // levels, all channels together
    constexpr int kFewest = 60;
    const int w = found.plane.width, h = found.plane.height;
    double in_order = 0.0, all = 0.0;
    int strips = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 1; x < w;) {
            if (found.sure.at(x, y) != 0) {
                ++x;
                continue;
            }
            const int begin = x;
            while (x < w && found.sure.at(x, y) == 0) ++x;
            if (x == w || found.sure.at(begin - 1, y) == 0) continue;
            const double step = found.plane.at(x, y) - found.plane.at(begin - 1, y);
            const int width = x - begin;
            // As wide as it has to be if this is what it is.
            if (step < kLeastStep || width < step / 2 || width > 2 * step + 2) continue;
            const int beside = std::min({width, begin, w - x});
            const auto mean = [y](const Plane& colour, int from, int count) {
                double sum = 0.0;
                for (int i = 0; i < count; ++i) sum += colour.at(from + i, y);
                return sum / count;
            };
            double to_left = 0.0, to_right = 0.0;
            for (const Plane& colour : colours) {
                const double middle = mean(colour, begin, width);
                to_left += std::abs(mean(colour, begin - beside, beside) - middle);
                to_right += std::abs(mean(colour, x, beside) - middle);
            }
            in_order += (to_right - to_left) / (to_right + to_left + kNoise);
            all += std::abs(to_right - to_left) / (to_right + to_left + kNoise);
            ++strips;
        }
    return strips < kFewest || all == 0.0 ? 0.0 : in_order / all;
}

/// Whether it is certain that the first view is the right one. Two kinds of evidence: what is hidden, and how
/// near and far mostly lie in photos, which tells that larger disparities are farther.
bool areExchanged(const StereoViews& views, const Planes& left, const Disparities& found, Turn turn) {
    constexpr double kClearly = 0.4, kRather = 0.2;
    const double order = orderShown(left.colours, found);

    if (order > kRather) return false;
    const double farther =
        confidenceLargerIsFarther(views.left, turned(found.plane, turn), turned(found.sure, turn));
    return farther >= kCertain || (order < -kClearly && farther > 0.5);
}

/// The disparities of the large photo from those of a smaller one, along the edges of the large one: next to
/// a step a pixel takes the side whose colour it has.
Plane enlarged(const RgbImage& photo, const std::vector<Plane>& small_photo, const Plane& small) {
    constexpr float kStep = 1.5f, kColour = 12.0f;
    constexpr int kBefore = 1, kBehind = 2;  // of the 4 x 4 around
    const double scale_x = static_cast<double>(small.width) / photo.width,
                 scale_y = static_cast<double>(small.height) / photo.height;
    const auto column = [&small](int x) { return std::clamp(x, 0, small.width - 1); };
    const auto row = [&small](int y) { return std::clamp(y, 0, small.height - 1); };
    Plane out(photo.width, photo.height);
    for (int y = 0; y < photo.height; ++y) {
        const double at_y = (y + 0.5) * scale_y - 0.5;
        const int y0 = static_cast<int>(std::floor(at_y));
        const auto v = static_cast<float>(at_y - y0);
        int known_x0 = -10;
        float lowest = 0, highest = 0;
        for (int x = 0; x < photo.width; ++x) {
            const double at_x = (x + 0.5) * scale_x - 0.5;
            const int x0 = static_cast<int>(std::floor(at_x));
            const auto u = static_cast<float>(at_x - x0);
            if (x0 != known_x0) {
                known_x0 = x0;
                lowest = highest = small.at(column(x0), row(y0));
                for (int ny = y0 - kBefore; ny <= y0 + kBehind; ++ny)
                    for (int nx = x0 - kBefore; nx <= x0 + kBehind; ++nx) {
                        const float value = small.at(column(nx), row(ny));
                        lowest = std::min(lowest, value);
                        highest = std::max(highest, value);
                    }
            }
            if (highest - lowest <= kStep) {
                const float above =
                    small.at(column(x0), row(y0)) * (1 - u) + small.at(column(x0 + 1), row(y0)) * u;
                const float below =
                    small.at(column(x0), row(y0 + 1)) * (1 - u) + small.at(column(x0 + 1), row(y0 + 1)) * u;
                out.at(x, y) = above * (1 - v) + below * v;
                continue;
            }
            const float middle = (lowest + highest) / 2;
            std::array<float, 2> weights = {1e-12f, 1e-12f}, sums = {lowest * 1e-12f, highest * 1e-12f};
            const uint8_t* const pixel = &photo.at(x, y);
            for (int ny = y0 - kBefore; ny <= y0 + kBehind; ++ny)
                for (int nx = x0 - kBefore; nx <= x0 + kBehind; ++nx) {
                    const int cx = column(nx), cy = row(ny);
                    float difference = 0;
                    for (size_t k = 0; k < 3; ++k)
                        difference += std::abs(small_photo[k].at(cx, cy) - static_cast<float>(pixel[k]));
                    const float away_x = static_cast<float>(nx - at_x),
                                away_y = static_cast<float>(ny - at_y);
                    const float value = small.at(cx, cy);
                    const float weight =
                        std::exp(-difference / (3 * kColour) - (away_x * away_x + away_y * away_y) / 2);
                    const size_t side = value > middle ? 1 : 0;
                    weights[side] += weight;
                    sums[side] += weight * value;
                }
            const size_t side = weights[1] > weights[0] ? 1 : 0;
            out.at(x, y) = sums[side] / weights[side];
        }
    }
    return out;
}

/// Brings all but the outermost disparities to 0 to 255.
void toLevels(Plane* plane) {
    constexpr double kOutermost = 0.003;
    std::vector<float> sorted = plane->samples;
    const auto at = [&sorted](double share) {
        const auto place =
            sorted.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(sorted.size() - 1));
        std::nth_element(sorted.begin(), place, sorted.end());
        return *place;
    };
    const float lowest = at(kOutermost), highest = at(1 - kOutermost);
    const float scale = highest > lowest ? 255.0f / (highest - lowest) : 0.0f;
    for (float& level : plane->samples) level = std::clamp((level - lowest) * scale, 0.0f, 255.0f);
}

}  // namespace

DepthMap depthOfPair(const StereoViews& views, const std::string& name, std::vector<std::string>* remarks) {
    const Size size = {views.left.width, views.left.height};
    const double pixels = static_cast<double>(size.width) * size.height;
    const Size work = scaledTo(size, std::min(1.0, std::sqrt(kMostMatched / pixels)));
    Pair pair = {planesOf(views.left, work), planesOf(views.right, work)};
    const double shrink = std::min(1.0, static_cast<double>(kSmallSide) / std::max(work.width, work.height));
    const Size small_size = scaledTo(work, shrink);
    Pair small = {reducedTo(pair.left, small_size), reducedTo(pair.right, small_size)};

    // A pair of a camera that was held upright has its views one above the other. A slope may look as if it
    // were only turned, so what is turned far is doubtful too.
    constexpr double kClear = 0.65, kFar = 0.02, kLeast = 0.12;
    Look look = lookAt(small);
    Turn turn = 0;
    const Alignment& lies = look.alignment;
    if (look.agreeing < kClear || std::abs(lies.turn) > kFar || std::abs(lies.scale) > kFar ||
        std::abs(lies.down) > kFar) {
        Pair upright = turnedBy(small, kTransposed);
        Look other = lookAt(upright);
        if (other.agreeing > look.agreeing) {
            look = std::move(other);
            turn = kTransposed;
            small = std::move(upright);
        }
    }
    const auto different = [&name] {
        return Error(name +
                     ": its two views show different things; a stereo pair shows one scene from two places");
    };
    if (look.agreeing < kLeast) throw different();
    const double spread = quantile(look.disparities, 0.95) - quantile(look.disparities, 0.05);
    constexpr double kLeastSpread = 0.6;
    if (spread < kLeastSpread)
        throw Error(name +
                    ": its two views show the scene from one place, as a burst does, and so tell no depth");

    // First small, for the range of disparities and the order of the views.
    const auto matchSmall = [&] {
        const double margin = 4.0 + 0.3 * spread;
        const DisparityRange range = {static_cast<int>(std::floor(quantile(look.disparities, 0.01) - margin)),
                                      static_cast<int>(std::ceil(quantile(look.disparities, 0.99) + margin))};
        return matchViews(small.left.gray, aligned(small.right.gray, look.alignment), range);
    };
    Disparities first = matchSmall();
    if (areExchanged(views, small.left, first, turn)) {
        turn = followedBy(turn, kMirrored);
        small = turnedBy(small, kMirrored);
        look = lookAt(small);
        if (look.agreeing < kLeast) throw different();
        first = matchSmall();
        if (remarks != nullptr) remarks->emplace_back("the views were exchanged; taken the other way round");
    }
    const std::vector<double> sure = sureOnes(first);
    constexpr double kFewestSure = 0.2;
    if (static_cast<double>(sure.size()) < kFewestSure * static_cast<double>(first.plane.samples.size()))
        throw different();

    if (turn != 0) pair = turnedBy(pair, turn);
    // Then as large as the candidates allow.
    constexpr double kOutermost = 0.002, kMargin = 3.0;
    const double lowest = quantile(sure, kOutermost) - kMargin,
                 highest = quantile(sure, 1 - kOutermost) + kMargin;
    const double per_pixel = (highest - lowest) / small.left.gray.width;
    Size matched = {pair.left.gray.width, pair.left.gray.height};
    const double candidates =
        static_cast<double>(matched.width) * matched.height * (per_pixel * matched.width + 16);
    if (candidates > kMostCandidates) {
        matched = scaledTo(matched, std::cbrt(kMostCandidates / candidates));
        pair = {reducedTo(pair.left, matched), reducedTo(pair.right, matched)};
    }
    const double factor = static_cast<double>(matched.width) / small.left.gray.width;
    const DisparityRange range = {static_cast<int>(std::floor(lowest * factor)),
                                  static_cast<int>(std::ceil(highest * factor))};
    Disparities found = matchViews(pair.left.gray, aligned(pair.right.gray, look.alignment), range);
    refine(pair.left.colours, &found);

    // Transposing and mirroring, in this order, are taken back in the other.
    const Turn back =
        (turn & kTransposed) != 0 && (turn & ~kTransposed) != 0 ? followedBy(kMirrored, kTransposed) : turn;
    DepthMap depth;
    depth.bits = 16;
    depth.plane = turned(found.plane, back);
    if (depth.plane.width != size.width || depth.plane.height != size.height) {
        std::vector<Plane> colours;
        for (const Plane& colour : pair.left.colours) colours.push_back(turned(colour, back));
        depth.plane = enlarged(views.left, colours, depth.plane);
    }
    toLevels(&depth.plane);
    return depth;
}

}  // namespace quorvane::media
