#include "composition/pivot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <vector>

namespace quorvane {
namespace {

/// A plane whose levels are given at (0, 0) left above to (1, 1).
class Plane {
  public:
    explicit Plane(const std::function<double(double u, double v)>& level, int width = 96, int height = 128)
        : m_width(width), m_height(height) {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                m_samples.push_back(static_cast<uint8_t>(
                    std::clamp(level((x + 0.5) / width, (y + 0.5) / height), 0.0, 255.0)));
    }

    ShapedDepth depth() const { return {m_width, m_height, m_samples.data()}; }

  private:
    int m_width, m_height;
    std::vector<uint8_t> m_samples;
};

bool inDisc(double u, double v, double x, double y, double radius) {
    return std::hypot(u - x, (v - y) * 4.0 / 3.0) < radius;
}

TEST(SubjectDepth, IsThatOfAThingBeforeAWall) {
    const Plane plane([](double u, double v) { return inDisc(u, v, 0.5, 0.5, 0.2) ? 180.0 : 30.0; });
    EXPECT_NEAR(subjectDepth(plane.depth()), 180.0, 3.0);
}

// Most of the picture, and all of its nearest part, is the floor.
TEST(SubjectDepth, IsThatOfAThingThatStandsOnAFloor) {
    const Plane plane([](double u, double v) {
        if (inDisc(u, v, 0.55, 0.4, 0.17)) return 150.0;
        return v < 0.3 ? 20.0 : 20.0 + 235.0 * (v - 0.3) / 0.7;
    });
    EXPECT_NEAR(subjectDepth(plane.depth()), 150.0, 6.0);
}

TEST(SubjectDepth, IsAFacesBeforeAWallThatFillsMoreOfThePicture) {
    const Plane plane([](double u, double v) {
        if (inDisc(u, v, 0.5, 0.4, 0.16)) return 200.0 + 15.0 * std::cos(20.0 * (u - 0.5));
        return 60.0;
    });
    EXPECT_NEAR(subjectDepth(plane.depth()), 210.0, 8.0);
}

// Something near cuts through the picture's rim, as leaves and window frames do.
TEST(SubjectDepth, IsNotThatOfANearRim) {
    const Plane plane([](double u, double v) {
        if (u < 0.1 || v > 0.92) return 250.0;
        return inDisc(u, v, 0.5, 0.45, 0.22) ? 140.0 : 10.0;
    });
    EXPECT_NEAR(subjectDepth(plane.depth()), 140.0, 3.0);
}

TEST(SubjectDepth, IsTheNearerOfTwoThingsOfASize) {
    const Plane plane([](double u, double v) {
        if (inDisc(u, v, 0.36, 0.5, 0.13)) return 90.0;
        return inDisc(u, v, 0.64, 0.5, 0.13) ? 190.0 : 10.0;
    });
    EXPECT_NEAR(subjectDepth(plane.depth()), 190.0, 3.0);
}

TEST(SubjectDepth, IsTheOnlyLevelThereIs) {
    for (const double level : {0.0, 77.0, 255.0})
        EXPECT_NEAR(subjectDepth(Plane([=](double, double) { return level; }).depth()), level, 0.01);
    EXPECT_NEAR(subjectDepth(Plane([](double, double) { return 12.0; }, 1, 1).depth()), 12.0, 0.01);
}

TEST(DepthAt, IsTheMostOfItsNeighbourhood) {
    const Plane plane([](double u, double) { return u < 0.5 ? 40.0 : 200.0; });
    EXPECT_EQ(depthAt(plane.depth(), 0.25, 0.5), 40.0);
    EXPECT_EQ(depthAt(plane.depth(), 0.75, 0.5), 200.0);
    EXPECT_EQ(depthAt(plane.depth(), 0.0, 0.0), 40.0);
    EXPECT_EQ(depthAt(plane.depth(), 1.0, 1.0), 200.0);
}

// The shader moves a sample of 0 to the distance 44.8, of 255 to 30.8.
TEST(DistanceOf, IsWhereTheShaderPutsTheDepth) {
    EXPECT_DOUBLE_EQ(distanceOf(0.0), 44.8);
    EXPECT_DOUBLE_EQ(distanceOf(255.0), 30.8);
}

}  // namespace
}  // namespace quorvane
