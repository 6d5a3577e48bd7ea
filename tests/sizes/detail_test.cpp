#include "sizes/detail.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>

namespace quorvane {

void PrintTo(const Size& size, std::ostream* out);

namespace {

constexpr int kLargest = 16384;
constexpr Size kTwelveMegapixels = {4000, 3000};

double texels(int photo, int drawn, double visible) { return photo * visible / drawn; }

TEST(FitShown, BringsALargePhotoToWhatThePictureShows) {
    const Shown shown = {{960, 720}, 0.81};
    const Fit fit = fitShown(kTwelveMegapixels, {768, 576}, kLargest, kAutoGrid, shown);
    EXPECT_GE(texels(fit.photo.width, 960, 0.81), 1.0);
    EXPECT_LE(texels(fit.photo.width, 960, 0.81), 1.25);
    EXPECT_GE(texels(fit.photo.height, 720, 0.81), 1.0);
    EXPECT_LE(texels(fit.photo.height, 720, 0.81), 1.25);
}

TEST(FitShown, ChoosesThePhotosSizeForTheFinestGrid) {
    // 1333 x 1000 of 200,000 cells: 2 pixels a cell make 333,000 at 1 texel a pixel, 4 make 83,000, and at
    // most 130,000 at 1.25.
    EXPECT_EQ(fitShown(kTwelveMegapixels, {768, 576}, kLargest, kAutoGrid, {{960, 720}, 0.72}).ratio, 4);
    // 960 x 720 at 1 texel are 172,800 cells of 2 pixels, and at 1.08 they are all 200,000.
    const Fit fit = fitShown(kTwelveMegapixels, {768, 576}, kLargest, kAutoGrid, {{960, 720}, 1.0});
    EXPECT_EQ(fit.ratio, 2);
    EXPECT_GE(triangleCount(fit.grid), 395000);
    EXPECT_LE(triangleCount(fit.grid), 400000);
}

TEST(FitShown, KeepsEveryPixelOfASmallPhoto) {
    // 741 is no multiple of 2.
    const Fit fit = fitShown({741, 500}, {741, 500}, kLargest, kAutoGrid, {{1482, 1000}, 0.9});
    EXPECT_EQ(fit.photo, (Size{740, 500}));
    EXPECT_TRUE(isCutToCells(fit, {741, 500}));
    EXPECT_TRUE(fitShown({640, 480}, {64, 48}, kLargest, kAutoGrid, {{640, 480}, 1.0}).photo ==
                (Size{640, 480}));
}

TEST(FitShown, DoesNotCutAwayWhatWouldBeMissed) {
    // 32 pixels a cell: 96 x 64 of 100 x 90.
    const Fit fit = fitShown({100, 90}, {2, 2}, kLargest, kCoarseGrid, {{400, 360}, 1.0});
    EXPECT_EQ(fit.photo, (Size{128, 96}));
    EXPECT_FALSE(isCutToCells(fit, {100, 90}));
}

TEST(FitShown, StaysBelowTheDriversLimit) {
    const Fit fit = fitShown({9000, 6000}, {768, 512}, 4096, kAutoGrid, {{9000, 6000}, 1.0});
    EXPECT_LE(fit.photo.width, 4096);
}

// The promises, for many sizes.
TEST(FitShown, KeepsItsPromises) {
    int reduced = 0;
    for (const Size photo :
         {Size{4032, 3024}, Size{3000, 4000}, Size{1999, 1501}, Size{680, 1200}, Size{97, 61}})
        for (const GridBudget& budget : {kCoarseGrid, kAutoGrid, kAutoGridLive, kFineGrid})
            for (int width = 90; width < 4000; width = width * 5 / 4 + 7)
                for (const double visible : {0.5, 0.81, 0.93, 1.0}) {
                    const Shown shown = {{width, std::max(1, width * photo.height / photo.width)}, visible};
                    SCOPED_TRACE(testing::Message()
                                 << photo.width << " x " << photo.height << " drawn " << width << ", visible "
                                 << visible << ", " << budget.triangles);
                    const Fit fit = fitShown(photo, {256, 192}, kLargest, budget, shown);
                    ASSERT_EQ(fit.photo, (Size{fit.ratio * fit.grid.width, fit.ratio * fit.grid.height}));
                    ASSERT_EQ(fit.depth, (Size{4 * fit.grid.width, 4 * fit.grid.height}));
                    const double most = texels(photo.width, shown.drawn.width, visible);
                    const double got = texels(fit.photo.width, shown.drawn.width, visible);
                    const double cell = texels(fit.ratio, shown.drawn.width, visible);
                    ASSERT_GE(got, std::min(1.0, most) - cell);
                    ASSERT_LE(got, std::min(1.25, most) + cell);
                    ASSERT_TRUE(showsDetail(fit, photo, shown));
                    if (budget.triangles == 0) continue;
                    ASSERT_LE(triangleCount(fit.grid), budget.triangles);
                    // Half as many pixels a cell pass the budget even at one texel a pixel.
                    const double least = std::min(1.0, most) * shown.drawn.width / visible;
                    const double finer_width = std::ceil(2.0 * (least - fit.ratio) / fit.ratio);
                    const double finer_height = std::ceil(finer_width * photo.height / photo.width);
                    const bool finer_passes =
                        2.0 * (finer_width + 2.0) * (finer_height + 2.0) > budget.triangles;
                    ASSERT_TRUE(fit.ratio == 1 || finer_passes);
                    reduced += got < 0.9 * most;
                }
    EXPECT_GT(reduced, 300);
}

TEST(ShowsDetail, HoldsWhileTheTexelsAreInTheirRange) {
    const Size drawn = {960, 720};
    const Fit fit = fitShown(kTwelveMegapixels, {768, 576}, kLargest, kAutoGrid, {drawn, 0.95});
    const double at_one = fit.photo.width / 960.0;
    EXPECT_TRUE(showsDetail(fit, kTwelveMegapixels, {drawn, 1.02 / at_one}));
    EXPECT_TRUE(showsDetail(fit, kTwelveMegapixels, {drawn, 1.23 / at_one}));
    EXPECT_FALSE(showsDetail(fit, kTwelveMegapixels, {drawn, 0.97 / at_one}));
    EXPECT_FALSE(showsDetail(fit, kTwelveMegapixels, {drawn, 1.28 / at_one}));
}

TEST(ShowsDetail, AsksNoMoreThanThePhotoHas) {
    const Shown shown = {{4000, 3000}, 0.5};
    EXPECT_TRUE(showsDetail(fitShown({640, 480}, {64, 48}, kLargest, kAutoGrid, shown), {640, 480}, shown));
}

}  // namespace
}  // namespace quorvane
