#include "media/scene/sample_scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace quorvane::media {
namespace {

TEST(SampleScene, IsTheSameOnEveryRun) {
    const SampleScene a = makeSampleScene(160, 120);
    const SampleScene b = makeSampleScene(160, 120);
    EXPECT_EQ(a.photo.samples, b.photo.samples);
    EXPECT_EQ(a.depth.samples, b.depth.samples);
}

TEST(SampleScene, HasTheSizeAskedFor) {
    for (const auto& [width, height] : {std::pair{64, 64}, {200, 90}, {90, 200}}) {
        const SampleScene scene = makeSampleScene(width, height);
        EXPECT_EQ(scene.photo.width, width);
        EXPECT_EQ(scene.photo.height, height);
        EXPECT_EQ(scene.photo.samples.size(), 3u * static_cast<size_t>(width * height));
        EXPECT_EQ(scene.depth.samples.size(), static_cast<size_t>(width * height));
    }
}

TEST(SampleScene, HasSeveralLayersASlopeAndARoundNearThing) {
    const SampleScene scene = makeSampleScene(400, 300);
    const std::set<uint8_t> depths(scene.depth.samples.begin(), scene.depth.samples.end());
    EXPECT_LE(*depths.begin(), 36) << "a sky";
    EXPECT_GE(*depths.rbegin(), 225) << "something near";
    EXPECT_GT(depths.size(), 120u) << "a slope and a ball, not only flat layers";
    // The ground comes nearer from row to row.
    const auto mean = [&scene](int y) {
        double sum = 0;
        for (int x = 0; x < 400; ++x) sum += scene.depth.samples[static_cast<size_t>(y * 400 + x)];
        return sum / 400;
    };
    EXPECT_LT(mean(20), mean(200));
    EXPECT_LT(mean(200), mean(295));
}

}  // namespace
}  // namespace quorvane::media
