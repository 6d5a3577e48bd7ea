// Every kernel between pages that nobody may touch, at every width from 1 to 70 and every ratio: one byte too
// far is a crash here and not on a device. What comes out is compared with the models on the way.

#include "support/component_test.h"
#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

constexpr int kRatios[] = {1, 2, 4, 8, 16, 32};
constexpr int kWidest = 70;
constexpr GuardedBytes::Against kBothEnds[] = {GuardedBytes::Against::end, GuardedBytes::Against::start};

class GuardPages : public ComponentTest {};

size_t area(int w, int h) { return static_cast<size_t>(w) * static_cast<size_t>(h); }

/// Calls run(w, h, ratio across, ratio down, against) for every output width and ratio. Heights of one and
/// two rows are where a window leaves the image at both ends at once.
template <typename Run>
void forEveryReduction(Run run) {
    for (const int ratio : kRatios)
        for (int w = 1; w <= kWidest; ++w)
            for (const auto& [h, ratio_v] : {std::pair{1, ratio}, {2, 1}})
                for (const auto against : kBothEnds) {
                    SCOPED_TRACE(testing::Message() << w << " x " << h << " at " << ratio << ", " << ratio_v);
                    run(w, h, ratio, ratio_v, against);
                    if (testing::Test::HasFatalFailure()) return;
                }
}

TEST_F(GuardPages, GrayReductionStaysBetweenThem) {
    const ESRenderer renderer;
    forEveryReduction([&](int w, int h, int ratio, int ratio_v, GuardedBytes::Against against) {
        const Bytes image = noise(area(w * ratio, h * ratio_v), static_cast<uint32_t>(w));
        const GuardedBytes source(image, against);
        GuardedBytes reduced(area(w, h), against);
        renderer.downsize(w * ratio, h * ratio_v, source.data(), w, h, reduced.data(), false);
        ASSERT_EQ(reduced.bytes(), reducedGray(image, w * ratio, h * ratio_v, w, h));
        ASSERT_TRUE(reduced.surroundingsUntouched());
    });
}

// The luma reduction may read its right margin past the image, 3 bytes a tap, and not one byte more. The
// widest kernel's last weight is 0, and that tap is not read: behind a one-cell grid's photo the block ends
// before it.
TEST_F(GuardPages, LumaReductionReadsItsMarginPastTheImageAndNoMore) {
    const ESRenderer renderer;
    forEveryReduction([&](int w, int h, int ratio, int ratio_v, GuardedBytes::Against against) {
        const size_t taps = ratio == 32 ? 9 : static_cast<size_t>(weightsOf(ratio).margin);
        Bytes image = noise(3 * area(w * ratio, h * ratio_v) + 3 * taps, static_cast<uint32_t>(w));
        const GuardedBytes source(image, against);
        GuardedBytes reduced(area(w, h), against);
        renderer.downsize(w * ratio, h * ratio_v, source.data(), w, h, reduced.data(), true);
        image.resize(image.size() + 3);
        ASSERT_EQ(reduced.bytes(), reducedLuma(image, w * ratio, h * ratio_v, w, h));
        ASSERT_TRUE(reduced.surroundingsUntouched());
    });
}

// A whole upload in a block of exactly the size asked for: reduction, both denoises, guided filter, contrast,
// grid.
TEST_F(GuardPages, WholeUploadStaysInItsBlock) {
    for (const int ratio : kRatios)
        for (int w = 1; w <= kWidest; ++w)
            for (const auto against : kBothEnds) {
                const int h = 1 + w % 3;
                SCOPED_TRACE(testing::Message() << w << " x " << h << " cells at " << ratio);
                Bytes photo = noise(3 * area(w * ratio, h * ratio), static_cast<uint32_t>(w));
                Bytes depth = noise(area(4 * w, 4 * h), static_cast<uint32_t>(ratio));
                GuardedBytes host_photo(photo, against);
                GuardedBytes host_depth(depth, against);
                ESRenderer renderer;
                prepared([&] {
                    renderer.params.guided_filter_rx = w % 5;
                    renderer.params.guided_filter_ry = w % 4;
                    const int bytes = renderer.getRequiredMemSize(w * ratio, h * ratio, 4 * w, 4 * h);
                    // Vertices and indices want a block aligned to four bytes, at either end.
                    GuardedBytes block(static_cast<size_t>(bytes + 3) / 4 * 4, against);
                    renderer.assignMem(block.data());
                    renderer.setupGraphics(64, 48);
                    renderer.setupVertices();
                    renderer.setTexture(w * ratio, h * ratio, host_photo.data());
                    renderer.setDepth(4 * w, 4 * h, host_depth.data());
                    ASSERT_TRUE(block.surroundingsUntouched());
                });
                ASSERT_EQ(host_photo.bytes(), photo);
                ASSERT_EQ(host_depth.bytes(), depth);
                ASSERT_EQ(gl.texture_uploads.size(), 2u);
                ASSERT_EQ(gl.texture_uploads.back().width, w);
                gl.reset();
            }
}

}  // namespace
}  // namespace quorvane::test
