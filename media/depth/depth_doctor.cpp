#include "media/depth/depth_doctor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <utility>

#include "media/depth/depth_holes.h"
#include "media/depth/edge_agreement.h"
#include "media/depth/polarity.h"
#include "media/picture/crop.h"
#include "media/picture/turn.h"

namespace quorvane::media {
namespace {

std::string percent(double share) {
    if (share < 0.0001) return "less than 0.01 %";
    char text[32];
    std::snprintf(text, sizeof text, share < 0.0095 ? "%.2g %%" : "%.0f %%", 100.0 * share);
    return text;
}

/// 0.5 at 0; rises to 1 with the evidence for and falls to 0 with that against.
double confidenceOf(double evidence) { return 1.0 / (1.0 + std::exp(-evidence)); }

// Pixels without a depth.

/// 0 where either of both is; an empty one is 0 nowhere.
GrayImage both(const GrayImage& a, const GrayImage& b) {
    if (a.samples.empty()) return b;
    GrayImage all = a;
    for (size_t i = 0; i < b.samples.size(); ++i) all.samples[i] &= b.samples[i];
    return all;
}

double shareOfZeros(const GrayImage& mask) {
    return mask.samples.empty()
               ? 0.0
               : static_cast<double>(std::count(mask.samples.begin(), mask.samples.end(), uint8_t{0})) /
                     static_cast<double>(mask.samples.size());
}

/// The file says itself where there is no depth; if it says so of all, that is a mistake.
void examineUnknown(DepthMap* depth, std::vector<Finding>* findings) {
    if (shareOfZeros(depth->known) == 1.0)
        findings->push_back(
            {FindingKind::kAlpha, 1.0, false, "all of it is transparent; its levels are taken as they are"});
    if (shareOfZeros(depth->known) == 1.0 || shareOfZeros(depth->known) == 0.0) depth->known = GrayImage();
}

/// How sure it is that the pixels of `extreme` hold no depth. A far plane or a near thing is large or in few
/// pieces, and often cut by the frame; what a sensor missed is in many specks. Sensors of 16 bit write 0, and
/// where there are many specks of it, larger pieces are no sky either.
double holesConfidence(const Extreme& extreme, size_t pixels, bool low, int bits) {
    const auto share = [pixels](size_t part) {
        return static_cast<double>(part) / static_cast<double>(pixels);
    };
    constexpr size_t kManyPieces = 10;
    const double largest = share(extreme.pieces.back());
    if (extreme.pieces.size() == 1 && largest > 0.05) return 0.1;
    if (low && bits == 16 && extreme.pieces.size() >= kManyPieces) return 0.95;
    if (largest > 0.05 || share(extreme.largest_at_border) > 0.01) return 0.5;
    if (low && bits == 16) return 0.95;
    const double middle = share(extreme.pieces[extreme.pieces.size() / 2]);
    if (extreme.pieces.size() >= 5 && middle < 0.0005) return 0.92;
    return extreme.pieces.size() >= 2 ? 0.5 : 0.2;
}

/// What may be holes at either end of the levels.
struct Ends {
    Extreme lowest, highest;
    double lowest_confidence = 0.0, highest_confidence = 0.0;  ///< that they are
};

Ends endsOf(const DepthMap& depth) {
    Ends ends;
    ends.lowest = findExtreme(depth.plane, depth.known, depth.bits, true);
    ends.highest = findExtreme(depth.plane, depth.known, depth.bits, false);
    const size_t pixels = depth.plane.samples.size();
    if (ends.lowest.pixels > 0)
        ends.lowest_confidence = holesConfidence(ends.lowest, pixels, true, depth.bits);
    if (ends.highest.pixels > 0)
        ends.highest_confidence = holesConfidence(ends.highest, pixels, false, depth.bits);
    return ends;
}

/// Where there is a depth for sure.
GrayImage certainlyKnown(const DepthMap& depth, const Ends& ends) {
    return both(both(depth.known, ends.lowest.others), ends.highest.others);
}

/// Fills what is certain or wished, once larger is nearer.
void examineHoles(Holes holes, const Ends& ends, bool inverted, DepthMap* depth,
                  std::vector<Finding>* findings) {
    const double alpha = shareOfZeros(depth->known);
    GrayImage known = std::move(depth->known);
    depth->known = GrayImage();
    if (holes == Holes::kKeep) return;
    if (alpha > 0.0)
        findings->push_back({FindingKind::kAlpha, 1.0, true,
                             percent(alpha) + " of it " +
                                 (depth->colour_map.empty() ? "is transparent" : "has no depth") +
                                 ", filled from the far side"});
    for (const bool low : {true, false}) {
        constexpr double kWorthSaying = 0.3;
        constexpr size_t kFewPieces = 5;
        const Extreme& extreme = low ? ends.lowest : ends.highest;
        if (extreme.pixels == 0) continue;
        double confidence = low ? ends.lowest_confidence : ends.highest_confidence;
        // Nothing is at a distance of 0. Of 8 bit, that may be the nearest thing's.
        if (low && inverted && (depth->bits == 16 || extreme.pieces.size() >= kFewPieces))
            confidence = std::max(confidence, 0.95);
        const std::string where =
            percent(static_cast<double>(extreme.pixels) / static_cast<double>(depth->plane.samples.size())) +
            " of it, at its " + (low ? "lowest" : "highest") + " level, ";
        const bool wished = holes == Holes::kFill && (low || confidence >= kWorthSaying);
        if (confidence >= kCertain || wished) {
            known = both(known, extreme.others);
            findings->push_back({FindingKind::kHoles, wished ? 1.0 : confidence, true,
                                 where + "stands for \"unknown\" and is filled from the far side"});
        } else if (confidence >= kWorthSaying) {
            Finding finding = {FindingKind::kHoles, confidence, false, where + "may stand for \"unknown\""};
            finding.filling = true;
            findings->push_back(finding);
        }
    }
    if (shareOfZeros(known) > 0.0)
        fillFromFarSide(known, &depth->plane);
    else if (holes == Holes::kFill)
        findings->push_back({FindingKind::kHoles, 1.0, false, "no level stands apart: nothing is filled"});
}

/// Whether there is anything to see in it, where `known` is not 0.
bool examineRange(const DepthMap& depth, const GrayImage& known, std::vector<Finding>* findings) {
    constexpr size_t kFewLevels = 8;
    constexpr float kNarrow = 0.02f * 255.0f;
    std::vector<float> sorted = someLevels(depth.plane, known);
    if (sorted.empty()) return false;
    // Without the hundredth at either end, which may be stray.
    const size_t stray = sorted.size() / 100;
    const float range = sorted[sorted.size() - 1 - stray] - sorted[stray];
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    // Sensors of 16 bit use what they need of it.
    const bool narrow = depth.bits == 8 ? range < kNarrow : sorted.size() == 1;
    if (sorted.size() == 1) {
        findings->push_back(
            {FindingKind::kLittleRange, 1.0, false, "all of it is one level: nothing will move"});
    } else if (narrow) {
        findings->push_back({FindingKind::kLittleRange, 1.0, false,
                             "nearly all of it lies within 2 % of the levels: little will move"});
    } else if (sorted.size() < kFewLevels) {
        findings->push_back({FindingKind::kLittleRange, 1.0, false,
                             "only " + std::to_string(sorted.size()) + " levels: flat layers will move"});
    }
    return !narrow;
}

// How it lies.

/// How much of the photo the depth map shows: the same, another shape of it, or its middle; or more than it.
enum class Cover { kStretched, kMiddle, kMore };

double aspectOf(int width, int height) { return static_cast<double>(width) / height; }

// A smaller difference is rounding; with a larger one no crop is likely.
constexpr double kRounding = 1.02;
constexpr double kUnlikely = 2.5;

bool sameAspect(double a, double b) { return std::max(a / b, b / a) < kRounding; }

/// The part of a plane that lies over a photo of another aspect.
Region partOver(const Plane& plane, double photo_aspect, Cover cover) {
    Region part = {0.0, 0.0, static_cast<double>(plane.width), static_cast<double>(plane.height)};
    if (cover == Cover::kStretched) return part;
    const bool wider = aspectOf(plane.width, plane.height) > photo_aspect;
    if (wider == (cover == Cover::kMore)) {
        part.width = plane.height * photo_aspect;
        part.left = (plane.width - part.width) / 2.0;
    } else {
        part.height = plane.width / photo_aspect;
        part.top = (plane.height - part.height) / 2.0;
    }
    return part;
}

Size wholePixels(const Region& region) {
    return {std::max(1, static_cast<int>(std::lround(region.width))),
            std::max(1, static_cast<int>(std::lround(region.height)))};
}

/// How well edges agree for each way that the depth map can lie and what it can cover; 0 where not tried.
using Scores = std::array<std::array<double, 3>, kTurns>;

Plane thumbnail(const Plane& plane, int longest) {
    const double scale = std::min(1.0, static_cast<double>(longest) / std::max(plane.width, plane.height));
    const auto scaled = [scale](int length) {
        return std::max(1, static_cast<int>(std::lround(length * scale)));
    };
    return reduced(plane, {0.0, 0.0, static_cast<double>(plane.width), static_cast<double>(plane.height)},
                   scaled(plane.width), scaled(plane.height))[0];
}

Scores scoresOf(const RgbImage& photo, const Plane& plane, bool upright_only) {
    constexpr int kGrid = 160;
    constexpr int kThumbnail = 4 * kGrid;
    const double aspect = aspectOf(photo.width, photo.height);
    const auto side = [](double length) { return std::max(1, static_cast<int>(std::lround(length))); };
    const int width = side(kGrid * std::min(1.0, aspect)), height = side(kGrid / std::max(1.0, aspect));
    const EdgeAgreement agreement(edgeField(
        reduced(photo, {0.0, 0.0, static_cast<double>(photo.width), static_cast<double>(photo.height)}, width,
                height)));

    const Plane small = thumbnail(plane, kThumbnail);
    Scores scores = {};
    for (Turn turn = 0; turn < (upright_only ? 1 : kTurns); ++turn) {
        const bool transposed = (turn & kTransposed) != 0;
        const double aspect_as_it_is = transposed ? 1.0 / aspect : aspect;
        const double own = aspectOf(plane.width, plane.height);
        const bool fits = sameAspect(own, aspect_as_it_is);
        const bool cropped = !fits && std::max(own / aspect_as_it_is, aspect_as_it_is / own) < kUnlikely;
        for (const Cover cover : {Cover::kStretched, Cover::kMiddle, Cover::kMore}) {
            if (cover != Cover::kStretched && !cropped) continue;
            const Region part = partOver(small, aspect_as_it_is, cover);
            const Plane grid =
                reduced(small, part, transposed ? height : width, transposed ? width : height)[0];
            scores[turn][static_cast<size_t>(cover)] = agreement.of(edgeField({turned(grid, turn)}));
        }
    }
    return scores;
}

/// The largest of `values`, and how sure it is: it must stand well above chance and above every other.
struct Choice {
    size_t index;
    double confidence;
};

Choice choose(const std::vector<double>& values) {
    // Chance reaches 3.6, and an object much like its mirror image comes within 2.2 of it.
    constexpr double kEvenOdds = 4.8, kEvenLead = 1.0;
    const size_t best = static_cast<size_t>(std::max_element(values.begin(), values.end()) - values.begin());
    double second = 0.0;
    for (size_t i = 0; i < values.size(); ++i)
        if (i != best) second = std::max(second, values[i]);
    return {best, confidenceOf(2.0 * std::min(values[best] - kEvenOdds, values[best] - second - kEvenLead))};
}

/// How a depth map was found to lie against its photo.
struct Placement {
    Turn turn = 0;            ///< the turn that was made
    double confidence = 1.0;  ///< that the map now lies as the photo does
    bool doubtful = false;    ///< another turn may be right
};

/// Turns the depth map where that is certain.
Placement examineTurn(const Scores& scores, double photo_aspect, DepthMap* depth,
                      std::vector<Finding>* findings) {
    constexpr double kWorthSaying = 0.2;
    std::vector<double> best_covers;
    for (const auto& covers : scores) best_covers.push_back(*std::max_element(covers.begin(), covers.end()));
    const Choice choice = choose(best_covers);
    const Turn turn = static_cast<Turn>(choice.index);
    const TurnWords& words = kTurnWords[turn];
    if (turn != 0 && choice.confidence >= kCertain) {
        depth->plane = turned(depth->plane, turn);
        depth->known = turned(depth->known, turn);
        findings->push_back({FindingKind::kTurned, choice.confidence, true,
                             std::string(words.done) + " to lie as the photo does"});
        return {turn, choice.confidence, false};
    }

    const double aspect = aspectOf(depth->plane.width, depth->plane.height);
    const bool on_its_side = !sameAspect(aspect, photo_aspect) && sameAspect(1.0 / aspect, photo_aspect);
    if (turn != 0 && choice.confidence >= kWorthSaying) {
        findings->push_back(
            {FindingKind::kTurned, choice.confidence, false, "may lie otherwise than the photo", {turn}});
    } else if (on_its_side && (turn != 0 || choice.confidence < kWorthSaying)) {
        findings->push_back({FindingKind::kTurned,
                             0.5,
                             false,
                             "lies on its side where the photo does not",
                             {kClockwise90, kClockwise270}});
    } else {
        return {0, turn == 0 ? choice.confidence : 0.0, false};
    }
    return {0, 0.0, true};
}

void examineCover(const std::array<double, 3>& scores, const RgbImage& photo, DepthMap* depth,
                  std::vector<Finding>* findings) {
    const double photo_aspect = aspectOf(photo.width, photo.height);
    const double aspect = aspectOf(depth->plane.width, depth->plane.height);
    if (sameAspect(aspect, photo_aspect)) return;
    char aspects[64];
    std::snprintf(aspects, sizeof aspects, "of aspect %.2f, the photo of %.2f: ", aspect, photo_aspect);
    const Choice choice = choose({scores.begin(), scores.end()});
    const Cover cover = static_cast<Cover>(choice.index);
    if (choice.confidence < kCertain) {
        findings->push_back(
            {FindingKind::kOtherAspect, choice.confidence, false,
             std::string(aspects) + "stretched over it; crop both alike if they show different parts"});
        return;
    }
    std::string what = "shows the same, stretched over it";
    if (cover == Cover::kMiddle) what = "shows its middle, its borders go on beyond";
    if (cover == Cover::kMore) what = "shows more, cut to the photo's part";
    if (cover != Cover::kStretched) {
        const Size size = wholePixels(partOver(depth->plane, photo_aspect, cover));
        depth->plane = crop(depth->plane, size);
        if (!depth->known.samples.empty()) depth->known = crop(depth->known, size);
    }
    findings->push_back({FindingKind::kOtherAspect, choice.confidence, true, aspects + what});
}

// Which end is near.

void exchangeEnds(Plane* plane) {
    for (float& level : plane->samples) level = 255.0f - level;
}

/// 1 / distance, on the scale of 0 to 255. Where `known` is 0 there is no distance, as near as can be.
void takeInverse(const GrayImage& known, Plane* distances) {
    const std::vector<float>& levels = distances->samples;
    float lowest = 255.0f;
    for (size_t i = 0; i < levels.size(); ++i)
        if (known.samples.empty() || known.samples[i] != 0) lowest = std::min(lowest, levels[i]);
    for (float& level : distances->samples) level = level > lowest ? 255.0f * lowest / level : 255.0f;
}

/// Takes the likelier way. `upright` is how sure it is that the depth map lies as the photo, and with that
/// where below is.
Polarity examinePolarity(const RgbImage& photo, const GrayImage& known, const PolarityClues& clues,
                         double upright, DepthMap* depth, std::vector<Finding>* findings) {
    const double farther = confidenceLargerIsFarther(photo, depth->plane, known, clues);
    Polarity polarity;
    polarity.larger_is_nearer = farther <= kLooksFarther;
    polarity.confidence = polarity.larger_is_nearer ? 1.0 - farther : farther;
    polarity.inverted = !polarity.larger_is_nearer;
    const bool distances = polarity.inverted && polarity.confidence >= kCertain && depth->bits == 16 &&
                           looksMeasured(depth->plane, known);
    // A map that lies otherwise has its ground elsewhere.
    if (upright < 0.5) polarity.confidence = 0.5 + 0.75 * (polarity.confidence - 0.5);
    polarity.doubtful = polarity.confidence < kCertain;
    if (distances)
        takeInverse(known, &depth->plane);
    else if (polarity.inverted)
        exchangeEnds(&depth->plane);
    if (polarity.doubtful || polarity.inverted) {
        Finding finding = {FindingKind::kPolarity, polarity.confidence, polarity.inverted, ""};
        if (!polarity.doubtful)
            finding.text = "inverted: its larger levels were the farther ones";
        else if (polarity.inverted)
            finding.text = "inverted, though not certain: its larger levels seem to be the farther ones";
        else if (farther > 1.0 - kLooksFarther)
            finding.text = "nothing shows which end is near: its larger levels are taken for the nearer ones";
        else
            finding.text = "not certain which end is near: its larger levels seem to be the nearer ones";
        if (distances) finding.text += "; taken as 1 / distance";
        if (polarity.doubtful) finding.inverting = !polarity.inverted;
        findings->push_back(finding);
    }
    return polarity;
}

}  // namespace

bool Finding::doubtful() const {
    return !corrected || confidence < kCertain || !turns.empty() || inverting || filling;
}

std::vector<Finding> examine(const RgbImage& photo, const DepthKnowledge& known, DepthMap* depth,
                             Polarity* polarity) {
    std::vector<Finding> findings;
    if (!depth->colour_map.empty())
        findings.push_back({FindingKind::kColourMapped, 1.0, true,
                            "in colours, read back through the colour map " + depth->colour_map});
    examineUnknown(depth, &findings);
    Ends ends = endsOf(*depth);
    Polarity found;
    found.larger_is_nearer = known.larger_is_nearer.value_or(true);
    found.inverted = !found.larger_is_nearer;
    if (!examineRange(*depth, certainlyKnown(*depth, ends), &findings)) {
        if (!known.larger_is_nearer) {
            found.confidence = 0.5;
            found.doubtful = true;
        }
        if (found.inverted) exchangeEnds(&depth->plane);
        depth->known = GrayImage();
        if (polarity != nullptr) *polarity = found;
        return findings;
    }

    // Holes have edges of their own.
    GrayImage likely = depth->known;
    if (ends.lowest_confidence >= kCertain) likely = both(likely, ends.lowest.others);
    if (ends.highest_confidence >= kCertain) likely = both(likely, ends.highest.others);
    Plane whole = depth->plane;
    if (shareOfZeros(likely) > 0.0) fillFromNeighbours(std::move(likely), &whole);
    const Scores scores = scoresOf(photo, whole, known.orientation);
    Placement placement;
    if (!known.orientation)
        placement = examineTurn(scores, aspectOf(photo.width, photo.height), depth, &findings);
    // What it covers shows once it lies right.
    if (!placement.doubtful) examineCover(scores[placement.turn], photo, depth, &findings);
    if (depth->plane.width != whole.width || depth->plane.height != whole.height || placement.turn != 0)
        ends = endsOf(*depth);
    if (known.larger_is_nearer) {
        if (found.inverted) exchangeEnds(&depth->plane);
    } else {
        found = examinePolarity(photo, certainlyKnown(*depth, ends),
                                {depth->bits, known.name, !placement.doubtful}, placement.confidence, depth,
                                &findings);
    }
    examineHoles(known.holes, ends, found.inverted, depth, &findings);
    if (polarity != nullptr) *polarity = found;
    return findings;
}

bool spreadLevels(DepthMap* depth) {
    constexpr size_t kOneIn = 10000, kMostStray = 100;
    constexpr float kLeastRange = 0.02f * 255.0f, kApart = 0.05f;
    std::vector<float>& levels = depth->plane.samples;
    const size_t stray = std::min(kMostStray, levels.size() / kOneIn);
    std::vector<float> sorted = levels;
    const auto at = [&sorted](size_t place) {
        std::nth_element(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(place), sorted.end());
        return sorted[place];
    };
    const auto [least, most] = std::minmax_element(levels.begin(), levels.end());
    float lowest = *least, highest = *most;
    const float low = at(stray), high = at(levels.size() - 1 - stray), inner = high - low;
    if (low - lowest > kApart * inner) lowest = low;
    if (highest - high > kApart * inner) highest = high;
    const float range = highest - lowest;
    if (!(range > 0.0f) || (depth->bits == 8 && range < kLeastRange)) return false;
    for (float& level : levels) level = std::clamp((level - lowest) * 255.0f / range, 0.0f, 255.0f);
    return true;
}

}  // namespace quorvane::media
