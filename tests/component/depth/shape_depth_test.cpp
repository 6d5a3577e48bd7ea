#include "depth/shape_depth.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "../each_path.h"
#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Pair;

constexpr uint32_t kSeed = 77;
constexpr int kWidth = 37, kHeight = 21;
constexpr size_t kSize = static_cast<size_t>(kWidth) * kHeight;

/// A photo of twice the grid's size and a depth map of four times that.
class ShapeDepth : public testing::Test {
  protected:
    ShapeDepth() {
        shaping.photo = photo.data();
        shaping.photo_width = 2 * kWidth;
        shaping.photo_height = 2 * kHeight;
        shaping.depth = depth.data();
        shaping.depth_width = 4 * kWidth;
        shaping.depth_height = 4 * kHeight;
        shaping.width = kWidth;
        shaping.height = kHeight;
        shaping.contrast = 32.0f;
        shaping.guide = guide.data();
        shaping.scratch = scratch.data();
        shaping.filter_buffer = buffer.data();
        shaping.shaped = shaped.data();
    }

    void shape(const Path& path) {
        steps.clear();
        shapeDepth(path, shaping, [this](ShapingStep step, bool done) { steps.emplace_back(step, done); });
    }

    // Behind the photo lie the bytes that a reduction by 2 reads past it.
    Bytes photo = noise(3 * 4 * kSize + 27, kSeed), depth = noise(16 * kSize, kSeed + 1);
    Bytes guide = Bytes(kSize, 1), scratch = Bytes(kSize), shaped = Bytes(kSize, 2);
    Bytes buffer = Bytes(static_cast<size_t>(guidedFilterBufferSize(kWidth, kHeight)));
    DepthShaping shaping = {};
    std::vector<std::pair<ShapingStep, bool> > steps;
};

TEST_F(ShapeDepth, WithoutTheFilterItReducesAveragesAndBendsOnEveryPath) {
    const Bytes reduced = reducedGray(depth, 4 * kWidth, 4 * kHeight, kWidth, kHeight);
    Bytes wanted = crossAverage(reduced, kWidth, kHeight);
    for (uint8_t& sample : wanted) sample = kContrastCurve[sample];
    const Bytes luma = reducedLuma(photo, 2 * kWidth, 2 * kHeight, kWidth, kHeight);
    for (const Path& path : everyPath()) {
        shape(path);
        EXPECT_EQ(difference(shaped.data(), wanted), "") << path.name;
        EXPECT_EQ(difference(guide.data(), luma), "") << path.name;
    }
}

TEST_F(ShapeDepth, TheDenoisedLumaGuidesTheFilter) {
    shaping.rx = 2;
    shaping.ry = 3;
    shaping.eps = 1e-4f;
    const Bytes luma =
        crossAverage(reducedLuma(photo, 2 * kWidth, 2 * kHeight, kWidth, kHeight), kWidth, kHeight);
    const Bytes reduced = reducedGray(depth, 4 * kWidth, 4 * kHeight, kWidth, kHeight);
    for (const Path& path : everyPath()) {
        Bytes filtered(kSize);
        path.guidedFilter(
            {luma.data(), reduced.data(), filtered.data(), kWidth, kHeight, 2, 3, 1e-4f, buffer.data()});
        Bytes wanted = crossAverage(filtered, kWidth, kHeight);
        for (uint8_t& sample : wanted) sample = kContrastCurve[sample];
        shape(path);
        EXPECT_EQ(difference(shaped.data(), wanted), "") << path.name;
    }
}

TEST_F(ShapeDepth, TellsOfEachStepOnce) {
    shape(referencePath());
    EXPECT_THAT(steps,
                ElementsAre(Pair(ShapingStep::kReducePhoto, true), Pair(ShapingStep::kReduceDepth, true),
                            Pair(ShapingStep::kDenoiseGuide, true), Pair(ShapingStep::kFilter, true),
                            Pair(ShapingStep::kDenoiseAndCurve, true)));
}

TEST_F(ShapeDepth, PhotoOfAnotherRatioLeavesTheGuideAndIsTold) {
    shaping.photo_width = 3 * kWidth;
    shape(referencePath());
    EXPECT_EQ(steps[0], std::pair(ShapingStep::kReducePhoto, false));
    EXPECT_EQ(steps[1], std::pair(ShapingStep::kReduceDepth, true));
    EXPECT_THAT(guide, Each(1));
}

TEST_F(ShapeDepth, DepthOfAnotherRatioShapesWhatThePlaneHeldAndIsTold) {
    shaping.depth_height = 5 * kHeight;
    shape(referencePath());
    EXPECT_EQ(steps[1], std::pair(ShapingStep::kReduceDepth, false));
    EXPECT_THAT(shaped, Each(kContrastCurve[2]));
}

}  // namespace
}  // namespace quorvane::test
