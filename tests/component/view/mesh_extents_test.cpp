#include "view/mesh_extents.h"

#include <gtest/gtest.h>

namespace quorvane::test {
namespace {

// By hand: 1920 / (16 / 9 * 2 tan 30) = 935.3; 2.4 / 32 * 935 = 70.1; 70 - 935 * 2.4 / 64 = 34.9;
// 34 + 0.5 + 935 * 1.2 / 32 = 69.6; 18.5 * 16 / 9 = 32.889 and 32 * 34 / 935 = 1.164.
TEST(MeshExtents, FollowTheOutputsProportions) {
    const MeshExtents extents = meshExtents(1920.0f, 1080.0f, 18.5f, 2.4f);
    EXPECT_EQ(extents.unit_pixels, 935);
    EXPECT_EQ(extents.disparity, 70);
    EXPECT_EQ(extents.shift, 34);
    EXPECT_EQ(extents.cropping, 69);
    EXPECT_NEAR(extents.half_width, 32.888889 + 1.163636, 1e-5);
    EXPECT_NEAR(extents.second_half_width, 32.888889 - 1.163636, 1e-5);
}

TEST(MeshExtents, WithoutABaselineBothViewsAreOne) {
    const MeshExtents extents = meshExtents(640.0f, 480.0f, 18.5f, 0.0f);
    EXPECT_EQ(extents.shift, 0);
    EXPECT_EQ(extents.cropping, 0);
    EXPECT_FLOAT_EQ(extents.half_width, 18.5f * 640 / 480);
    EXPECT_EQ(extents.half_width, extents.second_half_width);
}

}  // namespace
}  // namespace quorvane::test
