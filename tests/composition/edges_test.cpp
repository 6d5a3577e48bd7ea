#include "composition/edges.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <random>
#include <vector>

namespace quorvane {
namespace {

struct Map {
    Size size;
    std::vector<uint8_t> samples;

    Map(Size s, const std::function<double(int x, int y)>& depth_at) : size(s) {
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                samples.push_back(static_cast<uint8_t>(std::lround(std::clamp(depth_at(x, y), 0.0, 255.0))));
    }
    uint8_t at(int x, int y) const {
        return samples[static_cast<size_t>(std::clamp(y, 0, size.height - 1)) *
                           static_cast<size_t>(size.width) +
                       static_cast<size_t>(std::clamp(x, 0, size.width - 1))];
    }
};

double blurOf(const Map& map) { return edgeBlur(map.samples.data(), map.size); }

/// A step from 40 to 200 at x = 50 under a Gaussian window.
Map softStep(double sigma) {
    return Map({100, 60}, [=](int x, int) {
        return 120.0 + 80.0 * std::erf((x + 0.5 - 50.0) / (sigma * std::sqrt(2.0)));
    });
}

/// What the renderer makes of a map with four samples a cell, without its depth curve: reduced by the eight
/// weights of ratio 4, then the mean of each sample and its four neighbours, looked up where vertices are.
class Drawn {
  public:
    explicit Drawn(const Map& map) : m_width(map.size.width / 4), m_height(map.size.height / 4) {
        constexpr double kWeights[] = {4, 18, 43, 63, 63, 43, 18, 4};
        std::vector<double> reduced;
        for (int j = 0; j < m_height; ++j)
            for (int i = 0; i < m_width; ++i) {
                double sum = 0.0;
                for (int l = 0; l < 8; ++l)
                    for (int k = 0; k < 8; ++k)
                        sum += kWeights[l] * kWeights[k] * map.at(4 * i - 2 + k, 4 * j - 2 + l);
                reduced.push_back(sum / 65536.0);
            }
        m_samples = reduced;
        const auto sample = [&](int i, int j) { return at(reduced, i, j); };
        for (int j = 0; j < m_height; ++j)
            for (int i = 0; i < m_width; ++i)
                m_samples[index(i, j)] = (sample(i, j) + sample(i - 1, j) + sample(i + 1, j) +
                                          sample(i, j - 1) + sample(i, j + 1)) /
                                         5.0;
    }

    /// At the corner of cells that lies left of column i and above row j.
    double vertex(int i, int j) const {
        return (at(m_samples, i - 1, j - 1) + at(m_samples, i, j - 1) + at(m_samples, i - 1, j) +
                at(m_samples, i, j)) /
               4.0;
    }

  private:
    size_t index(int i, int j) const {
        return static_cast<size_t>(std::clamp(j, 0, m_height - 1)) * static_cast<size_t>(m_width) +
               static_cast<size_t>(std::clamp(i, 0, m_width - 1));
    }
    double at(const std::vector<double>& plane, int i, int j) const { return plane[index(i, j)]; }

    int m_width, m_height;
    std::vector<double> m_samples;
};

Map clean(const Map& map, Size grid) {
    const std::vector<uint8_t> samples = cleanEdges(map.samples.data(), map.size, grid);
    const Size size = {4 * grid.width, 4 * grid.height};
    EXPECT_EQ(samples.size(), static_cast<size_t>(size.width) * static_cast<size_t>(size.height));
    return Map(size, [&](int x, int y) {
        return samples[static_cast<size_t>(y) * static_cast<size_t>(size.width) + static_cast<size_t>(x)];
    });
}

TEST(EdgeBlur, OfJumpsBetweenNeighboursIsFourFifths) {
    EXPECT_NEAR(blurOf(Map({80, 60}, [](int x, int) { return x < 33 ? 40.0 : 200.0; })), 0.8, 0.01);
    EXPECT_NEAR(blurOf(Map({80, 60}, [](int, int y) { return y < 33 ? 200.0 : 40.0; })), 0.8, 0.01);
}

// A Gaussian's integral rises from a tenth to nine tenths over 2.563 sigma; straight lines between samples
// reach a little further.
TEST(EdgeBlur, OfAGaussianWindowIsItsRise) {
    for (const double sigma : {1.0, 2.0, 3.0})
        EXPECT_NEAR(blurOf(softStep(sigma)), 2.563 * sigma, 0.2) << sigma;
}

TEST(EdgeBlur, OfARampIsEightTenthsOfItsLength) {
    const Map ramp({90, 60}, [](int x, int) { return 30.0 + 25.0 * std::clamp(x - 40, 0, 6); });
    EXPECT_NEAR(blurOf(ramp), 4.8, 0.01);
}

TEST(EdgeBlur, IgnoresSlopesFlatMapsAndSmallSteps) {
    EXPECT_EQ(blurOf(Map({90, 60}, [](int x, int y) { return x + 2.0 * y; })), 0.0);
    EXPECT_EQ(blurOf(Map({90, 60}, [](int, int) { return 77.0; })), 0.0);
    EXPECT_EQ(blurOf(Map({90, 60}, [](int x, int) { return x < 40 ? 77.0 : 84.0; })), 0.0);
    EXPECT_EQ(blurOf(Map({1, 1}, [](int, int) { return 77.0; })), 0.0);
}

TEST(EdgeBlur, IsThatOfMostJumps) {
    // Two hard outlines, one soft one.
    const Map map({200, 40}, [](int x, int) {
        if (x < 40) return 30.0;
        if (x < 80) return 200.0;
        if (x < 120) return 40.0;
        return 40.0 + 20.0 * std::clamp(x - 150, 0, 8);
    });
    EXPECT_NEAR(blurOf(map), 0.8, 0.01);
}

TEST(EdgeBlur, SeesThroughSensorNoise) {
    std::mt19937 random(5);
    Map noisy = softStep(2.0);
    for (uint8_t& sample : noisy.samples) sample = static_cast<uint8_t>(sample + random() % 5 - 2);
    EXPECT_NEAR(blurOf(noisy), 5.1, 0.6);
}

// Nothing of a near thing bends: every corner of every cell that it touches is as near as it is. The far side
// is itself again a few cells away.
TEST(CleanEdges, PutTheWholeSlopeOnTheFarSide) {
    for (const int width : {1, 2, 3, 5, 12})
        for (const bool upright : {true, false}) {
            SCOPED_TRACE(testing::Message() << width << " samples wide, " << (upright ? "upright" : "lying"));
            constexpr int kFirst = 20;
            const Map map({48, 48}, [=](int x, int y) {
                const int across = upright ? x : y;
                return across >= kFirst && across < kFirst + width ? 210.0 : 30.0;
            });
            const Drawn drawn(clean(map, map.size));
            const auto vertex = [&](int across) {
                return upright ? drawn.vertex(across, 24) : drawn.vertex(24, across);
            };
            for (int i = kFirst; i <= kFirst + width; ++i) EXPECT_GT(vertex(i), 207.0) << i;
            EXPECT_LT(vertex(kFirst - 3), 60.0);
            EXPECT_LT(vertex(kFirst + width + 3), 60.0);
            for (const int away : {5, 8}) {
                EXPECT_NEAR(vertex(kFirst - away), 30.0, 0.5);
                EXPECT_NEAR(vertex(kFirst + width + away), 30.0, 0.5);
            }
        }
}

// Where an outline runs askew, the corners of its stairs give way by an eighth.
TEST(CleanEdges, KeepRoundThingsWhole) {
    const auto inside = [](double x, double y) { return std::hypot(x - 40.0, y - 40.0) < 17.3; };
    const Map map({80, 80}, [=](int x, int y) { return inside(x + 0.5, y + 0.5) ? 180.0 : 20.0; });
    const Drawn drawn(clean(map, map.size));
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 80; ++x) {
            if (!inside(x + 0.5, y + 0.5)) continue;
            for (const int corner : {0, 1, 2, 3})
                EXPECT_GT(drawn.vertex(x + corner % 2, y + corner / 2), 20.0 + 160.0 * 0.87)
                    << x << ", " << y;
        }
}

TEST(CleanEdges, MakeSoftOutlinesHard) {
    for (const double sigma : {1.0, 2.0, 3.0}) {
        SCOPED_TRACE(sigma);
        const Map soft = softStep(sigma);
        const Drawn drawn(clean(soft, soft.size)),
            as_given(Map({400, 240}, [&](int x, int y) { return soft.at(x / 4, y / 4); }));
        // Near from the middle of the soft slope on, far a few cells before it.
        for (const int inside : {51, 52, 54}) EXPECT_GT(drawn.vertex(inside, 30), 190.0) << inside;
        EXPECT_GT(drawn.vertex(51, 30), as_given.vertex(51, 30) + 25.0);
        EXPECT_NEAR(drawn.vertex(40, 30), 40.0, 4.0);
    }
}

TEST(CleanEdges, LeaveSlopesAndFlatGroundAsTheyAre) {
    const Map slope({100, 100}, [](int x, int y) { return 20.0 + 1.5 * x + 0.5 * y; });
    const Map kept = clean(slope, slope.size);
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x) {
            const int grown = kept.at(4 * x, 4 * y) - slope.at(x, y);
            ASSERT_GE(grown, 0);
            ASSERT_LE(grown, 4);  // two cells of the slope, rounded
        }
    const Map flat({64, 48}, [](int, int) { return 99.0; });
    for (const Size grid : {Size{64, 48}, Size{16, 12}, Size{100, 90}, Size{63, 47}, Size{1, 1}})
        for (const uint8_t sample : clean(flat, grid).samples) ASSERT_EQ(sample, 99);
}

TEST(CleanEdges, KeepThingsThinnerThanACell) {
    const Map map({96, 96}, [](int x, int) { return x == 50 || x == 51 ? 220.0 : 30.0; });
    const Drawn drawn(clean(map, {24, 24}));
    // Samples 48 to 51 are the twelfth cell.
    EXPECT_GT(drawn.vertex(12, 12), 190.0);
    EXPECT_GT(drawn.vertex(13, 12), 190.0);
    EXPECT_NEAR(drawn.vertex(8, 12), 30.0, 1.0);
}

TEST(CleanEdges, DoNotTakeASingleWrongSampleForAThing) {
    const Map map({96, 96}, [](int x, int y) { return x == 50 && y == 44 ? 255.0 : 30.0; });
    for (const uint8_t sample : clean(map, {12, 12}).samples) EXPECT_LT(sample, 50);
}

TEST(CleanEdges, TakeMapsCoarserThanTheGrid) {
    const Map map({20, 20}, [](int x, int) { return x < 10 ? 30.0 : 210.0; });
    const Drawn drawn(clean(map, {60, 50}));
    for (const int inside : {31, 32, 40}) EXPECT_GT(drawn.vertex(inside, 25), 200.0) << inside;
    EXPECT_NEAR(drawn.vertex(22, 25), 30.0, 1.0);
}

TEST(CleanEdges, TakeSidesThatDoNotDivide) {
    const Map map({101, 67}, [](int x, int) { return x < 50 ? 30.0 : 210.0; });
    const Drawn drawn(clean(map, {37, 90}));
    // The outline is at 50 / 101 of the width: in the nineteenth cell.
    EXPECT_GT(drawn.vertex(19, 45), 200.0);
    EXPECT_NEAR(drawn.vertex(13, 45), 30.0, 1.0);
}

TEST(CleanEdges, TakeTheSmallestMapsAndGrids) {
    for (const Size size : {Size{1, 1}, Size{1, 9}, Size{7, 1}, Size{3, 2}})
        for (const Size grid : {Size{1, 1}, Size{5, 3}, Size{1, 8}}) {
            const Map map(size, [](int x, int y) { return 10.0 * (x + y); });
            const auto [least, most] = std::minmax_element(map.samples.begin(), map.samples.end());
            for (const uint8_t sample : clean(map, grid).samples) {
                EXPECT_GE(sample, *least);
                EXPECT_LE(sample, *most);
            }
        }
}

TEST(CleanEdges, StayWithinTheMapsRangeForAllSizes) {
    std::mt19937 random(1);
    const auto side = [&] { return 1 + static_cast<int>(random() % 60); };
    for (int i = 0; i < 400; ++i) {
        const bool noise = i % 2 == 0;
        const Map map({side(), side()}, [&](int x, int y) {
            if (noise) return 20.0 + static_cast<int>(random() % 200);
            return (x / 9 + y / 7) % 2 == 0 ? 30.0 + static_cast<int>(random() % 3) : 200.0;
        });
        const Size grid = {side(), side()};
        SCOPED_TRACE(testing::Message() << map.size.width << " x " << map.size.height << " to " << grid.width
                                        << " x " << grid.height);
        const auto [least, most] = std::minmax_element(map.samples.begin(), map.samples.end());
        const Map result = clean(map, grid);
        const auto [farthest, nearest] = std::minmax_element(result.samples.begin(), result.samples.end());
        ASSERT_GE(*farthest, *least);
        ASSERT_LE(*nearest, *most);
        ASSERT_GE(blurOf(map), 0.0);
    }
}

TEST(CleanEdges, GiveACellTheSameSampleThroughout) {
    const Map map({30, 20}, [](int x, int y) { return (x * 37 + y * 91) % 256; });
    const Map result = clean(map, {15, 20});
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 60; ++x) ASSERT_EQ(result.at(x, y), result.at(x & ~3, y & ~3));
}

}  // namespace
}  // namespace quorvane
