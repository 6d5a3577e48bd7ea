#include <algorithm>
#include <cmath>

#include "scene.h"
#include "support/dump_directory.h"
#include "support/guarded_bytes.h"

namespace quorvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Colour kRed = {255, 0, 0}, kGreen = {0, 255, 0}, kBlue = {0, 0, 255}, kWhite = {255, 255, 255},
                 kBlack = {0, 0, 0};

// The driver weighs texels in steps of 1/256 on either axis, each at most one level of 255 off, and rounds
// the result.
constexpr int kSamplingTolerance = 3;

class GlPicture : public GlTest {
  protected:
    void TearDown() override {
        if (context) {
            EXPECT_THAT(log.textsStartingWith("after "), IsEmpty());
            EXPECT_THAT(log.textsStartingWith("EGL"), IsEmpty());
        }
    }
};

TEST_F(GlPicture, EveryPixelOfTheTargetIsDrawn) {
    Scene scene({60, 80, 24, 32, 96, 128});
    scene.setPhoto(paintedPhoto(24, 32, [](int x, int y) { return Colour{x * 4, y * 4, 90}; }));
    scene.setFlatDepth(100);
    EXPECT_EQ(scene.frame().countOf(kMarker), 0);
}

TEST_F(GlPicture, FlatDepthAtRestShowsTheCroppedPhoto) {
    const Bytes photo = noise(32 * 24 * 3, 5);
    Scene scene({96, 72, 32, 24, 128, 96});
    scene.setPhoto(photo);
    for (const int depth : {0, 90, 255}) {
        scene.setFlatDepth(depth);
        const Picture picture = scene.frame();
        EXPECT_LE(largestDifference(picture, croppedPhoto(photo, 32, 24, 96, 72)), kSamplingTolerance)
            << "depth " << depth;
    }
}

TEST_F(GlPicture, LargerPhotoAtRestIsCroppedTheSame) {
    const Bytes photo = noise(64 * 64 * 3, 6);
    Scene scene({48, 90, 64, 64, 64, 64});
    scene.setPhoto(photo);
    scene.setFlatDepth(100);
    EXPECT_LE(largestDifference(scene.frame(), croppedPhoto(photo, 64, 64, 48, 90)), kSamplingTolerance);
}

TEST_F(GlPicture, AlphaIsOpaqueEverywhere) {
    Scene scene({32, 32, 16, 16, 64, 64});
    scene.setPhoto(noise(16 * 16 * 3, 7));
    scene.setFlatDepth(100);
    const Picture picture = scene.frame();
    for (size_t i = 3; i < picture.rgba.size(); i += 4) ASSERT_EQ(picture.rgba[i], 255);
}

TEST_F(GlPicture, FourQuartersStandUpright) {
    Scene scene({64, 64, 16, 16, 64, 64});
    scene.setPhoto(paintedPhoto(16, 16, [](int x, int y) {
        if (y < 8) return x < 8 ? kRed : kGreen;
        return x < 8 ? kBlue : kWhite;
    }));
    scene.setFlatDepth(100);
    const Picture picture = scene.frame();
    // The photo's first row is the read-back's first.
    EXPECT_EQ(picture.at(5, 5), kRed);
    EXPECT_EQ(picture.at(58, 5), kGreen);
    EXPECT_EQ(picture.at(5, 58), kBlue);
    EXPECT_EQ(picture.at(58, 58), kWhite);
}

TEST_F(GlPicture, SecondFrameIsTheSame) {
    Scene scene({64, 48, 32, 24, 128, 96});
    scene.setPhoto(noise(32 * 24 * 3, 8));
    scene.setDepth(noise(128 * 96, 9));
    const Picture first = scene.frame();
    EXPECT_EQ(largestDifference(scene.frame(), first), 0);
    EXPECT_EQ(scene.renderer().m_renderCount, 2u);
}

// The swing

/// A photo that is black but for a white line through the middle, and where that line stands in a picture.
struct Line {
    static Bytes upright(int w, int h) {
        return paintedPhoto(w, h, [=](int x, int) { return x == w / 2 - 1 || x == w / 2 ? kWhite : kBlack; });
    }
    static Bytes level(int w, int h) {
        return paintedPhoto(w, h, [=](int, int y) { return y == h / 2 - 1 || y == h / 2 ? kWhite : kBlack; });
    }
    static double column(const Picture& p) {
        double weight = 0, sum = 0;
        for (int x = 0; x < p.width; ++x) {
            weight += p.at(x, p.height / 2).r;
            sum += p.at(x, p.height / 2).r * (x + 0.5);
        }
        return sum / weight;
    }
    static double row(const Picture& p) {
        double weight = 0, sum = 0;
        for (int y = 0; y < p.height; ++y) {
            weight += p.at(p.width / 2, y).r;
            sum += p.at(p.width / 2, y).r * (y + 0.5);
        }
        return sum / weight;
    }
};

TEST_F(GlPicture, LargerDepthMovesAgainstSmallerWhenTheViewSwings) {
    Scene scene({128, 64, 64, 32, 256, 128});
    scene.setPhoto(Line::upright(64, 32));
    const auto column = [&](int depth, float position) {
        scene.setFlatDepth(depth);
        scene.renderer().m_transX = position;
        return Line::column(scene.frame());
    };
    EXPECT_NEAR(column(255, 0.0f), 64.0, 0.1);
    EXPECT_NEAR(column(0, 0.0f), 64.0, 0.1);
    // Near things lie before the pivot and far ones behind it.
    EXPECT_LT(column(255, 1.0f), 64.0 - 0.5);
    EXPECT_GT(column(0, 1.0f), 64.0 + 0.3);
    EXPECT_GT(column(255, -1.0f), 64.0 + 0.5);
    EXPECT_LT(column(0, -1.0f), 64.0 - 0.3);
}

TEST_F(GlPicture, SwingMovesALineWhereTheGeometryPutsIt) {
    Scene scene({256, 64, 64, 16, 256, 64});
    scene.setPhoto(Line::upright(64, 16));
    scene.renderer().params.depth_contrast = 32.0f;
    for (const int depth : {0, 60, 128, 255})
        for (const float position : {-1.0f, -0.4f, 0.7f, 1.0f}) {
            scene.setFlatDepth(depth);
            scene.renderer().m_transX = position;
            const double expected = scene.projected(0.5, 0.5, kContrastCurve[static_cast<size_t>(depth)]).x;
            EXPECT_NEAR(Line::column(scene.frame()), expected, 0.25)
                << "depth " << depth << " at " << position;
        }
}

TEST_F(GlPicture, SwingAcrossMovesALevelLineWhereTheGeometryPutsIt) {
    Scene scene({64, 256, 16, 64, 64, 256});
    scene.setPhoto(Line::level(16, 64));
    scene.renderer().params.depth_contrast = 32.0f;
    for (const int depth : {0, 128, 255})
        for (const float position : {-1.0f, 0.5f, 1.0f}) {
            scene.setFlatDepth(depth);
            scene.renderer().m_transY = position;
            const double expected = scene.projected(0.5, 0.5, kContrastCurve[static_cast<size_t>(depth)]).y;
            EXPECT_NEAR(Line::row(scene.frame()), expected, 0.25) << "depth " << depth << " at " << position;
        }
}

Picture mirrored(const Picture& picture) {
    Picture result = picture;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            for (int c = 0; c < 4; ++c)
                result.rgba[static_cast<size_t>(4 * (y * picture.width + x) + c)] =
                    picture.rgba[static_cast<size_t>(4 * (y * picture.width + picture.width - 1 - x) + c)];
    return result;
}

Bytes mirrorSymmetricPhoto(int w, int h) {
    return paintedPhoto(w, h, [=](int x, int y) {
        const int from_edge = std::min(x, w - 1 - x);
        return Colour{(from_edge * 37) % 256, (from_edge * 11 + y * 23) % 256, (y * 41) % 256};
    });
}

TEST_F(GlPicture, OppositePositionsMirrorAMirroredScene) {
    Scene scene({96, 64, 48, 32, 192, 128});
    scene.setPhoto(mirrorSymmetricPhoto(48, 32));
    scene.setFlatDepth(200);
    for (const float position : {0.3f, 1.0f}) {
        scene.renderer().m_transX = position;
        const Picture right = scene.frame();
        scene.renderer().m_transX = -position;
        const Picture left = scene.frame();
        EXPECT_LE(largestDifference(left, mirrored(right)), kSamplingTolerance);
        EXPECT_GT(meanDifference(left, right), 1.0) << "the swing must show at all";
    }
}

TEST_F(GlPicture, OppositePositionsMirrorAMirroredHill) {
    // Smooth, because a cell's diagonal is not mirrored; with a depth buffer, because the drawing order is
    // not.
    Scene scene({96, 64, 48, 32, 192, 128});
    scene.attachDepthBuffer();
    scene.setPhoto(mirrorSymmetricPhoto(48, 32));
    Bytes hill;
    for (int y = 0; y < 128; ++y)
        for (int x = 0; x < 192; ++x)
            hill.push_back(static_cast<uint8_t>(std::lround(
                100 + 120 * std::exp(-((x - 95.5) * (x - 95.5) / 2000 + (y - 63.5) * (y - 63.5) / 900)))));
    scene.setDepth(hill);
    scene.renderer().m_transX = 0.8f;
    const Picture right = scene.frame();
    scene.renderer().m_transX = -0.8f;
    // The diagonals differ by a fraction of a cell's relief; a wrong sign anywhere gives tens of levels.
    EXPECT_LT(meanDifference(scene.frame(), mirrored(right)), 2.0);
}

TEST_F(GlPicture, RotationSwingsLikeItsViewPosition) {
    Scene scene({96, 64, 48, 32, 192, 128});
    scene.setPhoto(noise(48 * 32 * 3, 10));
    scene.setFlatDepth(220);
    prepared([&] { scene.renderer().setRotation(72.0f, 16.0f, 0.0f); });
    const Picture by_rotation = scene.frame();
    scene.renderer().m_transX = 0.5f;
    scene.renderer().m_transY = -0.5f;
    EXPECT_EQ(largestDifference(scene.frame(), by_rotation), 0);
}

// Sizes

TEST_F(GlPicture, GridWithMoreVerticesThan16BitsCountIsDrawnWhole) {
    const Bytes photo = paintedPhoto(256, 192, [](int x, int y) { return Colour{x, y, (x + y) / 2}; });
    Scene scene({128, 96, 256, 192, 1024, 768});
    scene.setPhoto(photo);
    scene.setFlatDepth(100);
    EXPECT_EQ(scene.renderer().m_eleCount, 256 * 192 * 6);
    // Each pixel is smaller than a texel step here, where the gradient changes by one level.
    EXPECT_LE(largestDifference(scene.frame(), croppedPhoto(photo, 256, 192, 128, 96)), kSamplingTolerance);
}

TEST_F(GlPicture, AnotherOutputSizeIsDrawnWhole) {
    const Bytes photo = noise(32 * 24 * 3, 11);
    Scene scene({96, 72, 32, 24, 128, 96});
    scene.setPhoto(photo);
    scene.setFlatDepth(100);
    scene.frame();
    Target other(50, 110);
    other.fill(kMarker);
    observed([&] {
        ESRenderer& r = scene.renderer();
        ASSERT_TRUE(r.setupGraphics(50, 110));
        r.setupVertices();
        ASSERT_TRUE(r.setOutTexture(other.texture()));
        r.renderFrame();
    });
    EXPECT_LE(largestDifference(other.read(), croppedPhoto(photo, 32, 24, 50, 110)), kSamplingTolerance);
}

// The host's framebuffer and photo

TEST_F(GlPicture, FramebufferThatTheHostLeftBoundIsCleared) {
    Scene scene({32, 32, 16, 16, 64, 64});
    scene.setPhoto(Bytes(16 * 16 * 3, 200));
    scene.setFlatDepth(100);
    Target other(32, 32);
    other.fill(kMarker);
    scene.target().fill(kMarker);
    glBindFramebuffer(GL_FRAMEBUFFER, other.framebuffer());
    observed([&] { scene.renderer().renderFrame(); });
    EXPECT_EQ(other.read().countOf(kBlack), 32 * 32);
    EXPECT_EQ(scene.target().read().countOf({200, 200, 200}), 32 * 32);
}

TEST_F(GlPicture, OutputIsNotClearedWhileAnotherFramebufferIsBound) {
    Scene scene({32, 32, 16, 16, 64, 64});
    scene.setPhoto(Bytes(16 * 16 * 3, 200));
    scene.setFlatDepth(100);
    scene.renderer().params.fov_scale = 2.0f;  // the mesh fills the middle half only
    EXPECT_EQ(scene.frame().at(1, 1), kBlack);
    Target other(32, 32);
    scene.target().fill(kMarker);
    glBindFramebuffer(GL_FRAMEBUFFER, other.framebuffer());
    observed([&] { scene.renderer().renderFrame(); });
    const Picture picture = scene.target().read();
    EXPECT_EQ(picture.at(1, 1), kMarker);
    EXPECT_EQ(picture.at(16, 16), (Colour{200, 200, 200}));
}

TEST_F(GlPicture, OtherTexturesOfTheHostAreNotTouched) {
    Target hosts(16, 16);
    hosts.fill({1, 2, 3});
    Scene scene({32, 32, 16, 16, 64, 64});
    scene.setPhoto(Bytes(16 * 16 * 3, 200));
    scene.setFlatDepth(100);
    scene.frame();
    EXPECT_EQ(hosts.read().countOf({1, 2, 3}), 16 * 16);
}

TEST_F(GlPicture, AdoptedPhotoIsDrawn) {
    Scene scene({32, 32, 16, 16, 64, 64});
    scene.setPhoto(Bytes(16 * 16 * 3, 200));
    scene.setFlatDepth(100);
    Target host_photo(16, 16);
    host_photo.fill({10, 120, 230});
    const GLuint own = scene.renderer().m_texName;
    prepared([&] { scene.renderer().setTexture(16, 16, host_photo.texture()); });
    EXPECT_EQ(scene.frame().countOf({10, 120, 230}), 32 * 32);
    EXPECT_TRUE(glIsTexture(own));
    scene.renderer().m_texName = own;  // so that each is deleted once
}

TEST_F(GlPicture, DepthBufferOfTheHostLetsNearHideFar) {
    // The left half near and red, the right half far and green. With the view swung so that the near edge
    // slides over the far half, the edge cell's triangles overlap.
    const auto reds = [this](bool depth_buffer) {
        Scene scene({128, 32, 64, 16, 256, 64});
        if (depth_buffer) scene.attachDepthBuffer();
        scene.setPhoto(paintedPhoto(64, 16, [](int x, int) { return x < 32 ? kRed : kGreen; }));
        scene.renderer().params.depth_contrast = 32.0f;
        scene.renderer().params.guided_filter_rx = scene.renderer().params.guided_filter_ry = 0;
        Bytes depth;
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 256; ++x) depth.push_back(x < 128 ? 255 : 0);
        scene.setDepth(depth);
        scene.renderer().m_transX = -5.0f;
        const Picture picture = scene.frame();
        int count = 0;
        for (int x = 0; x < 128; ++x) count += picture.at(x, 16).r > 128 ? 1 : 0;
        return count;
    };
    EXPECT_GT(reds(true), reds(false));
}

TEST_F(GlPicture, DumpedFrameIsThePicture) {
    const DumpDirectory directory(DumpDirectory::State::present);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    Scene scene({40, 30, 16, 12, 64, 48});
    scene.setPhoto(noise(16 * 12 * 3, 12));
    scene.setFlatDepth(100);
    scene.renderer().m_debugEnable = 1;
    const Picture picture = scene.frame();
    Bytes rgb;
    for (size_t i = 0; i < picture.rgba.size(); ++i)
        if (i % 4 != 3) rgb.push_back(picture.rgba[i]);
    EXPECT_THAT(directory.files(), ElementsAre("output_1_40_30_0_0.ppm"));
    EXPECT_EQ(fileBytes(DumpDirectory::path("output_1_40_30_0_0.ppm")), netpbm("P6", 40, 30, rgb));
}

}  // namespace
}  // namespace quorvane::test
