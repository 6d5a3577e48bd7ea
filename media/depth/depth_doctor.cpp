#include "media/depth/depth_doctor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <optional>
#include <utility>

#include "media/depth/depth_holes.h"
#include "media/depth/edge_agreement.h"
#include "media/depth/polarity.h"
#include "media/picture/resample.h"
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

// What the depth map says by itself.

/// 16-bit samples are spread over the range they use, and unknown ones do not use it.
void spreadAgain(DepthMap* depth) {
    if (depth->bits == 16) spread(&depth->plane);
}

void examineUnknown(DepthMap* depth, std::vector<Finding>* findings) {
    if (depth->known.samples.empty()) return;
    const std::vector<uint8_t>& known = depth->known.samples;
    const auto unknown = std::count(known.begin(), known.end(), uint8_t{0});
    const bool all = static_cast<size_t>(unknown) == known.size();
    if (all) {
        findings->push_back(
            {FindingKind::kAlpha, 1.0, false, "all of it is transparent; its levels are taken as they are"});
    } else if (unknown > 0) {
        fillFromNeighbours(std::move(depth->known), &depth->plane);
        spreadAgain(depth);
        const double share = static_cast<double>(unknown) / static_cast<double>(depth->plane.samples.size());
        findings->push_back({FindingKind::kAlpha, 1.0, true,
                             percent(share) + " of it " +
                                 (depth->colour_map.empty() ? "is transparent" : "has no depth") +
                                 ", filled from the neighbours"});
    }
    depth->known = GrayImage();
}

/// How sure it is that the pixels of `extreme` hold no depth. A far plane or a near thing is large or in few
/// pieces, and often cut by the frame; what a sensor missed is in many specks. Sensors of 16 bit write 0.
double holesConfidence(const Extreme& extreme, size_t pixels, bool low, int bits) {
    const auto share = [pixels](size_t part) {
        return static_cast<double>(part) / static_cast<double>(pixels);
    };
    const double largest = share(extreme.pieces.back());
    if (extreme.pieces.size() == 1 && largest > 0.05) return 0.1;
    if (largest > 0.05 || share(extreme.largest_at_border) > 0.01) return 0.5;
    if (low && bits == 16) return 0.95;
    const double middle = share(extreme.pieces[extreme.pieces.size() / 2]);
    if (extreme.pieces.size() >= 5 && middle < 0.0005) return 0.92;
    return extreme.pieces.size() >= 2 ? 0.5 : 0.2;
}

std::string holesIn(const DepthMap& depth, const Extreme& extreme, bool low) {
    return percent(static_cast<double>(extreme.pixels) / static_cast<double>(depth.plane.samples.size())) +
           " of it, at its " + (low ? "lowest" : "highest") + " level, ";
}

/// Says that they are filled in place of what was said of them before.
void fillHoles(Extreme extreme, bool low, double confidence, DepthMap* depth,
               std::vector<Finding>* findings) {
    const Finding filled = {
        FindingKind::kHoles, confidence, true,
        holesIn(*depth, extreme, low) + "stands for \"unknown\" and is filled from the neighbours"};
    const auto before = std::find_if(findings->begin(), findings->end(), [](const Finding& finding) {
        return finding.kind == FindingKind::kHoles && !finding.corrected;
    });
    fillFromNeighbours(std::move(extreme.others), &depth->plane);
    spreadAgain(depth);
    if (before != findings->end())
        *before = filled;
    else
        findings->push_back(filled);
}

void examineHoles(DepthMap* depth, std::vector<Finding>* findings) {
    for (const bool low : {true, false}) {
        Extreme extreme = findExtreme(depth->plane, low);
        if (extreme.pixels == 0) continue;
        const double confidence = holesConfidence(extreme, depth->plane.samples.size(), low, depth->bits);
        if (confidence >= kCertain)
            fillHoles(std::move(extreme), low, confidence, depth, findings);
        else if (confidence >= 0.3)
            findings->push_back({FindingKind::kHoles, confidence, false,
                                 holesIn(*depth, extreme, low) +
                                     "may stand for \"unknown\"; make it transparent to have it filled"});
    }
}

/// Whether there is anything to see in it.
bool examineRange(const DepthMap& depth, std::vector<Finding>* findings) {
    constexpr size_t kFewLevels = 8;
    constexpr float kNarrow = 0.02f * 255.0f;
    std::vector<float> levels;
    for (const float level : depth.plane.samples) {
        if (std::find(levels.begin(), levels.end(), level) != levels.end()) continue;
        levels.push_back(level);
        if (levels.size() == kFewLevels) break;
    }
    // Without the hundredth at either end, which may be stray.
    constexpr float kStepsALevel = 16.0f;
    std::vector<size_t> histogram(256 * static_cast<size_t>(kStepsALevel));
    for (const float level : depth.plane.samples) ++histogram[static_cast<size_t>(level * kStepsALevel)];
    const size_t stray = depth.plane.samples.size() / 100;
    const auto beyondStray = [stray](auto bin) {
        for (size_t passed = *bin; passed <= stray; passed += *bin) ++bin;
        return bin;
    };
    const auto lowest = beyondStray(histogram.begin());
    const auto highest = beyondStray(histogram.rbegin()).base() - 1;
    const bool narrow = static_cast<float>(highest - lowest) < kNarrow * kStepsALevel;
    if (levels.size() == 1) {
        findings->push_back(
            {FindingKind::kLittleRange, 1.0, false, "all of it is one level: nothing will move"});
    } else if (narrow) {
        findings->push_back({FindingKind::kLittleRange, 1.0, false,
                             "nearly all of it lies within 2 % of the levels: little will move"});
    } else if (levels.size() < kFewLevels) {
        findings->push_back({FindingKind::kLittleRange, 1.0, false,
                             "only " + std::to_string(levels.size()) + " levels: flat layers will move"});
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
    if (cover != Cover::kStretched)
        depth->plane = crop(depth->plane, wholePixels(partOver(depth->plane, photo_aspect, cover)));
    findings->push_back({FindingKind::kOtherAspect, choice.confidence, true, aspects + what});
}

// Which end is near.

/// `upright` is how sure it is that the depth map lies as the photo: where below is. What may be holes is not
/// asked; once larger is farther, a level of 0 is no distance, and is filled.
void examinePolarity(const RgbImage& photo, double upright, DepthMap* depth, std::vector<Finding>* findings) {
    Extreme lowest = findExtreme(depth->plane, true);
    const Extreme highest = findExtreme(depth->plane, false);
    GrayImage known = lowest.pixels > 0 ? lowest.others : highest.others;
    if (lowest.pixels > 0 && highest.pixels > 0)
        for (size_t i = 0; i < known.samples.size(); ++i) known.samples[i] &= highest.others.samples[i];
    const double inverted = confidenceLargerIsFarther(photo, depth->plane, known);
    if (inverted >= kCertain && upright >= 0.5) {
        if (lowest.pixels > 0 && depth->bits == 16)
            fillHoles(std::move(lowest), true, kCertain, depth, findings);
        for (float& level : depth->plane.samples) level = 255.0f - level;
        findings->push_back(
            {FindingKind::kPolarity, inverted, true, "inverted: its larger levels were the farther ones"});
    } else if (inverted > 1.0 - kCertain) {
        findings->push_back({FindingKind::kPolarity,
                             inverted,
                             false,
                             inverted >= 0.6 ? "its larger levels may be the farther ones"
                                             : "nothing shows whether its bright or its dark levels are near",
                             {},
                             true});
    }
}

}  // namespace

std::vector<Finding> examine(const RgbImage& photo, const DepthKnowledge& known, DepthMap* depth) {
    std::vector<Finding> findings;
    if (!depth->colour_map.empty())
        findings.push_back({FindingKind::kColourMapped, 1.0, true,
                            "in colours, read back through the colour map " + depth->colour_map});
    examineUnknown(depth, &findings);
    examineHoles(depth, &findings);
    if (!examineRange(*depth, &findings)) return findings;

    const Scores scores = scoresOf(photo, depth->plane, known.orientation);
    Placement placement;
    if (!known.orientation)
        placement = examineTurn(scores, aspectOf(photo.width, photo.height), depth, &findings);
    // What it covers and which end is near shows once it lies right.
    if (placement.doubtful) return findings;
    examineCover(scores[placement.turn], photo, depth, &findings);
    if (!known.polarity) examinePolarity(photo, placement.confidence, depth, &findings);
    return findings;
}

}  // namespace quorvane::media
