#include "sizes/sizes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>

namespace quorvane {

void PrintTo(const Size& size, std::ostream* out) { *out << size.width << " x " << size.height; }

namespace {

constexpr int kLargest = 16384;

TEST(FitSizes, LeavesSizesThatFitAsTheyAre) {
    const Fit fit = fitSizes({4096, 3072}, {1024, 768}, kLargest);
    EXPECT_EQ(fit.ratio, 16);
    EXPECT_EQ(fit.photo, (Size{4096, 3072}));
    EXPECT_EQ(fit.depth, (Size{1024, 768}));
    EXPECT_EQ(fit.grid, (Size{256, 192}));
}

TEST(FitSizes, MakesThePhotoAWholeNumberOfCells) {
    const Fit fit = fitSizes({2100, 2100}, {640, 640}, kLargest);
    // 2100 * 4 / 640 is 13.1, so 8 photo pixels a cell, and 2100 / 8 is 262.5.
    EXPECT_EQ(fit.ratio, 8);
    EXPECT_EQ(fit.grid, (Size{263, 263}));
    EXPECT_EQ(fit.photo, (Size{2104, 2104}));
    EXPECT_EQ(fit.depth, (Size{1052, 1052}));
}

TEST(FitSizes, KeepsTheDepthsDetailOnBothAxes) {
    // 8 would do for the width, the height needs 2.
    EXPECT_EQ(fitSizes({800, 600}, {400, 1200}, kLargest).ratio, 2);
}

TEST(FitSizes, UsesAtMost32PixelsACell) { EXPECT_EQ(fitSizes({8000, 6000}, {8, 6}, kLargest).ratio, 32); }

TEST(FitSizes, TakesAPhotoSmallerThanItsDepth) {
    const Fit fit = fitSizes({100, 80}, {1000, 800}, kLargest);
    EXPECT_EQ(fit.ratio, 1);
    EXPECT_EQ(fit.photo, (Size{100, 80}));
    EXPECT_EQ(fit.depth, (Size{400, 320}));
}

TEST(FitSizes, TakesOnePixel) {
    const Fit fit = fitSizes({1, 1}, {1, 1}, kLargest);
    EXPECT_EQ(fit.grid, (Size{1, 1}));
    EXPECT_EQ(fit.depth, (Size{4, 4}));
}

TEST(FitSizes, ScalesAPhotoThatTheDriverCannotHold) {
    const Fit fit = fitSizes({20000, 10000}, {500, 250}, 4096);
    EXPECT_EQ(fit.photo, (Size{4096, 2048}));
}

TEST(FitSizes, NeverGrowsPastTheDriversLimit) {
    const Fit fit = fitSizes({1000, 1000}, {20, 20}, 1000);
    EXPECT_EQ(fit.ratio, 32);
    EXPECT_LE(fit.photo.width, 1000);
}

TEST(FitSizes, CoarsensTheGridRatherThanPassTwoGigabytes) {
    const Fit fit = fitSizes({16384, 16384}, {16384, 16384}, kLargest);
    EXPECT_EQ(fit.ratio, 8);
}

TEST(FitSizes, KeepsDetailWhereTheLimitCutsALastCell) {
    // 31 cells of 32 pixels would be 992 of the 1000, and the depth map 124 wide.
    const Fit fit = fitSizes({1000, 1000}, {125, 125}, 1000);
    EXPECT_EQ(fit.ratio, 16);
    EXPECT_GE(fit.depth.width, 125);
}

TEST(FitSizes, NeverGrowsPastALimitSmallerThanACell) {
    const Fit fit = fitSizes({5, 5}, {1, 1}, 5);
    EXPECT_LE(fit.photo.width, 5);
    EXPECT_LE(fit.photo.height, 5);
}

TEST(FitSizes, TakesTheLargestSidesThereAre) {
    constexpr int kMost = std::numeric_limits<int>::max();
    for (const Size photo : {Size{kMost, kMost}, Size{kMost, 1}, Size{1, kMost}, Size{32768, 32768}})
        for (const Size depth : {Size{1, 1}, Size{kMost, kMost}}) {
            SCOPED_TRACE(testing::PrintToString(photo) + " with " + testing::PrintToString(depth));
            const Fit fit = fitSizes(photo, depth, kMost);
            EXPECT_GE(std::min(fit.grid.width, fit.grid.height), 1);
            EXPECT_EQ(fit.photo.width, int64_t{fit.grid.width} * fit.ratio);
            EXPECT_LE(3.0 * fit.photo.width * fit.photo.height, kMost);
            EXPECT_LE(fit.photo.width, photo.width + int64_t{fit.ratio});
            EXPECT_LE(fit.photo.height, photo.height + int64_t{fit.ratio});
        }
}

// The promises, for many odd sizes.
TEST(FitSizes, KeepsItsPromisesForAllSizes) {
    for (int width = 1; width < 3000; width += 97)
        for (int height = 1; height < 3000; height += 131)
            for (const Size depth :
                 {Size{1, 1}, Size{64, 48}, Size{257, 193}, Size{1000, 1}, Size{3001, 1999}}) {
                SCOPED_TRACE(testing::Message()
                             << width << " x " << height << " with " << depth.width << " x " << depth.height);
                const Fit fit = fitSizes({width, height}, depth, kLargest);
                ASSERT_TRUE(fit.ratio == 1 || fit.ratio == 2 || fit.ratio == 4 || fit.ratio == 8 ||
                            fit.ratio == 16 || fit.ratio == 32);
                ASSERT_EQ(fit.photo.width, fit.ratio * fit.grid.width);
                ASSERT_EQ(fit.photo.height, fit.ratio * fit.grid.height);
                ASSERT_EQ(fit.depth.width, 4 * fit.grid.width);
                ASSERT_EQ(fit.depth.height, 4 * fit.grid.height);
                ASSERT_LT(std::abs(fit.photo.width - width), fit.ratio);
                ASSERT_LT(std::abs(fit.photo.height - height), fit.ratio);
                // A photo with fewer pixels than a quarter of the depth's cannot carry all of its detail.
                ASSERT_GE(fit.depth.width, std::min(depth.width, 4 * width));
                ASSERT_GE(fit.depth.height, std::min(depth.height, 4 * height));
                // The next coarser grid would lose some, unless there is none.
                const bool coarser_loses = 4.0 * width / (2 * fit.ratio) < depth.width ||
                                           4.0 * height / (2 * fit.ratio) < depth.height;
                ASSERT_TRUE(coarser_loses || fit.ratio == 32);
            }
}

// Cells by hand: 2 triangles each.
TEST(FitSizes, TakesACellAPhotoPixelWithinTheBudget) {
    EXPECT_EQ(fitSizes({463, 370}, {463, 370}, kLargest, kFineGrid).ratio, 1);
    EXPECT_EQ(fitSizes({463, 370}, {463, 370}, kLargest, kAutoGrid).ratio, 1);  // 342620 triangles
    EXPECT_EQ(fitSizes({463, 370}, {463, 370}, kLargest).ratio, 4);
    EXPECT_EQ(fitSizes({463, 370}, {463, 370}, kLargest, kAutoGridLive).grid, (Size{232, 185}));
}

TEST(FitSizes, TakesTheFinestGridWithinTheBudget) {
    const auto grid = [](const GridBudget& budget) {
        return fitSizes({4032, 3024}, {768, 576}, kLargest, budget).grid;
    };
    EXPECT_EQ(grid(kFineGrid), (Size{1008, 756}));     // 1524096 triangles
    EXPECT_EQ(grid(kAutoGrid), (Size{504, 378}));      // 381024
    EXPECT_EQ(grid(kAutoGridLive), (Size{252, 189}));  // 95256
}

TEST(FitSizes, KeepsToTheBudgetWhereTheDepthHasMoreDetail) {
    EXPECT_EQ(fitSizes({4032, 3024}, {4032, 3024}, kLargest).ratio, 4);
    EXPECT_EQ(fitSizes({4032, 3024}, {4032, 3024}, kLargest, kAutoGrid).ratio, 8);
}

TEST(FitSizes, PassesTheBudgetRatherThanScaleThePhotoDown) {
    const Fit fit = fitSizes({16384, 16384}, {64, 64}, kLargest, kAutoGridLive);
    EXPECT_EQ(fit.ratio, 32);
    EXPECT_EQ(fit.photo, (Size{16384, 16384}));
}

TEST(FitSizes, KeepsItsPromisesForAllBudgets) {
    for (const GridBudget& budget : {kFineGrid, kAutoGrid, kAutoGridLive, GridBudget{1}})
        for (int width = 1; width < 30000; width += 1 + width / 3)
            for (int height = 1; height < 30000; height += 1 + height / 2)
                for (const Size depth : {Size{1, 1}, Size{257, 193}, Size{3001, 1999}}) {
                    SCOPED_TRACE(testing::Message() << width << " x " << height << " with " << depth.width
                                                    << " x " << depth.height);
                    const Fit fit = fitSizes({width, height}, depth, kLargest, budget);
                    const Fit coarse = fitSizes({width, height}, depth, kLargest);
                    ASSERT_EQ(fit.photo, (Size{fit.ratio * fit.grid.width, fit.ratio * fit.grid.height}));
                    ASSERT_EQ(fit.depth, (Size{4 * fit.grid.width, 4 * fit.grid.height}));
                    ASSERT_TRUE(blockFits(fit.photo, fit.grid));
                    // Never smaller than without a budget, but for what a coarser cell grew by.
                    ASSERT_GT(fit.photo.width, coarse.photo.width - coarse.ratio);
                    ASSERT_GT(fit.photo.height, coarse.photo.height - coarse.ratio);
                    const int64_t cells = int64_t{fit.grid.width} * fit.grid.height;
                    ASSERT_TRUE(fit.ratio == 32 || 2 * cells <= budget.triangles);
                    if (fit.ratio == 1) continue;
                    // Half the cell would pass it, or the working memory's limit.
                    const Size finer_grid = {2 * fit.grid.width, 2 * fit.grid.height};
                    ASSERT_TRUE(!blockFits(fit.photo, finer_grid) ||
                                int64_t{2} * finer_grid.width * finer_grid.height > budget.triangles);
                }
}

TEST(PlanFit, KeepsToTheBudgetForThePartThatIsUsed) {
    // The middle 1000 x 1000 of the photo: 250000 cells of 2 x 2 pixels are 500000 triangles.
    const FitPlan plan = planFit({1500, 1000}, {300, 200}, {500, 500}, kLargest, kAutoGrid);
    EXPECT_EQ(plan.photo, (Size{1000, 1000}));
    EXPECT_EQ(plan.fit.grid, (Size{250, 250}));
    EXPECT_EQ(planFit({1500, 1000}, {300, 200}, {500, 500}, kLargest, kFineGrid).fit.grid, (Size{500, 500}));
}

TEST(FitSizes, StaysWithinTwoGigabytesOnAFineGrid) {
    const Fit fit = fitSizes({20000, 20000}, {64, 64}, 20000, GridBudget{std::numeric_limits<int>::max()});
    EXPECT_EQ(fit.photo, (Size{20000, 20000}));
    // 1.2 GB of photo leave 947 MB: 25 million cells of 109 bytes do not fit, 6.25 million do.
    EXPECT_EQ(fit.ratio, 8);
}

TEST(PictureSize, IsThePhotosWhenSmallEnough) {
    EXPECT_EQ(pictureSize({680, 1201}, 1920, false), (Size{680, 1201}));
}
TEST(PictureSize, KeepsTheAspectUnderTheLimit) {
    EXPECT_EQ(pictureSize({4032, 3024}, 1920, false), (Size{1920, 1440}));
}
TEST(PictureSize, IsEvenForVideo) { EXPECT_EQ(pictureSize({681, 1201}, 1920, true), (Size{680, 1200})); }
TEST(PictureSize, IsNeverEmptyForVideo) { EXPECT_EQ(pictureSize({1, 900}, 1920, true), (Size{2, 900})); }
TEST(PictureSize, KeepsThinPicturesVisible) {
    EXPECT_EQ(pictureSize({20000, 1}, 1920, false), (Size{1920, 1}));
}

TEST(CroppedSize, CutsTheSidesOfAWiderImage) {
    EXPECT_EQ(croppedSize({400, 300}, {100, 100}), (Size{300, 300}));
}
TEST(CroppedSize, CutsTopAndBottomOfATallerImage) {
    EXPECT_EQ(croppedSize({300, 400}, {200, 100}), (Size{300, 150}));
}
TEST(CroppedSize, LeavesTheSameAspectAlone) {
    EXPECT_EQ(croppedSize({1920, 1440}, {4, 3}), (Size{1920, 1440}));
}

TEST(PhotoPixelsPerCell, IsOneOfTheRatiosToWithinACell) {
    EXPECT_EQ(photoPixelsPerCell(4000, 250), 16);
    EXPECT_EQ(photoPixelsPerCell(4015, 250), 16);
    EXPECT_EQ(photoPixelsPerCell(4016, 250), 0);
    EXPECT_EQ(photoPixelsPerCell(750, 250), 0);
    EXPECT_EQ(photoPixelsPerCell(250, 250), 1);
    EXPECT_EQ(photoPixelsPerCell(249, 250), 0);
    EXPECT_EQ(photoPixelsPerCell(64 * 250, 250), 0);
}

// The areas by hand for 1920 x 1080 and a grid of 120 x 67: filter, vertices, indices, photo, three planes,
// reserve.
TEST(BlockBytes, IsTheSumOfTheAreas) {
    EXPECT_EQ(blockBytes({1920, 1080}, {120, 67}), 226624.0 + 324280 + 192960 + 6220800 + 3 * 8040 + 113312);
}

TEST(BlockFits, EndsAtTwoGigabytes) {
    EXPECT_TRUE(blockFits({26754, 26754}, {1, 1}));
    EXPECT_FALSE(blockFits({26755, 26755}, {1, 1}));
}

}  // namespace
}  // namespace quorvane
