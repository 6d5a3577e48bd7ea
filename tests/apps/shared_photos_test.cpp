// Photos from elsewhere, which are not kept with the source: QUORVANE_SHARED_PHOTOS is their folder.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "media/picture/picture_file.h"
#include "process.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

namespace fs = std::filesystem;

#define SKIP_WITHOUT_PHOTOS()                             \
    if (std::getenv("QUORVANE_SHARED_PHOTOS") == nullptr) \
    GTEST_SKIP() << "QUORVANE_SHARED_PHOTOS IS NOT SET, NOT TESTED WITH PHOTOS FROM ELSEWHERE"

fs::path photos() { return std::getenv("QUORVANE_SHARED_PHOTOS"); }

TEST(SharedPhotos, DamagedOnesAreReadOrToldInALine) {
    SKIP_WITHOUT_PHOTOS();
    const TemporaryFolder folder;
    for (const auto& entry : fs::directory_iterator(photos() / "bad")) {
        SCOPED_TRACE(entry.path());
        // By itself: a photo that is well-formed has no depth all the same.
        const Outcome alone = quorvane({"render", entry.path(), "-o", folder / "a.png"});
        EXPECT_EQ(alone.code, 1);
        EXPECT_THAT(alone.err, testing::StartsWith("quorvane: " + entry.path().string() + ": "));
        EXPECT_EQ(std::count(alone.err.begin(), alone.err.end(), '\n'), 1) << alone.err;
        EXPECT_FALSE(fs::exists(folder / "a.png"));

        const Outcome inspected = quorvane({"inspect", "--json", entry.path()});
        if (inspected.code == 0) {
            EXPECT_TRUE(nlohmann::json::parse(inspected.out)["depth"].is_null());
            EXPECT_EQ(inspected.err, "");
        } else {
            EXPECT_EQ(inspected.code, 1);
            EXPECT_EQ(inspected.out, "");
            EXPECT_EQ(std::count(inspected.err.begin(), inspected.err.end(), '\n'), 1) << inspected.err;
        }
    }
}

// The planes were taken out with other programs.
TEST(SharedPhotos, DepthOfPhonesIsTakenOut) {
    SKIP_WITHOUT_PHOTOS();
    const TemporaryFolder folder;
    for (const auto& [photo, plane, far_is_larger] :
         {std::tuple{"gdepth_table.jpg", "gdepth_table_depth.png", true},
          std::tuple{"iphonex_vase.jpg", "iphonex_vase_depth.jpg", false}}) {
        SCOPED_TRACE(photo);
        const fs::path embedded = photos() / "embedded";
        const Outcome outcome = quorvane({"extract", embedded / photo, "-o", folder / "d.png"});
        ASSERT_EQ(outcome.code, 0) << outcome.err;
        const media::DepthMap got = media::readDepthMap(folder / "d.png");
        media::DepthMap wanted = media::readDepthMap(embedded / "extracted" / plane);
        if (far_is_larger)
            for (float& sample : wanted.plane.samples) sample = 255.0f - sample;
        ASSERT_EQ(got.plane.width, wanted.plane.width);
        ASSERT_EQ(got.plane.height, wanted.plane.height);
        float worst = 0.0f;
        for (size_t i = 0; i < got.plane.samples.size(); ++i)
            worst = std::max(worst, std::abs(got.plane.samples[i] - wanted.plane.samples[i]));
        EXPECT_LE(worst, 0.5f) << "more than rounding";
        EXPECT_EQ(quorvane({"extract", embedded / photo, "--raw", "-o", folder / "raw"}).code, 0);
        EXPECT_EQ(bytesOf(folder / "raw"), bytesOf(embedded / "extracted" / plane));
        EXPECT_EQ(quorvane({"render", embedded / photo, "-o", folder / "a.png"}).code, 0);
    }
}

}  // namespace
}  // namespace quorvane::test
