// Every path of the guided filter, with every buffer right at a no-access page. The vector paths agree to the
// byte. They work in single precision, and so round to the other neighbour than the reference where the exact
// result is very near to a half: at most one byte of 10,000.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <ostream>
#include <string>
#include <tuple>

#include "../each_path.h"
#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

using Against = GuardedBytes::Against;

constexpr uint32_t kSeed = 31415;
constexpr float kDefaultEps = 1e-6f;
/// How far the paths' results may be from the exact ones before they are rounded: where the guide is black or
/// white but for a level, their two terms reach 32640, and three roundings of such floats are half of 2 to
/// the -8 each.
constexpr double kPrecision = 0.006;

struct Filtering {
    int width, height;
    int rx, ry;
    float eps = kDefaultEps;

    size_t pixels() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
    size_t bufferBytes() const {
        return 20 * pixels() + 8 * static_cast<size_t>(width + 1) * static_cast<size_t>(height + 1);
    }
};

std::ostream& operator<<(std::ostream& out, const Filtering& f) {
    return out << f.width << " x " << f.height << ", radii " << f.rx << ", " << f.ry << ", eps " << f.eps;
}

void run(const Path& path, const Filtering& f, const uint8_t* guide, const uint8_t* input, uint8_t* output,
         unsigned char* buffer) {
    // Radii arrive clipped to the image.
    path.guidedFilter({guide, input, output, f.width, f.height, std::min(f.rx, f.width),
                       std::min(f.ry, f.height), f.eps, buffer});
}

/// The picture that `value(x, y)` gives.
template <typename Value>
Bytes picture(int w, int h, Value value) {
    Bytes plane;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) plane.push_back(static_cast<uint8_t>(value(x, y)));
    return plane;
}

/// Soft hills of several sizes, as a photo has them: noise on grids of three distances, interpolated.
Bytes hills(int w, int h, uint32_t seed) {
    constexpr int kGrid = 64;
    const Bytes heights = noise(3 * kGrid * kGrid, seed);
    return picture(w, h, [&](int x, int y) {
        int sum = 0;
        for (const auto& [grid, distance, weight] : {std::tuple{0, 32, 4}, {1, 12, 2}, {2, 5, 1}}) {
            const int i = x / distance, j = y / distance, u = x % distance, v = y % distance;
            const auto at = [&, g = grid](int column, int row) {
                return heights[static_cast<size_t>((g * kGrid + row % kGrid) * kGrid + column % kGrid)];
            };
            const int upper = at(i, j) * (distance - u) + at(i + 1, j) * u;
            const int lower = at(i, j + 1) * (distance - u) + at(i + 1, j + 1) * u;
            sum += weight * (upper * (distance - v) + lower * v) / (distance * distance);
        }
        return sum / 7;
    });
}

/// A guide and a depth map.
struct Pair {
    std::string name;
    Bytes guide, input;
    /// Regular patterns come very near to a half in many places, or in none.
    bool regular = false;
};

/// From kindly to as bad as can be.
std::vector<Pair> pairs(int w, int h) {
    const size_t size = static_cast<size_t>(w) * static_cast<size_t>(h);
    const Bytes random = noise(size, kSeed), other = noise(size, kSeed + 1);
    const Bytes columns = picture(w, h, [](int x, int) { return x / 7 % 2 * 255; });
    const Bytes rows = picture(w, h, [](int, int y) { return y / 5 % 2 * 255; });
    const Bytes soft = hills(w, h, kSeed);
    const auto at = [=](const Bytes& plane, int x, int y) { return plane[static_cast<size_t>(y * w + x)]; };
    std::vector<Pair> all = {
        {"noise", random, other},
        {"noise under its own guide", random, random},
        {"noise under gray", Bytes(size, 90), random},
        {"noise under white", Bytes(size, 255), random},
        {"gray under noise", random, Bytes(size, 201)},
        {"steps across steps", columns, rows, true},
        {"steps under their guide", columns, columns, true},
        {"steps against their guide", columns,
         picture(w, h, [&](int x, int y) { return 255 - at(columns, x, y); }), true},
        {"steps under specks",
         picture(w, h, [](int x, int y) { return x % 23 == 11 && y % 19 == 7 ? 129 : 128; }), rows, true},
        {"hills under hills", soft, hills(w, h, kSeed + 2)},
        {"cliffs under hills", soft,
         picture(w, h, [&](int x, int y) { return at(soft, x, y) > 120 ? 200 : 40; })},
    };
    // A level up and down about a flat guide, under depth as steep as can be, gives large slopes. The photo's
    // luma, which is the renderer's guide, lies in 16..235.
    const Bytes extremes = picture(w, h, [&](int x, int y) { return at(other, x, y) % 2 * 255; });
    for (const int level : {17, 127, 234}) {
        const Bytes grain = picture(w, h, [&](int x, int y) { return level - 1 + at(random, x, y) % 3; });
        const std::string guide = " under grain about " + std::to_string(level);
        all.push_back({"noise" + guide, grain, other});
        all.push_back({"extremes" + guide, grain, extremes});
        all.push_back({"steps" + guide, grain, columns, true});
    }
    return all;
}

class GuidedFilterPaths : public testing::Test {
  protected:
    /// What a path makes of it; `working_fill` is what the buffer holds before.
    Bytes filtered(const Path& path, const Filtering& f, const Bytes& guide, const Bytes& input,
                   Against against = Against::end, uint8_t working_fill = 0xcd) {
        Room& room = m_rooms[against == Against::end ? 0 : 1];
        room.working.hold(f.bufferBytes(), working_fill);
        room.guide.hold(guide);
        room.input.hold(input);
        room.output.hold(f.pixels());
        run(path, f, room.guide.data(), room.input.data(), room.output.data(), room.working.data());
        EXPECT_TRUE(room.working.surroundingsUntouched()) << f;
        EXPECT_TRUE(room.output.surroundingsUntouched()) << f;
        EXPECT_TRUE(std::equal(guide.begin(), guide.end(), room.guide.data())) << f;
        EXPECT_TRUE(std::equal(input.begin(), input.end(), room.input.data())) << f;
        return room.output.bytes();
    }

    /// The vector paths agree; this is what all of them give.
    Bytes agreed(const Filtering& f, const Bytes& guide, const Bytes& input, Against against = Against::end) {
        Bytes first;
        for (const Path& path : m_paths) {
            const Bytes output = filtered(path, f, guide, input, against);
            if (first.empty()) first = output;
            EXPECT_EQ(difference(output.data(), first), "") << path.name << ", " << f;
        }
        return first;
    }

    /// The vector paths agree and round the exact result, and so does the reference. Counts where they differ
    /// from each other and the exact result is no half.
    void expectRounded(const Filtering& f, const Bytes& guide, const Bytes& input,
                       Against against = Against::end) {
        const Bytes output = agreed(f, guide, input, against),
                    reference = filtered(referencePath(), f, guide, input, against);
        const auto exact = guidedFilterBySums(guide, input, f.width, f.height, f.rx, f.ry, double{f.eps});
        for (size_t i = 0; i < output.size(); ++i) {
            const double distance = std::abs(reference[i] - exact[i]);
            ASSERT_LE(distance, 0.5 + 1e-6) << f << ", pixel " << i;
            ASSERT_LE(std::abs(output[i] - exact[i]), 0.5 + kPrecision) << f << ", pixel " << i;
            others += output[i] != reference[i] && distance < 0.5 - 1e-6;
        }
        bytes += output.size();
    }

    size_t bytes = 0, others = 0;

  private:
    struct Room {
        explicit Room(Against against)
            : guide(1 << 16, against),
              input(1 << 16, against),
              output(1 << 16, against),
              working(1 << 21, against) {}
        GuardedBytes guide, input, output, working;
    };
    Room m_rooms[2] = {Room(Against::end), Room(Against::start)};
    const std::vector<Path> m_paths = vectorPaths();
};

TEST_F(GuidedFilterPaths, AgreeAndDifferFromTheReferenceInOneByteOf10000AtMost) {
    const int w = 59, h = 43;
    for (const Pair& pair : pairs(w, h)) {
        SCOPED_TRACE(pair.name);
        bytes = others = 0;
        for (const auto& [rx, ry] : {std::pair{0, 0},
                                     {1, 1},
                                     {2, 2},
                                     {3, 3},
                                     {4, 4},
                                     {5, 5},
                                     {8, 8},
                                     {9, 9},
                                     {32, 32},
                                     {0, 3},
                                     {2, 1},
                                     {2, 7},
                                     {5, 0},
                                     {1, 8},
                                     {32, 2},
                                     {4, 30},
                                     {999, 999}})
            for (const float eps : {0.0f, kDefaultEps, 1e-4f, 1e-2f})
                ASSERT_NO_FATAL_FAILURE(expectRounded({w, h, rx, ry, eps}, pair.guide, pair.input));
        EXPECT_TRUE(pair.regular || others * 10000 <= bytes) << others << " of " << bytes;
    }
}

TEST_F(GuidedFilterPaths, RoundTheExactResultAtEverySmallSize) {
    for (const auto& [rx, ry] : {std::pair{1, 1}, {2, 2}, {0, 1}, {3, 0}, {7, 4}, {40, 40}})
        for (int w = 1; w <= 40; ++w)
            for (const int h : {1, 2, 3, 4, 5, 9}) {
                const size_t size = static_cast<size_t>(w * h);
                const float eps = w % 2 == 0 ? kDefaultEps : 1e-2f;
                for (const auto against : {Against::end, Against::start})
                    ASSERT_NO_FATAL_FAILURE(expectRounded({w, h, rx, ry, eps}, noise(size, kSeed),
                                                          noise(size, kSeed + 1), against));
            }
}

// There the buffer is smaller than what a path keeps, and more so the wider its vectors are.
TEST_F(GuidedFilterPaths, AgreeInTheSmallestImages) {
    for (int w = 1; w <= 40; ++w)
        for (int h = 1; h <= 4; ++h)
            for (const auto& [rx, ry] : {std::pair{1, 1}, {2, 2}, {3, 3}, {8, 1}, {40, 40}})
                for (uint32_t seed = kSeed; seed < kSeed + 60; seed += 2) {
                    const Filtering f = {w, h, rx, ry};
                    agreed(f, noise(f.pixels(), seed), noise(f.pixels(), seed + 1));
                    ASSERT_FALSE(HasFailure()) << "seed " << seed;
                }
}

TEST_F(GuidedFilterPaths, HaveNoSlopeUnderAFlatGuideHoweverSmallEpsilonIs) {
    const int w = 41, h = 23;
    const Bytes input = noise(w * h, kSeed);
    for (const int level : {1, 90, 127, 255}) {
        const Bytes guide(input.size(), static_cast<uint8_t>(level));
        for (const auto& [rx, ry] : {std::pair{1, 1}, {2, 2}, {3, 5}, {12, 12}})
            for (const Path& path : everyPath()) {
                const Bytes wanted = filtered(path, {w, h, rx, ry, 1.0f}, guide, input);
                for (const float eps : {1e-20f, 1e-30f, 1e-38f})
                    EXPECT_EQ(difference(filtered(path, {w, h, rx, ry, eps}, guide, input).data(), wanted),
                              "")
                        << path.name << ", level " << level << ", radii " << rx << ", " << ry << ", eps "
                        << eps;
            }
    }
}

// Where the buffer is too small for all that a path keeps, it does not matter.
TEST_F(GuidedFilterPaths, RoundTheExactResultInImagesOfFewRows) {
    for (const int w : {64, 100, 333, 1000})
        for (int h = 1; h <= 8; ++h)
            for (const auto& [rx, ry] : {std::pair{2, 2}, {50, 1}, {999, 0}, {999, 999}})
                for (const float eps : {0.0f, 1e-2f})
                    ASSERT_NO_FATAL_FAILURE(expectRounded({w, h, rx, ry, eps}, hills(w, h, kSeed),
                                                          noise(static_cast<size_t>(w * h), kSeed)));
}

// A window of 363 pixels is the largest whose products fit 32 bits, one of 33,025 whose sums do. Black and
// white halves have the largest variance, white and what is nearly white have the largest sums.
TEST_F(GuidedFilterPaths, RoundTheExactResultUpToTheEdgesOfTheirNumberRanges) {
    for (const auto& [w, h, rx, ry] : {std::tuple{70, 24, 16, 5},
                                       {70, 24, 5, 16},
                                       {26, 14, 99, 99},
                                       {70, 24, 13, 6},
                                       {40, 23, 9, 9},
                                       {1400, 40, 660, 12},
                                       {182, 181, 999, 999},
                                       {183, 181, 999, 999},
                                       {230, 190, 90, 90}}) {
        const Bytes halves = picture(w, h, [middle = w / 2](int x, int) { return x < middle ? 0 : 255; });
        const Bytes columns = picture(w, h, [](int x, int) { return x % 2 * 255; });
        const Bytes nearly_white = picture(w, h, [](int x, int) { return x % 40 == 7 ? 250 : 255; });
        const Bytes white(halves.size(), 255);
        for (const float eps : {0.0f, 1e-2f})
            for (const auto& [guide, input] : {std::pair{&white, &white},
                                               {&nearly_white, &nearly_white},
                                               {&halves, &halves},
                                               {&columns, &columns},
                                               {&columns, &halves},
                                               {&halves, &white}})
                ASSERT_NO_FATAL_FAILURE(expectRounded({w, h, rx, ry, eps}, *guide, *input));
    }
}

// The least variance there is, a single level in a single pixel, where the depth is far off that around it.
TEST_F(GuidedFilterPaths, RoundTheExactResultOnTheLargestSlopes) {
    const int w = 187, h = 93;
    const Bytes random = noise(w * h, kSeed);
    for (const auto& [rx, ry] : {std::pair{1, 1}, {2, 2}, {5, 5}, {9, 9}, {20, 20}, {40, 40}, {90, 45}})
        for (const int level : {0, 127, 254}) {
            bytes = others = 0;
            const auto speck = [rx = rx, ry = ry](int x, int y) {
                return x % (2 * rx + 1) == rx && y % (2 * ry + 1) == ry;
            };
            const Bytes guide = picture(w, h, [&](int x, int y) { return level + speck(x, y); });
            for (const float eps : {0.0f, kDefaultEps})
                for (const int flip : {0, 255})
                    ASSERT_NO_FATAL_FAILURE(expectRounded(
                        {w, h, rx, ry, eps}, guide, picture(w, h, [&](int x, int y) {
                            return flip ^ (speck(x, y) ? 255 : random[static_cast<size_t>(y * w + x)] / 4);
                        })));
            EXPECT_TRUE(level != 127 || others * 10000 <= bytes) << others << " of " << bytes;
        }
}

TEST_F(GuidedFilterPaths, RoundTheExactResultForAnyEpsilonFrom0ToInfinity) {
    const int w = 37, h = 21;
    const Bytes random = noise(w * h, kSeed), other = noise(w * h, kSeed + 1);
    const Bytes grain =
        picture(w, h, [&](int x, int y) { return 127 + random[static_cast<size_t>(y * w + x)] % 3; });
    for (const float eps :
         {0.0f, std::numeric_limits<float>::denorm_min(), 1e-30f, 1e-12f, 1e-9f, 1e-7f, 1e-3f, 0.1f, 1.0f,
          1e6f, 1e30f, std::numeric_limits<float>::max(), std::numeric_limits<float>::infinity()})
        for (const auto& [rx, ry] : {std::pair{0, 0}, {2, 2}, {20, 3}, {99, 99}}) {
            ASSERT_NO_FATAL_FAILURE(expectRounded({w, h, rx, ry, eps}, random, other));
            ASSERT_NO_FATAL_FAILURE(expectRounded({w, h, rx, ry, eps}, grain, other));
        }
}

// Below 0 the slopes have no bound: a variance may be just a little more than the epsilon takes off.
TEST_F(GuidedFilterPaths, AreTheReferenceForAnEpsilonBelow0OrNone) {
    const int w = 37, h = 21;
    const Bytes input = noise(w * h, kSeed);
    const Bytes specks =
        picture(w, h, [&](int x, int y) { return 16 + (input[static_cast<size_t>(y * w + x)] < 20); });
    for (const float eps : {-5e-7f, -1e-6f, -1e-3f, -1.0f, -std::numeric_limits<float>::infinity(),
                            std::numeric_limits<float>::quiet_NaN()})
        for (const auto& [rx, ry] : {std::pair{0, 0}, {1, 1}, {2, 2}, {3, 3}, {20, 3}, {99, 99}})
            for (const Bytes& guide : {specks, hills(w, h, kSeed)}) {
                const Filtering f = {w, h, rx, ry, eps};
                EXPECT_EQ(
                    difference(agreed(f, guide, input).data(), filtered(referencePath(), f, guide, input)),
                    "")
                    << f;
            }
}

TEST_F(GuidedFilterPaths, OutputMayBeTheInputOrTheGuide) {
    for (const auto& [w, h] : {std::pair{31, 17}, {8, 8}, {100, 40}, {5, 2}})
        for (const auto& [rx, ry] : {std::pair{0, 0}, {2, 3}, {12, 12}})
            for (const float eps : {kDefaultEps, 1e-2f}) {
                const Filtering f = {w, h, rx, ry, eps};
                const Bytes guide = noise(f.pixels(), kSeed), input = noise(f.pixels(), kSeed + 1);
                for (const Path& path : everyPath()) {
                    const Bytes wanted = filtered(path, f, guide, input);
                    Bytes I = guide, p = input, working(f.bufferBytes());
                    run(path, f, I.data(), p.data(), p.data(), working.data());
                    EXPECT_EQ(difference(p.data(), wanted), "") << path.name << ", over the input, " << f;
                    EXPECT_EQ(I, guide) << path.name;
                    p = input;
                    run(path, f, I.data(), p.data(), I.data(), working.data());
                    EXPECT_EQ(difference(I.data(), wanted), "") << path.name << ", over the guide, " << f;
                    EXPECT_EQ(p, input) << path.name;
                }
            }
}

TEST_F(GuidedFilterPaths, BufferMayHoldAnythingBefore) {
    for (const auto& [w, h, rx, ry] : {std::tuple{23, 11, 2, 3}, {40, 9, 3, 2}, {45, 45, 12, 12}})
        for (const auto against : {Against::end, Against::start}) {
            const Filtering f = {w, h, rx, ry};
            const Bytes guide = noise(f.pixels(), kSeed), input = noise(f.pixels(), kSeed + 1);
            for (const Path& path : everyPath()) {
                const Bytes wanted = filtered(path, f, guide, input, against, 0);
                for (const uint8_t fill : {uint8_t{0x01}, uint8_t{0x7f}, uint8_t{0xff}})
                    EXPECT_EQ(difference(filtered(path, f, guide, input, against, fill).data(), wanted), "")
                        << path.name << ", " << f;
            }
        }
}

TEST_F(GuidedFilterPaths, BufferNeedsNoAlignment) {
    for (const auto& [w, h, rx, ry] : {std::tuple{23, 11, 2, 3}, {40, 9, 3, 2}, {45, 45, 12, 12}}) {
        const Filtering f = {w, h, rx, ry};
        const Bytes guide = noise(f.pixels(), kSeed), input = noise(f.pixels(), kSeed + 1);
        for (const Path& path : everyPath()) {
            const Bytes wanted = filtered(path, f, guide, input);
            for (size_t shift = 0; shift < 64; ++shift) {
                // Starts `shift` bytes behind the start of a page, which is aligned for everything.
                GuardedBytes working(f.bufferBytes() + shift, Against::start, 0xff);
                Bytes output(f.pixels());
                run(path, f, guide.data(), input.data(), output.data(), working.data() + shift);
                EXPECT_EQ(difference(output.data(), wanted), "") << path.name << ", " << shift;
                EXPECT_TRUE(working.surroundingsUntouched()) << path.name << ", " << shift;
                EXPECT_TRUE(std::all_of(working.data(), working.data() + shift,
                                        [](uint8_t byte) { return byte == 0xff; }))
                    << path.name << ", " << shift;
            }
        }
    }
}

TEST(GuidedFilterModels, Agree) {
    for (const auto& [w, h] : {std::pair{1, 1}, {7, 3}, {30, 17}})
        for (const auto& [rx, ry] : {std::pair{0, 0}, {1, 1}, {2, 3}, {99, 99}})
            for (const double eps : {1e-6, 1e-2}) {
                const size_t size = static_cast<size_t>(w * h);
                const Bytes guide = noise(size, kSeed), input = noise(size, kSeed + 1);
                const auto by_definition = guidedFilter(guide, input, w, h, rx, ry, eps);
                const auto by_sums = guidedFilterBySums(guide, input, w, h, rx, ry, eps);
                for (size_t i = 0; i < size; ++i) ASSERT_NEAR(by_sums[i], by_definition[i], 1e-7);
            }
}

}  // namespace
}  // namespace quorvane::test
