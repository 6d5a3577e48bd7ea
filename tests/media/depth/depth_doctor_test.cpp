#include "media/depth/depth_doctor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"

namespace quorvane::media {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Plane = Image<float, 1>;

Plane planeOf(const GrayImage& levels) {
    Plane plane(levels.width, levels.height);
    std::copy(levels.samples.begin(), levels.samples.end(), plane.samples.begin());
    return plane;
}

DepthMap mapOf(Plane plane, int bits = 8) {
    DepthMap depth;
    depth.bits = bits;
    depth.plane = std::move(plane);
    return depth;
}

float& at(Plane& plane, int x, int y) {
    return plane.samples[static_cast<size_t>(y) * static_cast<size_t>(plane.width) + static_cast<size_t>(x)];
}

/// A quarter turn clockwise.
Plane quarterTurned(Plane plane) {
    Plane out(plane.height, plane.width);
    for (int y = 0; y < plane.height; ++y)
        for (int x = 0; x < plane.width; ++x) at(out, plane.height - 1 - y, x) = at(plane, x, y);
    return out;
}

Plane mirrored(Plane plane) {
    const auto width = static_cast<std::ptrdiff_t>(plane.width);
    for (auto row = plane.samples.begin(); row != plane.samples.end(); row += width)
        std::reverse(row, row + width);
    return plane;
}

/// The way `how`: mirrored from 4 on, then turned clockwise by how % 4 quarters.
Plane laid(Plane plane, int how) {
    if (how >= 4) plane = mirrored(std::move(plane));
    for (int i = 0; i < how % 4; ++i) plane = quarterTurned(std::move(plane));
    return plane;
}

Plane inverted(Plane plane) {
    for (float& level : plane.samples) level = 255.0f - level;
    return plane;
}

template <typename Picture>
Picture middle(const Picture& image, int width, int height) {
    Picture out(width, height);
    const size_t channels = image.samples.size() / static_cast<size_t>(image.width * image.height);
    const size_t left = static_cast<size_t>((image.width - width) / 2);
    const size_t top = static_cast<size_t>((image.height - height) / 2);
    const size_t row = static_cast<size_t>(width) * channels;
    for (size_t y = 0; y < static_cast<size_t>(height); ++y)
        std::copy_n(&image.samples[((top + y) * static_cast<size_t>(image.width) + left) * channels], row,
                    &out.samples[y * row]);
    return out;
}

Plane stretched(Plane plane, int width, int height) {
    Plane out(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            at(out, x, y) = at(plane, x * plane.width / width, y * plane.height / height);
    return out;
}

/// A photo and its depth map as it should be: upright, larger = nearer.
struct Pair {
    std::string name;
    RgbImage photo;
    DepthMap depth;
};

Pair scene(int width, int height) {
    const SampleScene sample = makeSampleScene(width, height);
    return {"scene " + std::to_string(width) + " x " + std::to_string(height), sample.photo,
            mapOf(planeOf(sample.depth))};
}

std::vector<FindingKind> kindsOf(const std::vector<Finding>& findings) {
    std::vector<FindingKind> found;
    found.reserve(findings.size());
    for (const Finding& finding : findings) found.push_back(finding.kind);
    return found;
}

const Finding* find(const std::vector<Finding>& findings, FindingKind kind) {
    for (const Finding& finding : findings)
        if (finding.kind == kind) return &finding;
    return nullptr;
}

std::string textsOf(const std::vector<Finding>& findings) {
    std::string texts;
    for (const Finding& finding : findings) {
        char confidence[16];
        std::snprintf(confidence, sizeof confidence, " (%.2f)", finding.confidence);
        texts += (texts.empty() ? "" : "; ") + finding.text + confidence;
    }
    return texts.empty() ? "nothing" : texts;
}

/// What became of a depth map that was made unlike its photo.
enum class Outcome { kRight, kDoubtful, kWrong };

struct Examined {
    Outcome outcome;
    std::vector<Finding> findings;
    Plane plane;
};

/// Whether `plane` is 1 / distance, for levels that are distances: the same everywhere times these.
bool isInverseOf(const Plane& distances, const Plane& plane) {
    if (plane.width != distances.width || plane.height != distances.height) return false;
    const size_t nearest = static_cast<size_t>(
        std::min_element(distances.samples.begin(), distances.samples.end()) - distances.samples.begin());
    const double scale = static_cast<double>(distances.samples[nearest]) * plane.samples[nearest];
    for (size_t i = 0; i < plane.samples.size(); ++i)
        if (std::abs(scale / distances.samples[i] - plane.samples[i]) > 0.01) return false;
    return true;
}

/// Wrong is a correction that leaves the map unlike `wanted`, or no word where it is.
Examined examined(const RgbImage& photo, DepthMap depth, const Plane& wanted, FindingKind kind,
                  const DepthKnowledge& known = {}) {
    Examined result;
    result.findings = examine(photo, known, &depth);
    const Finding* finding = find(result.findings, kind);
    const bool is_wanted =
        depth.plane.width == wanted.width && depth.plane.height == wanted.height &&
        std::equal(wanted.samples.begin(), wanted.samples.end(), depth.plane.samples.begin(),
                   [](float a, float b) { return std::abs(a - b) < 0.01f; });
    if (finding != nullptr && finding->doubtful())
        result.outcome = Outcome::kDoubtful;
    else
        result.outcome = is_wanted ? Outcome::kRight : Outcome::kWrong;
    result.plane = std::move(depth.plane);
    return result;
}

struct Tally {
    int right = 0, doubtful = 0, wrong = 0;
    void add(Outcome outcome) {
        (outcome == Outcome::kRight ? right : outcome == Outcome::kDoubtful ? doubtful : wrong)++;
    }
    std::string text() const {
        std::string all;
        for (const auto& [count, word] :
             {std::pair{right, " right"}, std::pair{doubtful, " doubtful"}, std::pair{wrong, " WRONG"}})
            if (count > 0) all += (all.empty() ? "" : ", ") + std::to_string(count) + word;
        return all;
    }
};

struct Report {
    Tally turns, inversions, aspects;
    std::vector<std::string> wrong;
};

/// Lays, inverts, stretches and crops a good pair in every way, and counts what becomes of it.
Report tried(const Pair& pair) {
    Report report;
    const auto note = [&](Tally* tally, const std::string& what, const Examined& result) {
        tally->add(result.outcome);
        if (result.outcome == Outcome::kWrong)
            report.wrong.push_back(pair.name + ", " + what + ": " + textsOf(result.findings));
    };
    const Plane& plane = pair.depth.plane;
    DepthKnowledge known;
    known.larger_is_nearer = true;
    for (int how = 0; how < 8; ++how) {
        DepthMap depth = pair.depth;
        depth.plane = laid(plane, how);
        note(&report.turns, "way " + std::to_string(how),
             examined(pair.photo, depth, plane, FindingKind::kTurned, known));
        for (const bool invert : {false, true}) {
            depth.plane = laid(invert ? inverted(plane) : plane, how);
            Examined both = examined(pair.photo, depth, plane, FindingKind::kPolarity);
            // Which millimetres are.
            if (both.outcome == Outcome::kWrong && invert && isInverseOf(inverted(plane), both.plane))
                both.outcome = Outcome::kRight;
            // Which end is near is not asked of a map that may lie otherwise.
            const Finding* turn = find(both.findings, FindingKind::kTurned);
            if (turn != nullptr && !turn->corrected) both.outcome = Outcome::kDoubtful;
            note(&report.inversions, (invert ? "inverted, way " : "way ") + std::to_string(how), both);
        }
    }

    for (const double change : {0.7, 0.8, 0.9}) {
        // Even differences, so that middles lie on whole pixels.
        const auto shorter = [change](int length) {
            return length - 2 * static_cast<int>(std::lround(length * (1.0 - change) / 2.0));
        };
        const int w = plane.width, h = plane.height;
        const std::string by = " " + std::to_string(change);
        for (const bool across : {true, false}) {
            const int part_w = across ? shorter(w) : w, part_h = across ? h : shorter(h);
            DepthMap depth = pair.depth;
            depth.plane = stretched(plane, part_w, part_h);
            note(&report.aspects, "stretched" + by,
                 examined(pair.photo, depth, depth.plane, FindingKind::kOtherAspect, known));

            depth.plane = middle(plane, part_w, part_h);
            Examined cropped = examined(pair.photo, depth, depth.plane, FindingKind::kOtherAspect, known);
            if (cropped.outcome == Outcome::kWrong && std::abs(cropped.plane.width - w) <= 1 &&
                std::abs(cropped.plane.height - h) <= 1 &&
                middle(cropped.plane, part_w - 2, part_h - 2).samples ==
                    middle(depth.plane, part_w - 2, part_h - 2).samples)
                cropped.outcome = Outcome::kRight;
            note(&report.aspects, "cropped" + by, cropped);

            const RgbImage photo = middle(pair.photo, across ? shorter(pair.photo.width) : pair.photo.width,
                                          across ? pair.photo.height : shorter(pair.photo.height));
            depth.plane = plane;
            Examined whole = examined(photo, depth, plane, FindingKind::kOtherAspect, known);
            if (whole.findings.empty()) whole.outcome = Outcome::kWrong;
            if (const Finding* finding = find(whole.findings, FindingKind::kOtherAspect);
                finding != nullptr && finding->corrected)
                whole.outcome =
                    std::abs(whole.plane.width - part_w) <= 1 && std::abs(whole.plane.height - part_h) <= 1
                        ? Outcome::kRight
                        : Outcome::kWrong;
            note(&report.aspects, "photo cropped" + by, whole);
        }
    }
    return report;
}

TEST(DepthDoctor, SaysNothingOfAPairThatSuits) {
    for (const auto& [width, height] :
         {std::pair{64, 64}, {160, 120}, {400, 300}, {300, 400}, {1600, 900}, {600, 250}}) {
        Pair pair = scene(width, height);
        SCOPED_TRACE(pair.name);
        const std::vector<float> before = pair.depth.plane.samples;
        EXPECT_EQ(textsOf(examine(pair.photo, {}, &pair.depth)), "nothing");
        EXPECT_EQ(pair.depth.plane.samples, before);
    }
}

TEST(DepthDoctor, TurnsMapsThatLieOtherwiseAndNamesWhatItDid) {
    const Pair pair = scene(300, 200);
    const std::vector<const char*> done = {"turned clockwise by 270 degrees",
                                           "turned by 180 degrees",
                                           "turned clockwise by 90 degrees",
                                           "mirrored left to right",
                                           "transposed across the other diagonal",
                                           "mirrored top to bottom",
                                           "transposed"};
    for (int how = 1; how < 8; ++how) {
        SCOPED_TRACE(how);
        DepthMap depth = pair.depth;
        depth.plane = laid(depth.plane, how);
        const Examined result = examined(pair.photo, depth, pair.depth.plane, FindingKind::kTurned);
        EXPECT_EQ(result.outcome, Outcome::kRight);
        ASSERT_THAT(kindsOf(result.findings), ElementsAre(FindingKind::kTurned)) << textsOf(result.findings);
        EXPECT_EQ(result.findings[0].text,
                  std::string(done[static_cast<size_t>(how - 1)]) + " to lie as the photo does");
        EXPECT_GE(result.findings[0].confidence, kCertain);
    }
}

TEST(DepthDoctor, TurnsSquareMapsAndSmallOnes) {
    const Pair pair = scene(256, 256);
    Plane small = stretched(pair.depth.plane, 128, 128);
    for (int how = 0; how < 8; ++how) {
        SCOPED_TRACE(how);
        const DepthMap depth = mapOf(laid(small, how));
        EXPECT_EQ(examined(pair.photo, depth, small, FindingKind::kTurned).outcome, Outcome::kRight);
    }
}

TEST(DepthDoctor, KnownOrientationIsNotDoubted) {
    const Pair pair = scene(300, 200);
    DepthMap depth = pair.depth;
    depth.plane = laid(depth.plane, 2);
    const std::vector<float> before = depth.plane.samples;
    EXPECT_THAT(examine(pair.photo, {true, true}, &depth), IsEmpty());
    EXPECT_EQ(depth.plane.samples, before);
}

TEST(DepthDoctor, InvertsMapsWhoseLargerLevelsAreFarther) {
    const Pair pair = scene(300, 200);
    DepthMap depth = pair.depth;
    depth.plane = inverted(depth.plane);
    const Examined result = examined(pair.photo, depth, pair.depth.plane, FindingKind::kPolarity);
    EXPECT_EQ(result.outcome, Outcome::kRight);
    ASSERT_THAT(kindsOf(result.findings), ElementsAre(FindingKind::kPolarity)) << textsOf(result.findings);
    EXPECT_EQ(result.findings[0].text, "inverted: its larger levels were the farther ones");
}

TEST(DepthDoctor, KnownPolarityIsNotDoubted) {
    const Pair pair = scene(300, 200);
    DepthMap depth = pair.depth;
    depth.plane = inverted(depth.plane);
    DepthKnowledge known;
    known.larger_is_nearer = true;
    EXPECT_EQ(textsOf(examine(pair.photo, known, &depth)), "nothing");
    EXPECT_EQ(depth.plane.samples, inverted(pair.depth.plane).samples);
}

TEST(DepthDoctor, EveryWayAtOnceIsPutRight) {
    for (const auto& [width, height] : {std::pair{240, 320}, {320, 180}}) {
        const Report report = tried(scene(width, height));
        EXPECT_THAT(report.wrong, IsEmpty());
        EXPECT_EQ(report.turns.right, 8);
        EXPECT_EQ(report.inversions.right, 16);
        EXPECT_GE(report.aspects.right, 14);
    }
}

TEST(DepthDoctor, LevelsBetweenBytesSurvive) {
    const Pair pair = scene(300, 200);
    Plane fine = pair.depth.plane;
    for (size_t i = 0; i < fine.samples.size(); ++i) fine.samples[i] += static_cast<float>(i % 97) / 128.0f;
    const DepthMap depth = mapOf(inverted(laid(fine, 3)), 16);
    EXPECT_EQ(examined(pair.photo, depth, fine, FindingKind::kTurned).outcome, Outcome::kRight);
}

TEST(DepthDoctor, AspectWithinTwoPercentIsRounding) {
    const Pair pair = scene(400, 300);
    DepthMap depth = mapOf(stretched(pair.depth.plane, 203, 150));
    EXPECT_EQ(textsOf(examine(pair.photo, {}, &depth)), "nothing");
}

TEST(DepthDoctor, MapOfThePhotosMiddleIsWidenedByItsBorders) {
    const Pair pair = scene(400, 300);
    DepthMap depth = mapOf(middle(pair.depth.plane, 300, 300));
    const std::vector<Finding> findings = examine(pair.photo, {}, &depth);
    ASSERT_THAT(kindsOf(findings), ElementsAre(FindingKind::kOtherAspect)) << textsOf(findings);
    EXPECT_TRUE(findings[0].corrected);
    EXPECT_EQ(findings[0].text,
              "of aspect 1.00, the photo of 1.33: shows its middle, its borders go on beyond");
    ASSERT_EQ(depth.plane.width, 400);
    ASSERT_EQ(depth.plane.height, 300);
    Plane whole = pair.depth.plane;
    for (int y = 0; y < 300; y += 20) {
        EXPECT_EQ(at(depth.plane, 49, y), at(whole, 50, y));
        EXPECT_EQ(at(depth.plane, 0, y), at(whole, 50, y));
        EXPECT_EQ(at(depth.plane, 200, y), at(whole, 200, y));
        EXPECT_EQ(at(depth.plane, 399, y), at(whole, 349, y));
    }
}

TEST(DepthDoctor, MapOfMoreThanThePhotoIsCut) {
    const Pair pair = scene(400, 300);
    DepthMap depth = pair.depth;
    const std::vector<Finding> findings = examine(middle(pair.photo, 400, 226), {}, &depth);
    ASSERT_THAT(kindsOf(findings), ElementsAre(FindingKind::kOtherAspect)) << textsOf(findings);
    EXPECT_EQ(findings[0].text, "of aspect 1.33, the photo of 1.77: shows more, cut to the photo's part");
    EXPECT_EQ(depth.plane.samples, middle(pair.depth.plane, 400, 226).samples);
}

TEST(DepthDoctor, StretchedMapIsNamedAndLeftAsItIs) {
    const Pair pair = scene(400, 300);
    DepthMap depth = mapOf(stretched(pair.depth.plane, 300, 300));
    const std::vector<float> before = depth.plane.samples;
    const std::vector<Finding> findings = examine(pair.photo, {}, &depth);
    ASSERT_THAT(kindsOf(findings), ElementsAre(FindingKind::kOtherAspect)) << textsOf(findings);
    EXPECT_EQ(findings[0].text, "of aspect 1.00, the photo of 1.33: shows the same, stretched over it");
    EXPECT_EQ(depth.plane.samples, before);
}

TEST(DepthDoctor, KnownOrientationStillHasItsAspectExamined) {
    const Pair pair = scene(400, 300);
    DepthMap depth = mapOf(middle(pair.depth.plane, 300, 300));
    EXPECT_THAT(kindsOf(examine(pair.photo, {true, true}, &depth)), ElementsAre(FindingKind::kOtherAspect));
    EXPECT_EQ(depth.plane.width, 400);
}

TEST(DepthDoctor, MapOfSomethingElseIsLeftAlone) {
    // The lake's photo with depths that were never there: heaps, as a wave over the plane.
    const Pair pair = scene(300, 200);
    for (const auto& [width, height] : {std::pair{300, 200}, {200, 300}, {300, 300}}) {
        SCOPED_TRACE(width);
        DepthMap depth = mapOf(Plane(width, height));
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                at(depth.plane, x, y) = 127.0f + 60.0f * std::sin(static_cast<float>(x * x) * 0.0011f +
                                                                  static_cast<float>(y) * 0.13f);
        const std::vector<float> before = depth.plane.samples;
        const std::vector<Finding> findings = examine(pair.photo, {}, &depth);
        EXPECT_EQ(depth.plane.samples, before) << textsOf(findings);
        for (const Finding& finding : findings) EXPECT_FALSE(finding.corrected);
        // At least its sides say that something is wrong.
        if (width < height) {
            const Finding* finding = find(findings, FindingKind::kTurned);
            ASSERT_NE(finding, nullptr);
            EXPECT_THAT(finding->turns, testing::Not(testing::IsEmpty()));
        }
    }
}

TEST(DepthDoctor, LayoutThatSaysNothingIsDoubtful) {
    // Upright stripes: no end of them is below.
    RgbImage photo(320, 240);
    DepthMap depth = mapOf(Plane(320, 240));
    for (int y = 0; y < 240; ++y)
        for (int x = 0; x < 320; ++x) {
            const int stripe = x / 20 * 7 % 16;
            at(depth.plane, x, y) = static_cast<float>(10 + 15 * stripe);
            for (size_t c = 0; c < 3; ++c)
                photo.samples[static_cast<size_t>(y * 320 + x) * 3 + c] =
                    static_cast<uint8_t>(stripe * 5 % 16 * 16);
        }
    const std::vector<float> before = depth.plane.samples;
    const std::vector<Finding> findings = examine(photo, {}, &depth);
    const Finding* finding = find(findings, FindingKind::kPolarity);
    ASSERT_NE(finding, nullptr);
    const bool inverted_it = depth.plane.samples != before;
    EXPECT_EQ(finding->corrected, inverted_it);
    ASSERT_TRUE(finding->inverting.has_value());
    EXPECT_NE(*finding->inverting, inverted_it);
}

/// The lowest and the highest level within 2 pixels of a rectangle's outside.
std::pair<float, float> around(Plane& plane, int left, int top, int width, int height) {
    float lowest = 255.0f, highest = 0.0f;
    for (int y = top - 2; y < top + height + 2; ++y)
        for (int x = left - 2; x < left + width + 2; ++x) {
            if (x >= left && x < left + width && y >= top && y < top + height) continue;
            lowest = std::min(lowest, at(plane, x, y));
            highest = std::max(highest, at(plane, x, y));
        }
    return {lowest, highest};
}

TEST(DepthDoctor, TransparentPixelsAreFilledFromTheirNeighbours) {
    const Pair pair = scene(300, 200);
    DepthMap depth = pair.depth;
    depth.known = GrayImage(300, 200);
    std::fill(depth.known.samples.begin(), depth.known.samples.end(), uint8_t{255});
    Plane whole = pair.depth.plane;
    for (int y = 180; y < 195; ++y)
        for (int x = 100; x < 120; ++x) {
            at(depth.plane, x, y) = 0.0f;
            depth.known.samples[static_cast<size_t>(y) * 300 + static_cast<size_t>(x)] = 0;
        }
    const std::vector<Finding> findings = examine(pair.photo, {}, &depth);
    ASSERT_THAT(kindsOf(findings), ElementsAre(FindingKind::kAlpha)) << textsOf(findings);
    EXPECT_EQ(findings[0].text, "0.5 % of it is transparent, filled from the far side");
    EXPECT_TRUE(findings[0].corrected);
    EXPECT_TRUE(depth.known.samples.empty());
    const auto [lowest, highest] = around(whole, 100, 180, 20, 15);
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 300; ++x) {
            if (x < 100 || x >= 120 || y < 180 || y >= 195) {
                EXPECT_EQ(at(depth.plane, x, y), at(whole, x, y));
            } else {
                EXPECT_GE(at(depth.plane, x, y), lowest);
                EXPECT_LE(at(depth.plane, x, y), highest);
            }
        }
}

TEST(DepthDoctor, FilledHolesAreSmooth) {
    // A hole of 40 x 30 in a slope of a level a column.
    const Pair pair = scene(200, 150);
    DepthMap depth = mapOf(Plane(200, 150));
    depth.known = GrayImage(200, 150);
    for (int y = 0; y < 150; ++y)
        for (int x = 0; x < 200; ++x) {
            const bool hole = x >= 80 && x < 120 && y >= 60 && y < 90;
            at(depth.plane, x, y) = hole ? 0.0f : static_cast<float>(x);
            depth.known.samples[static_cast<size_t>(y) * 200 + static_cast<size_t>(x)] = hole ? 0 : 255;
        }
    examine(pair.photo, {true, true}, &depth);
    for (int y = 60; y < 90; ++y)
        for (int x = 79; x < 120; ++x) {
            EXPECT_NEAR(at(depth.plane, x, y), static_cast<float>(x), 15.0f);
            EXPECT_NEAR(at(depth.plane, x, y), at(depth.plane, x + 1, y), 8.0f) << x << ", " << y;
        }
}

TEST(DepthDoctor, WhollyTransparentMapIsTakenAsItIs) {
    Pair pair = scene(300, 200);
    const std::vector<float> before = pair.depth.plane.samples;
    pair.depth.known = GrayImage(300, 200);
    const std::vector<Finding> findings = examine(pair.photo, {}, &pair.depth);
    ASSERT_THAT(kindsOf(findings), ElementsAre(FindingKind::kAlpha));
    EXPECT_FALSE(findings[0].corrected);
    EXPECT_EQ(pair.depth.plane.samples, before);
}

constexpr std::pair<int, int> kUnanswered[] = {{30, 40}, {120, 90}, {200, 150}, {260, 170}};

/// The scene as a range sensor gives it: 16 bit, in millimetres, 0 where it got no answer.
DepthMap sensed(const Pair& pair) {
    DepthMap depth = mapOf(pair.depth.plane, 16);
    for (float& level : depth.plane.samples) level = (1000.0f + 20.0f * (235.0f - level)) / 5300.0f * 255.0f;
    for (const auto& [x, y] : kUnanswered)
        for (int dy = -3; dy <= 3; ++dy)
            for (int dx = -4; dx <= 4; ++dx) at(depth.plane, x + dx, y + dy) = 0.0f;
    return depth;
}

TEST(DepthDoctor, UnansweredPixelsOfASensorAreFilled) {
    const Pair pair = scene(300, 200);
    DepthMap depth = sensed(pair);
    Polarity polarity;
    const std::vector<Finding> findings = examine(pair.photo, {}, &depth, &polarity);
    EXPECT_THAT(kindsOf(findings), testing::UnorderedElementsAre(FindingKind::kHoles, FindingKind::kPolarity))
        << textsOf(findings);
    EXPECT_FALSE(polarity.larger_is_nearer);
    EXPECT_TRUE(polarity.inverted);
    EXPECT_FALSE(polarity.doubtful);
    const Finding* holes = find(findings, FindingKind::kHoles);
    ASSERT_NE(holes, nullptr);
    EXPECT_TRUE(holes->corrected);
    EXPECT_EQ(holes->text,
              "0.42 % of it, at its lowest level, stands for \"unknown\" and is filled from the far side");
    for (const auto& [x, y] : kUnanswered) {
        const auto [least, most] = around(depth.plane, x - 4, y - 3, 9, 7);
        for (int dy = -3; dy <= 3; ++dy)
            for (int dx = -4; dx <= 4; ++dx) {
                EXPECT_GE(at(depth.plane, x + dx, y + dy), least);
                EXPECT_LE(at(depth.plane, x + dx, y + dy), most);
            }
    }
}

// What a near thing hides from a sensor goes on behind it.
TEST(DepthDoctor, HolesBesideNearThingsAreFilledFromTheFarSide) {
    const Pair pair = scene(200, 150);
    DepthMap depth = mapOf(Plane(200, 150));
    depth.known = GrayImage(200, 150);
    for (int y = 0; y < 150; ++y)
        for (int x = 0; x < 200; ++x) {
            const bool hole = x >= 80 && x < 100 && y >= 20 && y < 130;
            at(depth.plane, x, y) = hole ? 0.0f : x < 80 ? 200.0f : 50.0f;
            depth.known.samples[static_cast<size_t>(y) * 200 + static_cast<size_t>(x)] = hole ? 0 : 255;
        }
    examine(pair.photo, {true, true}, &depth);
    for (int y = 20; y < 130; ++y)
        for (int x = 80; x < 100; ++x) EXPECT_NEAR(at(depth.plane, x, y), 50.0f, 1.0f) << x << ", " << y;
    EXPECT_EQ(at(depth.plane, 79, 75), 200.0f);
}

// The renderer needs 1 / distance. Of 65535 a sensor in millimetres uses little.
TEST(DepthDoctor, DistancesOfASensorBecomeTheirInverse) {
    const Pair pair = scene(300, 200);
    DepthMap depth = pair.depth;
    depth.bits = 16;
    std::vector<float> millimetres;
    for (float& level : depth.plane.samples) {
        millimetres.push_back(800.0f + 20.0f * (255.0f - level));
        level = millimetres.back() / 257.0f;
    }
    Polarity polarity;
    const std::vector<Finding> findings = examine(pair.photo, {}, &depth, &polarity);
    ASSERT_TRUE(polarity.inverted) << textsOf(findings);
    const float nearest = *std::min_element(millimetres.begin(), millimetres.end());
    for (size_t i = 0; i < millimetres.size(); ++i)
        ASSERT_NEAR(depth.plane.samples[i], 255.0f * nearest / millimetres[i], 0.01f);
    EXPECT_THAT(findings.back().text, HasSubstr("taken as 1 / distance"));
}

TEST(DepthDoctor, SpecksOfTheHighestLevelAreFilled) {
    const Pair pair = scene(300, 200);
    DepthMap depth = pair.depth;
    for (int i = 0; i < 20; ++i) at(depth.plane, 10 + 13 * i, 5 + 9 * i) = 255.0f;
    const std::vector<Finding> findings = examine(pair.photo, {}, &depth);
    ASSERT_THAT(kindsOf(findings), ElementsAre(FindingKind::kHoles)) << textsOf(findings);
    EXPECT_TRUE(findings[0].corrected);
    EXPECT_LE(*std::max_element(depth.plane.samples.begin(), depth.plane.samples.end()), 236.0f);
}

TEST(DepthDoctor, SkyAndNearThingsAreNoHoles) {
    const Pair pair = scene(300, 200);
    // All far levels at 0, as renderings have their skies.
    DepthMap sky = pair.depth;
    for (float& level : sky.plane.samples)
        if (level <= 45.0f) level = 0.0f;
    DepthMap lantern = pair.depth;
    for (int y = 90; y < 120; ++y)
        for (int x = 140; x < 170; ++x) at(lantern.plane, x, y) = 255.0f;
    for (DepthMap* depth : {&sky, &lantern}) {
        const std::vector<float> before = depth->plane.samples;
        for (const Finding& finding : examine(pair.photo, {}, depth))
            EXPECT_FALSE(finding.corrected) << finding.text;
        EXPECT_EQ(depth->plane.samples, before);
    }
}

TEST(DepthDoctor, LargeAreasAtTheEndOfTheRangeAreOnlyNamed) {
    const Pair pair = scene(300, 200);
    DepthMap depth = sensed(pair);
    // A window without an answer, besides the specks.
    for (int y = 20; y < 90; ++y)
        for (int x = 180; x < 240; ++x) at(depth.plane, x, y) = 0.0f;
    const std::vector<Finding> findings = examine(pair.photo, {true, true}, &depth);
    ASSERT_THAT(kindsOf(findings), ElementsAre(FindingKind::kHoles)) << textsOf(findings);
    EXPECT_FALSE(findings[0].corrected);
    EXPECT_TRUE(findings[0].filling);
    EXPECT_THAT(findings[0].text, HasSubstr("may stand for \"unknown\""));
    EXPECT_EQ(at(depth.plane, 200, 50), 0.0f);
}

TEST(DepthDoctor, LargeAreasAreFilledWhereThatIsWished) {
    const Pair pair = scene(300, 200);
    DepthMap window = sensed(pair);
    for (int y = 20; y < 90; ++y)
        for (int x = 180; x < 240; ++x) at(window.plane, x, y) = 0.0f;
    for (const auto& [holes, filled] : {std::pair{Holes::kFill, true}, {Holes::kKeep, false}}) {
        DepthMap depth = window;
        const std::vector<Finding> findings = examine(pair.photo, {true, true, holes}, &depth);
        EXPECT_EQ(at(depth.plane, 200, 50) > 40.0f, filled);
        EXPECT_EQ(at(depth.plane, kUnanswered[0].first, kUnanswered[0].second) > 40.0f, filled);
        EXPECT_EQ(find(findings, FindingKind::kHoles) != nullptr, filled);
    }
}

// Nothing is at a distance of 0, however much of it there is.
TEST(DepthDoctor, NothingIsAtADistanceOfZero) {
    const Pair pair = scene(300, 200);
    DepthMap depth = sensed(pair);
    for (int y = 20; y < 90; ++y)
        for (int x = 180; x < 300; ++x) at(depth.plane, x, y) = 0.0f;
    DepthKnowledge known;
    known.orientation = true;
    known.larger_is_nearer = false;
    const std::vector<Finding> findings = examine(pair.photo, known, &depth);
    ASSERT_THAT(kindsOf(findings), ElementsAre(FindingKind::kHoles)) << textsOf(findings);
    EXPECT_TRUE(findings[0].corrected);
    EXPECT_LT(at(depth.plane, 240, 50), 207.0f) << "a hole is as near as can be";
}

TEST(DepthDoctor, ColourMapIsNamed) {
    Pair pair = scene(300, 200);
    pair.depth.colour_map = "turbo";
    const std::vector<Finding> findings = examine(pair.photo, {}, &pair.depth);
    ASSERT_THAT(kindsOf(findings), ElementsAre(FindingKind::kColourMapped));
    EXPECT_EQ(findings[0].text, "in colours, read back through the colour map turbo");
}

TEST(DepthDoctor, MapsWithoutRangeAreNamedAndLeftAlone) {
    const Pair pair = scene(300, 200);
    DepthMap flat = pair.depth, narrow = pair.depth, layers = pair.depth;
    for (float& level : flat.plane.samples) level = 90.0f;
    for (float& level : narrow.plane.samples) level = 250.0f - level / 60.0f;
    for (float& level : layers.plane.samples) level = level > 120.0f ? 200.0f : 10.0f;
    for (const auto& [depth, text] : {std::pair{&flat, "all of it is one level"},
                                      {&narrow, "within 2 % of the levels"},
                                      {&layers, "only 2 levels"}}) {
        SCOPED_TRACE(text);
        const std::vector<float> before = depth->plane.samples;
        const std::vector<Finding> findings = examine(pair.photo, {}, depth);
        ASSERT_THAT(kindsOf(findings), ElementsAre(FindingKind::kLittleRange)) << textsOf(findings);
        EXPECT_THAT(findings[0].text, HasSubstr(text));
        EXPECT_FALSE(findings[0].corrected);
        EXPECT_EQ(depth->plane.samples, before);
    }
}

TEST(DepthDoctor, OddSizesAreHarmless) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 3000}, {3000, 1}, {2, 2}, {37, 5}})
        for (const auto& [photo_width, photo_height] : {std::pair{1, 1}, {2000, 1}, {1, 2000}, {64, 48}}) {
            SCOPED_TRACE(testing::Message()
                         << width << " x " << height << " over " << photo_width << " x " << photo_height);
            RgbImage photo(photo_width, photo_height);
            for (size_t i = 0; i < photo.samples.size(); ++i) photo.samples[i] = static_cast<uint8_t>(i * 89);
            DepthMap depth = mapOf(Plane(width, height));
            for (size_t i = 0; i < depth.plane.samples.size(); ++i)
                depth.plane.samples[i] = static_cast<float>(i * 37 % 256);
            for (const Finding& finding : examine(photo, {}, &depth))
                EXPECT_FALSE(finding.corrected) << finding.text;
            EXPECT_EQ(depth.plane.width, width);
            EXPECT_EQ(depth.plane.height, height);
        }
}

std::vector<float> spreadOf(std::vector<float> levels, int bits) {
    DepthMap depth = mapOf(Plane(static_cast<int>(levels.size()), 1), bits);
    depth.plane.samples = std::move(levels);
    spreadLevels(&depth);
    return depth.plane.samples;
}

TEST(SpreadLevels, UsesTheWholeRangeOfEveryDepth) {
    EXPECT_THAT(spreadOf({40, 60, 140}, 8), ElementsAre(0.0f, 51.0f, 255.0f));
    EXPECT_THAT(spreadOf({1, 1.5f, 3}, 16), ElementsAre(0.0f, 63.75f, 255.0f));
    EXPECT_THAT(spreadOf({0, 100, 255}, 8), ElementsAre(0.0f, 100.0f, 255.0f));
}

TEST(SpreadLevels, LeavesWhatHasNoRange) {
    EXPECT_THAT(spreadOf({77, 77}, 16), ElementsAre(77.0f, 77.0f));
    EXPECT_THAT(spreadOf({77, 81}, 8), ElementsAre(77.0f, 81.0f));
}

// 200 x 200 levels from 100 to 150: three strays are clamped, a thing of 12 x 12 keeps its place.
TEST(SpreadLevels, StraysDoNotEatTheRangeAndSmallThingsStay) {
    DepthMap strays = mapOf(Plane(200, 200));
    for (size_t i = 0; i < strays.plane.samples.size(); ++i)
        strays.plane.samples[i] = 100.0f + static_cast<float>(i % 51);
    DepthMap thing = strays;
    for (const size_t i : {size_t{7}, size_t{9000}, size_t{20000}}) strays.plane.samples[i] = 250.0f;
    EXPECT_TRUE(spreadLevels(&strays));
    EXPECT_EQ(strays.plane.samples[0], 0.0f);
    EXPECT_EQ(strays.plane.samples[7], 255.0f);
    EXPECT_FLOAT_EQ(strays.plane.samples[25], 127.5f);
    EXPECT_EQ(strays.plane.samples[50], 255.0f);

    for (int y = 80; y < 92; ++y)
        for (int x = 80; x < 92; ++x) at(thing.plane, x, y) = 250.0f;
    EXPECT_TRUE(spreadLevels(&thing));
    EXPECT_EQ(at(thing.plane, 85, 85), 255.0f);
    EXPECT_FLOAT_EQ(thing.plane.samples[50], 85.0f);
}

/// The photos from elsewhere, none of which is kept here; docs/depth.md tells their origins.
struct RealPhoto {
    const char* name;
    const char* photo;
    const char* depth;
    bool larger_is_farther;
};
constexpr RealPhoto kRealPhotos[] = {
    {"grape hyacinths", "pairs/flowers.jpg", "pairs/flowers_depth.jpg", true},
    {"wall shelf", "pairs/shelf.jpg", "pairs/shelf_depth.jpg", true},
    {"astronaut", "pairs/moon.jpg", "pairs/moon_depth16.png", false},
    {"bookcase", "pairs/bookcase.jpg", "pairs/bookcase_depth16.png", true},
    {"living room", "pairs/livingroom.png", "pairs/livingroom_depth16.png", true},
    {"frog", "pairs/frog.jpg", "pairs/frog_depth.png", false},
    {"cafe table", "embedded/gdepth_table.jpg", "embedded/extracted/gdepth_table_depth.png", true},
    {"vase", "embedded/iphonex_vase.jpg", "embedded/extracted/iphonex_vase_depth.jpg", false},
};

/// The real photos with their depth maps as they should be, and what the doctor says of these as they are.
class RealPhotos : public testing::Test {
  protected:
    void SetUp() override {
        const char* folder = std::getenv("QUORVANE_SHARED_PHOTOS");
        if (folder == nullptr)
            GTEST_SKIP() << "NOT TESTED: real photos. Set QUORVANE_SHARED_PHOTOS to their folder.";
        for (const RealPhoto& real : kRealPhotos) {
            Pair pair = {real.name, readPhoto(std::string(folder) + "/" + real.photo),
                         readDepthMap(std::string(folder) + "/" + real.depth)};
            DepthMap as_it_is = pair.depth;
            m_findings.push_back(examine(pair.photo, {}, &as_it_is));
            if (real.larger_is_farther) pair.depth.plane = inverted(pair.depth.plane);
            // Fills what is transparent.
            examine(pair.photo, {true, true}, &pair.depth);
            m_pairs.push_back(std::move(pair));
        }
    }

    std::vector<Pair> m_pairs;
    std::vector<std::vector<Finding>> m_findings;
};

TEST_F(RealPhotos, HaveNoConfidentWrongAnswerAndThisTable) {
    std::printf(
        "| photo | in truth | said of it as it is (confidence) | in 8 ways | in 8 ways, both ends near | 18 "
        "stretches and crops |\n|---|---|---|---|---|---|\n");
    for (size_t i = 0; i < m_pairs.size(); ++i) {
        const Report report = tried(m_pairs[i]);
        EXPECT_THAT(report.wrong, IsEmpty());
        EXPECT_GT(report.turns.right, 0);
        const Finding* polarity = find(m_findings[i], FindingKind::kPolarity);
        if (polarity == nullptr || polarity->corrected) {
            EXPECT_EQ(polarity != nullptr, kRealPhotos[i].larger_is_farther);
        }
        std::printf("| %s | %s | %s | %s | %s | %s |\n", m_pairs[i].name.c_str(),
                    kRealPhotos[i].larger_is_farther ? "larger = farther" : "larger = nearer",
                    textsOf(m_findings[i]).c_str(), report.turns.text().c_str(),
                    report.inversions.text().c_str(), report.aspects.text().c_str());
        std::fflush(stdout);
    }
}

TEST_F(RealPhotos, DepthMapsOfOtherPhotosAreNeverTurnedOrCropped) {
    for (const Pair& pair : m_pairs)
        for (const Pair& other : m_pairs) {
            if (&pair == &other) continue;
            SCOPED_TRACE(pair.name + " with the depth of " + other.name);
            DepthMap depth = other.depth;
            for (const Finding& finding : examine(pair.photo, {}, &depth)) {
                if (finding.kind == FindingKind::kPolarity) continue;
                EXPECT_FALSE(finding.corrected) << finding.text;
            }
        }
}

}  // namespace
}  // namespace quorvane::media
