#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <quorvane/guided_filter.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <tuple>
#include <type_traits>

#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

using ::testing::Each;

constexpr uint32_t kSeed = 4711;
constexpr float kDefaultEps = 1e-6f;

static_assert(std::has_virtual_destructor_v<guided_filter_qrv>);
static_assert(!std::is_copy_constructible_v<guided_filter_qrv>);

/// Gives tests the one operation that is protected.
class OpenFilter : public guided_filter_qrv {
  public:
    using guided_filter_qrv::releaseBuffer;
};

size_t bufferBytes(int w, int h) { return static_cast<size_t>(w * h * 20 + (w + 1) * (h + 1) * 8); }

/// Filters with every buffer, the working one included, right at a no-access page.
Bytes filtered(const Bytes& guide, const Bytes& input, int w, int h, int rx, int ry, float eps,
               GuardedBytes::Against against = GuardedBytes::Against::end) {
    GuardedBytes working(bufferBytes(w, h), against);
    GuardedBytes I(guide, against), p(input, against), q(input.size(), against);
    guided_filter_qrv filter;
    filter.assignBuffer(w, h, working.data());
    filter(I.data(), p.data(), q.data(), w, h, rx, ry, eps);
    EXPECT_TRUE(working.surroundingsUntouched());
    EXPECT_TRUE(q.surroundingsUntouched());
    EXPECT_EQ(I.bytes(), guide);
    EXPECT_EQ(p.bytes(), input);
    return q.bytes();
}

/// True when every byte is the nearest to its unrounded value; at a half, either neighbour is.
void expectRounded(const Bytes& actual, const std::vector<double>& unrounded) {
    ASSERT_EQ(actual.size(), unrounded.size());
    for (size_t i = 0; i < actual.size(); ++i)
        ASSERT_LE(std::abs(actual[i] - unrounded[i]), 0.5 + 1e-6) << "pixel " << i;
}

Bytes ramp(int w, int h) {
    Bytes plane;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) plane.push_back(static_cast<uint8_t>((x * 9 + y * 5) & 0xff));
    return plane;
}

TEST(GuidedFilter, MatchesItsDefinitionOnNoise) {
    for (const auto& [w, h] : {std::pair{1, 1}, {2, 1}, {1, 2}, {3, 3}, {7, 5}, {16, 9}, {23, 31}})
        for (const auto& [rx, ry] : {std::pair{0, 0}, {1, 1}, {2, 2}, {1, 4}, {5, 0}, {0, 3}, {40, 40}})
            for (const float eps : {kDefaultEps, 1e-3f, 0.04f, 1.0f}) {
                SCOPED_TRACE(testing::Message()
                             << w << "x" << h << ", r " << rx << ", " << ry << ", eps " << eps);
                const Bytes guide = noise(static_cast<size_t>(w * h), kSeed);
                const Bytes input = noise(static_cast<size_t>(w * h), kSeed + 1);
                expectRounded(filtered(guide, input, w, h, rx, ry, eps),
                              guidedFilter(guide, input, w, h, rx, ry, double{eps}));
            }
}

TEST(GuidedFilter, MatchesItsDefinitionOnASmoothGuide) {
    const Bytes guide = ramp(24, 17), input = noise(24 * 17, kSeed);
    for (const float eps : {kDefaultEps, 1e-4f, 1e-2f})
        expectRounded(filtered(guide, input, 24, 17, 2, 2, eps),
                      guidedFilter(guide, input, 24, 17, 2, 2, double{eps}));
}

TEST(GuidedFilter, EpsilonActsOnIntensitiesFrom0To1) {
    // Guide and input step from 100 to 151 together, a fifth of the range. In the middle of a row with radius
    // 1 and eps 0.01 the variance is 2/9 of 0.04, and a = v / (v + eps).
    const Bytes step = {100, 100, 100, 151, 151, 151};
    const double v = 2.0 / 9.0 * 0.04, a = v / (v + 0.01);
    // Pixel 2 sees windows at 1 (flat: a = 0, b = 100), 2 and 3 (means 117 and 134).
    const double mean_a = 2 * a / 3;
    const double mean_b = (100 + 117 * (1 - a) + 134 * (1 - a)) / 3;
    const Bytes result = filtered(step, step, 6, 1, 1, 0, 0.01f);
    EXPECT_EQ(result[2], std::lround(mean_a * 100 + mean_b));
    // On raw bytes an eps of 0.01 would have left the step as it is.
    EXPECT_GT(result[2], 105);
}

TEST(GuidedFilter, ConstantInputStaysUnderAnyGuide) {
    for (const int value : {0, 1, 77, 128, 254, 255}) {
        const Bytes input(19 * 13, static_cast<uint8_t>(value));
        for (const Bytes& guide :
             {noise(19 * 13, kSeed), ramp(19, 13), Bytes(19 * 13, 255), Bytes(19 * 13, 0)})
            for (const auto& [rx, ry] : {std::pair{0, 0}, {2, 2}, {7, 1}, {50, 50}})
                EXPECT_THAT(filtered(guide, input, 19, 13, rx, ry, kDefaultEps), Each(value));
    }
}

TEST(GuidedFilter, ConstantGuideGivesTheBoxMeanSmoothedOnceMore) {
    const int w = 12, h = 9, rx = 2, ry = 1;
    const Bytes input = noise(w * h, kSeed);
    const auto box = [&](const std::vector<double>& plane) {
        std::vector<double> mean;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                double sum = 0;
                int n = 0;
                for (int j = std::max(y - ry, 0); j <= std::min(y + ry, h - 1); ++j)
                    for (int i = std::max(x - rx, 0); i <= std::min(x + rx, w - 1); ++i, ++n)
                        sum += plane[static_cast<size_t>(j * w + i)];
                mean.push_back(sum / n);
            }
        return mean;
    };
    const std::vector<double> expected = box(box(std::vector<double>(input.begin(), input.end())));
    for (const int value : {0, 3, 128, 255})
        for (const float eps : {0.0f, kDefaultEps, 0.5f})
            expectRounded(filtered(Bytes(w * h, static_cast<uint8_t>(value)), input, w, h, rx, ry, eps),
                          expected);
}

TEST(GuidedFilter, RadiusZeroLeavesTheInput) {
    const Bytes guide = noise(200, kSeed), input = noise(200, kSeed + 1);
    EXPECT_EQ(filtered(guide, input, 20, 10, 0, 0, kDefaultEps), input);
}

TEST(GuidedFilter, StepThatTheGuideSharesStaysSharp) {
    Bytes guide, input;
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 20; ++x) {
            guide.push_back(x < 10 ? 40 : 200);
            input.push_back(x < 10 ? 60 : 180);
        }
    const Bytes result = filtered(guide, input, 20, 10, 2, 2, kDefaultEps);
    for (size_t i = 0; i < result.size(); ++i) EXPECT_NEAR(result[i], input[i], 1);
}

TEST(GuidedFilter, StepThatTheGuideLacksIsSmoothed) {
    Bytes input;
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 20; ++x) input.push_back(x < 10 ? 60 : 180);
    const Bytes result = filtered(Bytes(200, 90), input, 20, 10, 2, 2, kDefaultEps);
    EXPECT_GT(result[9], 80);
    EXPECT_LT(result[10], 160);
}

TEST(GuidedFilter, InPlaceGivesTheSameAsSeparatePlanes) {
    const Bytes guide = noise(31 * 17, kSeed), input = noise(31 * 17, kSeed + 1);
    const Bytes separate = filtered(guide, input, 31, 17, 2, 3, kDefaultEps);
    GuardedBytes working(bufferBytes(31, 17)), I(guide), plane(input);
    guided_filter_qrv filter;
    filter.assignBuffer(31, 17, working.data());
    filter(I.data(), plane.data(), plane.data(), 31, 17, 2, 3, kDefaultEps);
    EXPECT_EQ(plane.bytes(), separate);
}

TEST(GuidedFilter, OutputMayBeTheGuide) {
    const Bytes guide = noise(31 * 17, kSeed), input = noise(31 * 17, kSeed + 1);
    const Bytes separate = filtered(guide, input, 31, 17, 2, 3, kDefaultEps);
    GuardedBytes working(bufferBytes(31, 17)), plane(guide), p(input);
    guided_filter_qrv filter;
    filter.assignBuffer(31, 17, working.data());
    filter(plane.data(), p.data(), plane.data(), 31, 17, 2, 3, kDefaultEps);
    EXPECT_EQ(plane.bytes(), separate);
}

TEST(GuidedFilter, StaysWithinItsBudgetAtEverySmallSize) {
    for (int w = 1; w <= 20; ++w)
        for (int h = 1; h <= 20; ++h)
            for (const auto against : {GuardedBytes::Against::end, GuardedBytes::Against::start}) {
                const size_t size = static_cast<size_t>(w * h);
                const Bytes guide = noise(size, kSeed), input = noise(size, kSeed + 1);
                expectRounded(filtered(guide, input, w, h, 2, 2, kDefaultEps, against),
                              guidedFilter(guide, input, w, h, 2, 2, double{kDefaultEps}));
            }
}

TEST(GuidedFilter, WorkingBufferNeedsNoAlignment) {
    const Bytes guide = noise(5 * 3, kSeed), input = noise(5 * 3, kSeed + 1);
    const Bytes wanted = filtered(guide, input, 5, 3, 2, 2, kDefaultEps);
    for (size_t shift = 0; shift < 8; ++shift) {
        // The page starts aligned, so this starts `shift` bytes further and ends at the no-access page.
        const size_t page_rest = (8 - bufferBytes(5, 3) % 8) % 8;
        GuardedBytes working(bufferBytes(5, 3) + shift + page_rest);
        Bytes I = guide, p = input, q(input.size());
        guided_filter_qrv filter;
        filter.assignBuffer(5, 3, working.data() + shift);
        filter(I.data(), p.data(), q.data(), 5, 3, 2, 2, kDefaultEps);
        EXPECT_EQ(q, wanted) << shift;
    }
}

TEST(GuidedFilter, SumsOfTheLargestValuesDoNotOverflow) {
    const Bytes white(300 * 200, 255);
    EXPECT_THAT(filtered(white, white, 300, 200, 300, 200, kDefaultEps), Each(255));
    Bytes halves(300 * 200, 0);
    std::fill(halves.begin() + 300 * 100, halves.end(), uint8_t{255});
    // One window for all: the line through black and white, slope nearly 1.
    EXPECT_EQ(filtered(halves, halves, 300, 200, 300, 200, kDefaultEps), halves);
}

TEST(GuidedFilter, SquaresBeyond32BitsAreSummedWhole) {
    // 51200 pixels of 255 squared and as many of 155 squared are 4.6e9. One window for all, and the input is
    // the guide less 55, so the line through both is exact.
    Bytes guide(320 * 320, 255), input(320 * 320, 200);
    std::fill(guide.begin() + 320 * 160, guide.end(), uint8_t{155});
    std::fill(input.begin() + 320 * 160, input.end(), uint8_t{100});
    EXPECT_EQ(filtered(guide, input, 320, 320, 320, 320, 0.0f), input);
}

TEST(GuidedFilter, OppositeSlopeIsClampedToBytes) {
    // A guide outlier continues the local line beyond 0 and 255.
    Bytes guide(25, 100), input(25, 128);
    for (size_t i = 0; i < 25; ++i) {
        guide[i] = static_cast<uint8_t>(i % 2 == 0 ? 100 : 110);
        input[i] = static_cast<uint8_t>(i % 2 == 0 ? 255 : 0);
    }
    guide[12] = 0;
    guide[13] = 255;
    const auto unrounded = guidedFilter(guide, input, 5, 5, 1, 1, double{kDefaultEps});
    expectRounded(filtered(guide, input, 5, 5, 1, 1, kDefaultEps), unrounded);
    EXPECT_TRUE(std::any_of(unrounded.begin(), unrounded.end(), [](double q) {
        return q == 0.0 || q == 255.0;
    })) << "the case must reach the clamp";
}

TEST(GuidedFilter, NegativeRadiusCountsAsZero) {
    const Bytes guide = noise(60, kSeed), input = noise(60, kSeed + 1);
    EXPECT_EQ(filtered(guide, input, 10, 6, -3, -1, kDefaultEps), input);
}

TEST(GuidedFilter, RadiusBeyondTheImageIsTheWholeImage) {
    const Bytes guide = noise(60, kSeed), input = noise(60, kSeed + 1);
    const Bytes whole = filtered(guide, input, 10, 6, 10, 6, kDefaultEps);
    EXPECT_EQ(filtered(guide, input, 10, 6, 2147483647, 2147483647, kDefaultEps), whole);
}

TEST(GuidedFilter, ZeroOrNegativeEpsilonDoesNotDivideByZero) {
    const Bytes input = noise(60, kSeed);
    const Bytes flat(60, 50);
    const Bytes wanted = filtered(flat, input, 10, 6, 2, 2, kDefaultEps);
    EXPECT_EQ(filtered(flat, input, 10, 6, 2, 2, 0.0f), wanted);
    EXPECT_EQ(filtered(flat, input, 10, 6, 2, 2, -1.0f), wanted);
}

TEST(GuidedFilter, WithoutABufferDoesNothing) {
    guided_filter_qrv filter;
    EXPECT_EQ(filter.buffer(), nullptr);
    Bytes guide(4, 1), input(4, 2), output(4, 3);
    filter(guide.data(), input.data(), output.data(), 2, 2, 1, 1, kDefaultEps);
    EXPECT_THAT(output, Each(3));
}

TEST(GuidedFilter, BufferMayBeAssignedAgainForAnotherSize) {
    GuardedBytes small(bufferBytes(4, 4)), large(bufferBytes(20, 12));
    guided_filter_qrv filter;
    for (const auto& [w, h, working] :
         {std::tuple{4, 4, &small}, {20, 12, &large}, {20, 12, &large}, {4, 4, &small}}) {
        Bytes guide = noise(static_cast<size_t>(w * h), kSeed),
              input = noise(static_cast<size_t>(w * h), kSeed + 1);
        const auto unrounded = guidedFilter(guide, input, w, h, 2, 2, double{kDefaultEps});
        filter.assignBuffer(w, h, working->data());
        EXPECT_EQ(filter.buffer(), working->data());
        filter(guide.data(), input.data(), input.data(), w, h, 2, 2, kDefaultEps);
        expectRounded(input, unrounded);
    }
}

TEST(GuidedFilter, AssigningWritesNothing) {
    GuardedBytes working(bufferBytes(6, 6));
    const Bytes before = working.bytes();
    guided_filter_qrv filter;
    filter.assignBuffer(6, 6, working.data());
    EXPECT_EQ(working.bytes(), before);
}

TEST(GuidedFilter, ReleasingForgetsTheBufferWithoutFreeingIt) {
    auto working = std::make_unique<unsigned char[]>(bufferBytes(6, 6));
    {
        OpenFilter filter;
        filter.assignBuffer(6, 6, working.get());
        filter.releaseBuffer();
        EXPECT_EQ(filter.buffer(), nullptr);
        EXPECT_FALSE(filter.accepts(1, 1));
        filter.releaseBuffer();
    }
    working[0] = 1;  // still ours
}

TEST(GuidedFilter, DestructionLeavesTheBufferToItsOwner) {
    auto working = std::make_unique<unsigned char[]>(bufferBytes(6, 6));
    {
        guided_filter_qrv filter;
        filter.assignBuffer(6, 6, working.get());
    }
    working[bufferBytes(6, 6) - 1] = 1;
}

TEST(GuidedFilter, StatesItsBudget) {
    const guided_filter_qrv filter;
    EXPECT_EQ(filter.bufferSize(120, 67), 226624);
    EXPECT_EQ(filter.bufferSize(0, 0), 8);
}

TEST(GuidedFilter, AcceptsWhatFitsTheAssignedBuffer) {
    unsigned char byte = 0;
    guided_filter_qrv filter;
    EXPECT_FALSE(filter.accepts(1, 1));
    filter.assignBuffer(8, 4, &byte);
    EXPECT_TRUE(filter.accepts(8, 4));
    EXPECT_TRUE(filter.accepts(3, 3));
    EXPECT_FALSE(filter.accepts(9, 4));
}

TEST(GuidedFilter, RepeatedCallsGiveTheSame) {
    Bytes guide = noise(120, kSeed), input = noise(120, kSeed + 1), first(120), second(120);
    GuardedBytes working(bufferBytes(12, 10));
    guided_filter_qrv filter;
    filter.assignBuffer(12, 10, working.data());
    filter(guide.data(), input.data(), first.data(), 12, 10, 2, 2, kDefaultEps);
    filter(guide.data(), input.data(), second.data(), 12, 10, 2, 2, kDefaultEps);
    EXPECT_EQ(first, second);
}

#if defined(__GXX_ABI_VERSION)
/// The place in the class's table of virtual functions that a member pointer names (Itanium C++ ABI; the
/// lowest bit marks "virtual" on most machines).
template <typename Member>
size_t virtualSlot(Member member) {
    uintptr_t offset = 0;
    std::memcpy(&offset, &member, sizeof offset);
    return (offset & ~uintptr_t{1}) / sizeof(void*);
}

class SlotProbe : public guided_filter_qrv {
  public:
    static size_t releaseSlot() { return virtualSlot(&SlotProbe::releaseBuffer); }
};

TEST(GuidedFilter, VirtualOperationsStandInTheirDeclaredOrder) {
    // The destructor takes the first two places.
    EXPECT_EQ(virtualSlot(&guided_filter_qrv::operator()), 2u);
    EXPECT_EQ(virtualSlot(&guided_filter_qrv::assignBuffer), 5u);
    EXPECT_EQ(SlotProbe::releaseSlot(), 7u);
}
#endif

}  // namespace
}  // namespace quorvane::test
