// Which place of the photo a picture shows where, against pictures drawn of a flat scene and of two flat
// walls.

#include "apps/tuner/core/picking.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace quorvane::tuner {
namespace {

constexpr int kGrid = 64;

struct Scene {
    std::vector<uint8_t> shaped;
    Geometry geometry = {};
    LibParam values;
};

Scene flat(uint8_t depth) {
    Scene scene;
    scene.shaped.assign(kGrid * kGrid, depth);
    scene.geometry.half_width = 18.5f;
    scene.geometry.half_height = 18.5f;
    return scene;
}

std::optional<PhotoPlace> placeIn(const Scene& scene, float view_x, double x, double y) {
    return photoPlaceAt(scene.geometry, {scene.shaped, kGrid, kGrid}, scene.values, view_x, 0.0f, x, y);
}

TEST(Picking, AtRestThePictureIsTheMiddleOfThePhoto) {
    Scene scene = flat(200);
    scene.values.fov_scale = 0.8f;
    for (const double x : {0.0, 0.3, 0.5, 0.9}) {
        const std::optional<PhotoPlace> place = placeIn(scene, 0.0f, x, 0.25);
        ASSERT_TRUE(place);
        EXPECT_NEAR(place->x, 0.5 + (x - 0.5) * 0.8, 1e-6);
        EXPECT_NEAR(place->y, 0.5 - 0.25 * 0.8, 1e-6);
    }
}

TEST(Picking, FromTheSideThePivotStays) {
    Scene scene = flat(200);
    // The distance of depth 200, which the camera turns about.
    scene.values.rotate_z_trans = static_cast<float>(32.0 - 0.4 * (200.0 / 255.0 * 35.0 - 32.0));
    const std::optional<PhotoPlace> place = placeIn(scene, 0.9f, 0.5, 0.5);
    ASSERT_TRUE(place);
    EXPECT_NEAR(place->x, 0.5, 1e-5);
    EXPECT_NEAR(place->y, 0.5, 1e-5);
}

TEST(Picking, NearThingsHideFarOnes) {
    for (const bool near_is_left : {true, false}) {
        SCOPED_TRACE(near_is_left ? "near on the left" : "near on the right");
        Scene scene = flat(0);
        for (int row = 0; row < kGrid; ++row)
            for (int column = 0; column < kGrid; ++column)
                if ((column < kGrid / 2) == near_is_left)
                    scene.shaped[static_cast<size_t>(row * kGrid + column)] = 255;
        // The view turns about the far wall. From one of both sides the near one covers some of it, which
        // ends where the near one does: the near one is seen whole.
        scene.values.rotate_z_trans = 44.8f;
        int jumps = 0;
        for (const float view : {-0.9f, 0.9f}) {
            double last = 0.0;
            for (double x = 0.02; x < 1.0; x += 0.01) {
                const std::optional<PhotoPlace> place = placeIn(scene, view, x, 0.5);
                if (!place) continue;
                if (last > 0.0 && place->x - last > 0.03) {
                    ++jumps;
                    EXPECT_NEAR(near_is_left ? last : place->x, 0.5, 0.03);
                }
                EXPECT_GE(place->x, last - 1e-9) << "what is in front is what is seen";
                last = place->x;
            }
            EXPECT_GT(last, 0.8);
        }
        EXPECT_EQ(jumps, 1);
    }
}

TEST(Picking, OutsideOfThePhotoThereIsNothing) {
    Scene scene = flat(255);
    scene.values.fov_scale = 1.0f;
    EXPECT_FALSE(placeIn(scene, 1.0f, 0.0, 0.5) && placeIn(scene, -1.0f, 0.0, 0.5));
    EXPECT_FALSE(photoPlaceAt(scene.geometry, {}, scene.values, 0.0f, 0.0f, 0.5, 0.5));
}

}  // namespace
}  // namespace quorvane::tuner
