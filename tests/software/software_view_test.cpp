// The view that the processor draws against the one that draws with OpenGL ES: both are asked the same.

#include "software/SoftwareView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/ParallaxView.h"

namespace quorvane {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes photoOf(int width, int height) {
    Bytes rgb;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double s = (x + 0.5) / width, t = (y + 0.5) / height;
            rgb.push_back(static_cast<uint8_t>(125 + 85 * std::sin(23 * s) * std::cos(19 * t)));
            rgb.push_back(static_cast<uint8_t>(30 + 200 * t));
            rgb.push_back(static_cast<uint8_t>(220 - 190 * s));
        }
    return rgb;
}

Bytes depthOf(int width, int height) {
    Bytes depth;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double s = (x + 0.5) / width, t = (y + 0.5) / height;
            depth.push_back(static_cast<uint8_t>(std::hypot(s - 0.6, t - 0.4) < 0.2 ? 230 : 40 + 90 * t));
        }
    return depth;
}

class BothViews : public testing::Test {
  protected:
    void SetUp() override {
        const Status made = OffscreenContext::create(&m_context);
        if (!made) GTEST_SKIP() << "NO GRAPHICS DRIVER, NOT TESTED: " << made.message();
    }

    void open(int width, int height, uint32_t orientation, int samples) {
        m_gl.reset();
        ASSERT_TRUE(ParallaxView::create(width, height, ViewOptions{orientation, samples}, &m_gl).ok());
        ASSERT_TRUE(SoftwareView::create(width, height, {orientation, samples, 2}, &m_software).ok());
    }

    /// Has both do it, and expects the same answer of them.
    Status ask(const std::function<Status(PhotoView*)>& what) {
        const Status status = what(m_gl.get());
        EXPECT_EQ(what(m_software.get()).message(), status.message());
        return status;
    }

    static Bytes picture(const PhotoView& view) {
        Bytes rgba(size_t{4} * static_cast<size_t>(view.width()) * static_cast<size_t>(view.height()));
        EXPECT_TRUE(view.readPixels({rgba, view.width(), view.height()}).ok());
        return rgba;
    }

    std::unique_ptr<OffscreenContext> m_context;
    std::unique_ptr<ParallaxView> m_gl;
    std::unique_ptr<SoftwareView> m_software;
};

Bytes bytesOf(const Pixels& pixels) { return Bytes(pixels.data, pixels.data + pixels.bytes); }

TEST_F(BothViews, DrawTheSamePictures) {
    for (const uint32_t orientation : {4u, 0u})
        for (const bool portrait : {false, true}) {
            const int width = portrait ? 200 : 300, height = portrait ? 300 : 200;
            open(width, height, orientation, 1);
            const Bytes photo = photoOf(width, height), depth = depthOf(width, height);
            ASSERT_TRUE(ask([&](PhotoView* view) { return view->setPhoto({photo, width, height}); }).ok());
            ASSERT_TRUE(ask([&](PhotoView* view) { return view->setDepth({depth, width, height}); }).ok());
            EXPECT_EQ(bytesOf(m_software->guide()), bytesOf(m_gl->guide()));
            EXPECT_EQ(bytesOf(m_software->shapedDepth()), bytesOf(m_gl->shapedDepth()));
            for (const auto& [x, y] : {std::pair(0.0f, 0.0f), {-1.0f, 0.0f}, {0.8f, -0.7f}, {0.3f, 1.0f}}) {
                ASSERT_TRUE(ask([x = x, y = y](PhotoView* view) { return view->lookAt(x, y); }).ok());
                ASSERT_TRUE(ask([](PhotoView* view) { return view->render(); }).ok());
                const Bytes gl = picture(*m_gl), software = picture(*m_software);
                double sum = 0, beyond = 0;
                for (size_t i = 0; i < gl.size(); ++i) {
                    const int difference = std::abs(gl[i] - software[i]);
                    sum += difference;
                    beyond += difference > 2 ? 1 : 0;
                }
                const double count = static_cast<double>(gl.size());
                EXPECT_LT(sum / count, 0.25) << x << ", " << y;
                EXPECT_LT(beyond / count, 0.005) << x << ", " << y;
            }
        }
}

TEST_F(BothViews, TakeTheSameParameters) {
    open(96, 64, 4, 1);
    const Bytes photo = photoOf(96, 64), depth = depthOf(96, 64);
    for (const auto& [name, value] : {std::pair("rotate_z_trans", 36.5),
                                      {"fov_scale", 0.6},
                                      {"depth_contrast", 31.0},
                                      {"guided_filter_rx", 0.0},
                                      {"rotate_x_boundary", -20.0},
                                      {"trans_to_rotate_scale", 0.9},
                                      {"border_deadzone", 7.0}})
        ASSERT_TRUE(ask([&, name = name, value = value](PhotoView* view) {
                        return view->setParameter(name, value);
                    }).ok());
    ASSERT_TRUE(ask([&](PhotoView* view) { return view->setPhoto({photo, 96, 64}); }).ok());
    ASSERT_TRUE(ask([&](PhotoView* view) { return view->setDepth({depth, 96, 64}); }).ok());
    ASSERT_TRUE(ask([](PhotoView* view) { return view->lookAt(1, -1); }).ok());
    ASSERT_TRUE(ask([](PhotoView* view) { return view->render(); }).ok());
    const Bytes gl = picture(*m_gl), software = picture(*m_software);
    int beyond = 0;
    for (size_t i = 0; i < gl.size(); ++i) beyond += std::abs(gl[i] - software[i]) > 2 ? 1 : 0;
    EXPECT_LT(beyond, 96 * 64 * 4 / 100);

    const Geometry wanted = m_gl->geometry(), geometry = m_software->geometry();
    EXPECT_EQ(geometry.grid_width, wanted.grid_width);
    EXPECT_EQ(geometry.grid_height, wanted.grid_height);
    EXPECT_EQ(geometry.colour_ratio_x, wanted.colour_ratio_x);
    EXPECT_EQ(geometry.colour_ratio_y, wanted.colour_ratio_y);
    EXPECT_EQ(geometry.block_bytes, wanted.block_bytes);
    EXPECT_EQ(geometry.half_width, wanted.half_width);
    EXPECT_EQ(geometry.half_height, wanted.half_height);
    EXPECT_EQ(geometry.pivot_distance, wanted.pivot_distance);
    EXPECT_EQ(geometry.still_depth, wanted.still_depth);
    EXPECT_EQ(geometry.x_turn_deg, wanted.x_turn_deg);
    // At the right border, from which the dead zone and a pixel hold the view off.
    EXPECT_NEAR(geometry.x_turn_deg, -20.0 * 0.9 * (96 - 1 - 96 / 7.0 - 48) / 48, 1e-3);
    EXPECT_EQ(geometry.visible, wanted.visible);
}

TEST_F(BothViews, RefuseTheSameInTheSameWords) {
    open(96, 64, 4, 1);
    const Bytes photo = photoOf(96, 64), depth = depthOf(96, 64);
    Bytes rgba(4 * 96 * 64);
    const auto refused = [&](const std::function<Status(PhotoView*)>& what) { EXPECT_FALSE(ask(what).ok()); };
    refused([&](PhotoView* view) { return view->setDepth({depth, 96, 64}); });
    refused([](PhotoView* view) { return view->render(); });
    refused([&](PhotoView* view) { return view->readPixels({rgba, 96, 64}); });
    refused([&](PhotoView* view) { return view->setPhoto({photo, 0, 64}); });
    refused([&](PhotoView* view) { return view->setPhoto({photo, 97, 64}); });
    refused([&](PhotoView* view) { return view->setParameter("fov_scal", 1); });
    refused([&](PhotoView* view) { return view->setParameter("fov_scale", 2); });
    refused([&](PhotoView* view) { return view->setParameter("guided_filter_rx", 1.5); });
    refused([&](PhotoView* view) { return view->lookAt(std::numeric_limits<float>::quiet_NaN(), 0); });
    ASSERT_TRUE(ask([&](PhotoView* view) { return view->setPhoto({photo, 96, 64}); }).ok());
    refused([](PhotoView* view) { return view->render(); });
    refused([&](PhotoView* view) { return view->setDepth({depth, 3, 64}); });
    refused([&](PhotoView* view) { return view->setDepth({depth, 94, 64}); });
    refused([&](PhotoView* view) { return view->setDepth({depth, 20, 64}); });
    ASSERT_TRUE(ask([&](PhotoView* view) { return view->setDepth({depth, 96, 64}); }).ok());
    ASSERT_TRUE(ask([](PhotoView* view) { return view->render(); }).ok());
    refused([&](PhotoView* view) { return view->readPixels({rgba, 64, 96}); });
    refused([&](PhotoView* view) { return view->readPixels({rgba.data(), 99, 96, 64}); });
    // A photo of another size unsets the depth map.
    ASSERT_TRUE(ask([&](PhotoView* view) { return view->setPhoto({photo, 48, 32}); }).ok());
    refused([](PhotoView* view) { return view->render(); });

    std::unique_ptr<ParallaxView> gl;
    std::unique_ptr<SoftwareView> software;
    for (const int samples : {-1, 3, 16})
        EXPECT_EQ(ParallaxView::create(8, 8, ViewOptions{4, samples}, &gl).message(),
                  SoftwareView::create(8, 8, {4, samples, 1}, &software).message());
    EXPECT_EQ(SoftwareView::create(0, 8, {4, 1, 1}, &software).message(),
              "output: 0 x 8 pixels; each side must be 1 to 16384");
}

// By hand: 19.7 million cells, 112 bytes each with the pixel of the photo, are 2.2 GB.
TEST(SoftwareView, RefusesMoreWorkingMemoryThanTheRendererCounts) {
    constexpr int kWidth = 16384, kHeight = 1200;
    constexpr size_t kPhoto = size_t{3} * kWidth * kHeight, kDepth = size_t{16} * kWidth * kHeight;
    // Zeroes that take no memory: the depth map is refused unread.
    const auto zeroes = [](size_t bytes) {
        return std::unique_ptr<uint8_t, void (*)(void*)>(static_cast<uint8_t*>(std::calloc(bytes, 1)),
                                                         std::free);
    };
    const auto photo = zeroes(kPhoto), depth = zeroes(kDepth);
    ASSERT_TRUE(photo && depth);
    std::unique_ptr<SoftwareView> view;
    ASSERT_TRUE(SoftwareView::create(24, 16, {4, 1, 1}, &view).ok());
    ASSERT_TRUE(view->setPhoto({photo.get(), kPhoto, kWidth, kHeight}).ok());
    EXPECT_EQ(
        view->setDepth({depth.get(), kDepth, 4 * kWidth, 4 * kHeight}).message(),
        "a 16384 x 1200 photo with a 65536 x 4800 depth map needs 2.2 GB of working memory; 2 GB is the "
        "limit");
    EXPECT_EQ(view->geometry().grid_width, 0);
}

TEST(SoftwareView, PaddingOfTheRowsThatItFillsStaysAsItWas) {
    std::unique_ptr<SoftwareView> view;
    ASSERT_TRUE(SoftwareView::create(24, 16, {}, &view).ok());
    EXPECT_EQ(view->samples(), 4);
    ASSERT_TRUE(view->setPhoto({photoOf(24, 16), 24, 16}).ok());
    ASSERT_TRUE(view->setDepth({depthOf(24, 16), 24, 16}).ok());
    ASSERT_TRUE(view->render().ok());
    Bytes padded(100 * 16, 7), tight(96 * 16);
    ASSERT_TRUE(view->readPixels({padded, 24, 16, 100}).ok());
    ASSERT_TRUE(view->readPixels({tight, 24, 16}).ok());
    for (size_t i = 0; i < padded.size(); ++i)
        ASSERT_EQ(padded[i], i % 100 < 96 ? tight[i / 100 * 96 + i % 100] : 7);
}

// The same picture, whose colours mesh_drawing_test.cpp compares.
TEST(SoftwareView, DrawsStraightIntoPlanes) {
    std::unique_ptr<SoftwareView> view;
    ASSERT_TRUE(SoftwareView::create(24, 16, {}, &view).ok());
    EXPECT_TRUE(view->drawsYuv420());
    Bytes planes(24 * 16 * 3 / 2 + 1, 7);
    EXPECT_EQ(view->renderYuv420(planes.data(), planes.size()).message(), "nothing to draw: no photo is set");
    // A gray photo: by hand, 16 + 219 * 100 / 255 is 101.9.
    ASSERT_TRUE(view->setPhoto({Bytes(3 * 24 * 16, 100), 24, 16}).ok());
    ASSERT_TRUE(view->setDepth({depthOf(24, 16), 24, 16}).ok());
    EXPECT_EQ(view->renderYuv420(planes.data(), 24 * 16 * 3 / 2 - 1).message(),
              "drawing Y'CbCr: 24 x 16 pixels take 576 bytes, and there are 575");
    EXPECT_EQ(planes, Bytes(24 * 16 * 3 / 2 + 1, 7));
    ASSERT_TRUE(view->renderYuv420(planes.data(), planes.size()).ok());
    for (size_t i = 0; i < 576; ++i) ASSERT_EQ(planes[i], i < 384 ? 102 : 128) << i;
    EXPECT_EQ(planes[576], 7);
    Bytes rgba(4 * 24 * 16);
    EXPECT_FALSE(view->readPixels({rgba, 24, 16}).ok()) << "nothing was drawn to be read";
    ASSERT_TRUE(view->resize(24, 15).ok());
    EXPECT_EQ(view->renderYuv420(planes.data(), planes.size()).message(),
              "drawing Y'CbCr: 24 x 15 pixels; both sides must be even");
}

}  // namespace
}  // namespace quorvane

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Of Mesa's software drivers, the one that is exact.
    setenv("GALLIUM_DRIVER", "softpipe", 0);
    return RUN_ALL_TESTS();
}
