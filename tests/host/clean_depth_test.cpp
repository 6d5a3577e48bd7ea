#include <quorvane/host/CleanDepth.h>

#include "host_test.h"

namespace quorvane::test {
namespace {

constexpr int kWidth = 640, kHeight = 480;
constexpr int kPoleLeft = 318, kPoleRight = 326;

size_t pixelAt(int x, int y, int width) {
    return static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
}

Bytes poleDepth(uint8_t wall) {
    Bytes depth(kWidth * kHeight, wall);
    for (int y = 0; y < kHeight; ++y)
        for (int x = kPoleLeft; x < kPoleRight; ++x) depth[pixelAt(x, y, kWidth)] = 200;
    return depth;
}

CleanDepth clean(const Pixels& depth, int photo_width, int photo_height, int triangles) {
    CleanDepth made;
    const Status status = cleanDepth(depth, photo_width, photo_height, triangles, &made);
    EXPECT_TRUE(status) << status.message();
    EXPECT_EQ(made.samples.size(), static_cast<size_t>(made.width) * static_cast<size_t>(made.height));
    return made;
}

TEST(CleanDepth, HasTheFinestGridWithinTheTriangles) {
    const Bytes depth(kWidth * kHeight, 9);
    const auto width = [&](int triangles) {
        return clean({depth, kWidth, kHeight}, kWidth, kHeight, triangles).width;
    };
    EXPECT_EQ(width(1000000), 4 * 640);         // 614400 triangles
    EXPECT_EQ(width(400000), 4 * 320);          // 153600
    EXPECT_EQ(width(kLiveTriangles), 4 * 160);  // 38400
    EXPECT_EQ(width(1), 4 * 20);
}

TEST(CleanDepth, TakesMapsOfAnySizeAndRowsWithPadding) {
    Bytes depth(3 * 2 + 2, 50);
    depth[3] = depth[4] = 255;  // padding
    const CleanDepth made = clean(Pixels(depth, 3, 2, 5), 64, 48, kLiveTriangles);
    EXPECT_EQ(made.width, 4 * 64);
    for (const uint8_t sample : made.samples) ASSERT_EQ(sample, 50);
}

TEST(CleanDepth, SaysWhatItCannotTake) {
    const Bytes depth(12, 9);
    CleanDepth made;
    EXPECT_EQ(sentence(cleanDepth({depth, 4, 4}, 64, 48, 1000, &made)),
              "depth map: 4 x 4 pixels take 16 bytes; 12 are given");
    EXPECT_EQ(sentence(cleanDepth({depth, 0, 4}, 64, 48, 1000, &made)),
              "depth map: 0 x 4 pixels; each side must be 1 to 65536");
    EXPECT_EQ(sentence(cleanDepth({depth, 4, 3}, 64, -1, 1000, &made)),
              "photo: 64 x -1 pixels; each side must be 1 to 65536");
    EXPECT_EQ(sentence(cleanDepth({depth, 4, 3}, 65536, 65536, 1000, &made)),
              "photo: 65536 x 65536 pixels take more than 2 GB of working memory");
    EXPECT_EQ(made.width, 0);
}

class CleanDepthOnDriver : public DriverTest {
  protected:
    /// How many pixels of the middle row show a white pole when the view looks from the side.
    int poleWidth(const Pixels& depth, int guided_filter_radius) {
        Bytes photo(3 * kWidth * kHeight, 0);
        for (int y = 0; y < kHeight; ++y)
            for (int x = kPoleLeft; x < kPoleRight; ++x)
                for (size_t c = 0; c < 3; ++c) photo[3 * pixelAt(x, y, kWidth) + c] = 255;
        std::unique_ptr<ParallaxView> view;
        EXPECT_TRUE(ParallaxView::create(2 * kWidth, 2 * kHeight, 4, &view));
        EXPECT_TRUE(view->setPhoto({photo, kWidth, kHeight}));
        EXPECT_TRUE(view->setParameter("guided_filter_rx", guided_filter_radius));
        EXPECT_TRUE(view->setParameter("guided_filter_ry", guided_filter_radius));
        const Status status = view->setDepth(depth);
        EXPECT_TRUE(status) << status.message();
        EXPECT_TRUE(view->lookAt(1.0f, 0.0f));
        EXPECT_TRUE(view->render());
        Bytes picture(16 * kWidth * kHeight);
        EXPECT_TRUE(view->readPixels({picture, 2 * kWidth, 2 * kHeight}));
        int white = 0;
        for (int x = 0; x < 2 * kWidth; ++x)
            white += picture[4 * pixelAt(x, kHeight, 2 * kWidth)] > 127 ? 1 : 0;
        return white;
    }
};

// A near pole before a far wall is as wide as where everything is as near as the pole.
TEST_F(CleanDepthOnDriver, NearThingsKeepTheirWidth) {
    const Bytes flat = poleDepth(200), jump = poleDepth(20);
    const int true_width = poleWidth({flat, kWidth, kHeight}, 2);
    const CleanDepth made = clean({jump, kWidth, kHeight}, kWidth, kHeight, 1000000);
    const int clean_width = poleWidth({made.samples, made.width, made.height}, made.guided_filter_radius);
    EXPECT_GT(true_width, 10);
    EXPECT_NEAR(clean_width, true_width, 1);
    EXPECT_GE(std::abs(poleWidth({jump, kWidth, kHeight}, 2) - true_width), 2);  // as it is given
}

}  // namespace
}  // namespace quorvane::test
