#include <algorithm>
#include <cmath>
#include <limits>

#include "support/clock.h"
#include "support/component_test.h"
#include "support/dump_directory.h"
#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class DepthMap : public ComponentTest {
  protected:
    /// A photo of the grid's size, so that the guide is its luma.
    void begin(int depth_w, int depth_h, const Bytes& photo_pixels) {
        w = depth_w / 4;
        h = depth_h / 4;
        rig = std::make_unique<Rig>(w, h, depth_w, depth_h);
        renderer = &rig->renderer;
        photo = photo_pixels;
        prepared([&] { renderer->setTexture(w, h, photo.data()); });
        gl.texture_uploads.clear();
    }

    void beginGray(int depth_w, int depth_h) {
        begin(depth_w, depth_h, Bytes(static_cast<size_t>(3 * (depth_w / 4) * (depth_h / 4)), 128));
    }

    /// Radius 0 makes the guided filter leave its input.
    void switchFilterOff() { renderer->params.guided_filter_rx = renderer->params.guided_filter_ry = 0; }

    void set(const Bytes& depth, int depth_w, int depth_h) {
        GuardedBytes host(depth);
        observed([&] { renderer->setDepth(depth_w, depth_h, host.data()); });
        EXPECT_EQ(host.bytes(), depth);
    }

    Bytes plane(const void* area) const {
        const auto* bytes = static_cast<const uint8_t*>(area);
        return {bytes, bytes + w * h};
    }
    Bytes result() const { return plane(renderer->m_pDepthData); }

    Bytes constantResult(int value, float contrast) {
        beginGray(48, 32);
        renderer->params.depth_contrast = contrast;
        set(Bytes(48 * 32, static_cast<uint8_t>(value)), 48, 32);
        return result();
    }

    int w = 0, h = 0;
    Bytes photo;
    std::unique_ptr<Rig> rig;
    ESRenderer* renderer = nullptr;
};

TEST_F(DepthMap, DoesThisInThisOrder) {
    beginGray(32, 16);
    set(Bytes(32 * 16, 77), 32, 16);
    EXPECT_THAT(
        timeline.lines(),
        ElementsAre(
            "time     downsize input image   ", "time     downsize depth image   ",
            "time     denoise depth image    ", "time     do GF on depth image   ",
            "time     border process         ", "time     denoise and contrast   ", "glGenTextures(1) = {2}",
            "glBindTexture(GL_TEXTURE_2D, 2)",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)", "D GL SetDepth(): texImage2D",
            "glPixelStorei(GL_UNPACK_ALIGNMENT, 1)", "time     gen depth map texture  ",
            "glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, 8, 4, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, data)",
            "glGetError()", "glFlush()", "time     upload depth texture   "));
}

TEST_F(DepthMap, PrintsEightTimingLabelsOf27Characters) {
    beginGray(32, 16);
    set(Bytes(32 * 16, 77), 32, 16);
    EXPECT_THAT(timeline.timingLabels(), SizeIs(8));
    for (const std::string& label : timeline.timingLabels()) EXPECT_EQ(label.size(), 27u);
}

TEST_F(DepthMap, EachStepIsMeasuredFromTheOneBefore) {
    beginGray(32, 16);
    const SteppingClock clock(3);
    set(Bytes(32 * 16, 77), 32, 16);
    EXPECT_THAT(timeline.timingLines(), Each(EndsWith(":        3(us) = 0.0030(ms)")));
}

TEST_F(DepthMap, A1024By768MapGivesA256By192Texture) {
    beginGray(1024, 768);
    set(Bytes(1024 * 768, 50), 1024, 768);
    EXPECT_EQ(renderer->m_vtxW, 256);
    EXPECT_EQ(renderer->m_vtxH, 192);
    ASSERT_THAT(gl.texture_uploads, SizeIs(1));
    EXPECT_EQ(gl.texture_uploads[0].width, 256);
    EXPECT_EQ(gl.texture_uploads[0].height, 192);
}

TEST_F(DepthMap, RemaindersOfFourAreDropped) {
    beginGray(1023, 13);
    set(Bytes(1023 * 13, 50), 1023, 13);
    EXPECT_EQ(renderer->m_vtxW, 255);
    EXPECT_EQ(renderer->m_vtxH, 3);
    EXPECT_THAT(result(), Each(kContrastCurve[50 * 24 / 32]));
}

TEST_F(DepthMap, SideThatIsNotFourTimesItsCellsIsLoggedAndNotReduced) {
    // 10 / 4 gives 2 cells, and 10 / 2 gives a ratio of 5, for which there is no kernel.
    beginGray(32, 10);
    set(Bytes(32 * 10, 50), 32, 10);
    EXPECT_THAT(log.textsStartingWith("downsize"), ElementsAre("downsize: cannot reduce 32 x 10 to 8 x 2\n"));
}

TEST_F(DepthMap, Contrast32MapsAConstantThroughTheCurve) {
    EXPECT_THAT(constantResult(0, 32.0f), Each(0));
    EXPECT_THAT(constantResult(128, 32.0f), Each(190));
    EXPECT_THAT(constantResult(255, 32.0f), Each(255));
}

TEST_F(DepthMap, Contrast32MapsEveryConstantThroughTheCurve) {
    for (int value = 0; value < 256; value += 5)
        EXPECT_THAT(constantResult(value, 32.0f), Each(kContrastCurve[static_cast<size_t>(value)]));
}

TEST_F(DepthMap, Contrast24CompressesBeforeTheCurve) {
    EXPECT_THAT(constantResult(255, 24.0f), Each(238));
    EXPECT_THAT(constantResult(100, 24.0f), Each(126));
}

TEST_F(DepthMap, Contrast40FoldsTheBrightestOver) {
    EXPECT_THAT(constantResult(255, 40.0f), Each(107));
    EXPECT_THAT(constantResult(204, 40.0f), Each(255));  // 204 * 1.25 = 255, the last before the fold
    EXPECT_THAT(constantResult(205, 40.0f), Each(0));    // 256.25 wraps to 0
}

TEST_F(DepthMap, NegativeContrastGives0) { EXPECT_THAT(constantResult(200, -24.0f), Each(0)); }
TEST_F(DepthMap, ZeroContrastGives0) { EXPECT_THAT(constantResult(200, 0.0f), Each(0)); }

TEST_F(DepthMap, ContrastThatIsNoNumberGives0) {
    EXPECT_THAT(constantResult(200, std::numeric_limits<float>::quiet_NaN()), Each(0));
}

TEST_F(DepthMap, ContrastBeyondAllIndicesGivesTheLastOne) {
    // 2 to the 32 and more count as 0xffffffff, whose low byte is 255.
    EXPECT_THAT(constantResult(1, 1e30f), Each(255));
    EXPECT_THAT(constantResult(1, std::numeric_limits<float>::infinity()), Each(255));
    EXPECT_THAT(constantResult(0, 1e30f), Each(0));
    EXPECT_THAT(constantResult(0, std::numeric_limits<float>::infinity()), Each(0));
    // 128 times 2 to the 30, a 32nd of it, is 2 to the 32 itself.
    EXPECT_THAT(constantResult(128, 1073741824.0f), Each(255));
}

TEST_F(DepthMap, LargeContrastWrapsModulo256) {
    // 3 * 2 to the 20, a 32nd of it: 98304 = 384 * 256.
    EXPECT_THAT(constantResult(3, 1048576.0f), Each(0));
    // 100 * 999 / 32 = 3121.875, modulo 256 = 49.
    EXPECT_THAT(constantResult(100, 999.0f), Each(kContrastCurve[3121 % 256]));
}

TEST_F(DepthMap, ContrastIsScaledInFloat) {
    for (const float contrast : {0.1f, 7.3f, 23.99f, 31.999998f, 33.3f}) {
        for (int value = 0; value < 256; value += 17) {
            const volatile float product = static_cast<float>(value) * contrast;
            const volatile float scaled = product * 0.03125f;
            EXPECT_THAT(constantResult(value, contrast),
                        Each(kContrastCurve[static_cast<uint32_t>(scaled) % 256]))
                << value << " at " << contrast;
        }
    }
}

TEST_F(DepthMap, BrightCellAmongDarkOnesIsAveragedAndTruncated) {
    // One 4 x 4 block of 255 reduces to 175 in its cell, 18 in the four beside it and 2 in the corners. The
    // crosses then sum to 247, 215 and 42, and a fifth of that is truncated to 49, 43 and 8.
    beginGray(12, 12);
    switchFilterOff();
    renderer->params.depth_contrast = 32.0f;
    Bytes depth(144, 0);
    for (size_t y = 4; y < 8; ++y)
        for (size_t x = 4; x < 8; ++x) depth[y * 12 + x] = 255;
    set(depth, 12, 12);
    EXPECT_THAT(plane(renderer->m_pDenoisedTextureBuf), ElementsAre(2, 18, 2, 18, 175, 18, 2, 18, 2));
    EXPECT_THAT(result(), ElementsAre(15, 77, 15, 77, 87, 77, 15, 77, 15));
}

TEST_F(DepthMap, AveragesTruncateForEveryRemainder) {
    beginGray(64, 64);
    switchFilterOff();
    renderer->params.depth_contrast = 32.0f;
    set(noise(64 * 64, 9), 64, 64);
    const Bytes reduced = plane(renderer->m_pDenoisedTextureBuf);
    const Bytes averages = crossAverage(reduced, 16, 16);
    const Bytes shaped = result();
    for (size_t i = 0; i < shaped.size(); ++i) ASSERT_EQ(shaped[i], kContrastCurve[averages[i]]) << i;
}

TEST_F(DepthMap, ReducedDepthIsTheGrayReduction) {
    beginGray(67, 43);
    switchFilterOff();
    const Bytes depth = noise(67 * 43, 10);
    set(depth, 67, 43);
    EXPECT_EQ(plane(renderer->m_pDenoisedTextureBuf), reducedGray(depth, 67, 43, 16, 10));
}

TEST_F(DepthMap, GuideIsThePhotosLuma) {
    begin(64, 48, noise(16 * 12 * 3, 11));
    set(Bytes(64 * 48, 3), 64, 48);
    EXPECT_EQ(plane(renderer->m_pSmallTextureData), reducedLuma(photo, 16, 12, 16, 12));
}

TEST_F(DepthMap, LargerPhotoIsReducedReadingOnBehindIt) {
    const Bytes large = noise(64 * 48 * 3, 12);
    rig = std::make_unique<Rig>(64, 48, 64, 48);
    renderer = &rig->renderer;
    w = 16;
    h = 12;
    photo = large;
    prepared([&] { renderer->setTexture(64, 48, photo.data()); });
    // Behind the photo lies the depth plane, which the guide's reduction sees as the last call left it.
    Bytes behind = photo;
    const auto* depth_area = reinterpret_cast<const uint8_t*>(renderer->m_pDepthData);
    for (size_t i = 0; i < 192; ++i) renderer->m_pDepthData[i] = static_cast<char>(200 + i % 50);
    behind.insert(behind.end(), depth_area, depth_area + 192);
    set(noise(64 * 48, 13), 64, 48);
    EXPECT_EQ(plane(renderer->m_pSmallTextureData), reducedLuma(behind, 64, 48, 16, 12));
}

TEST_F(DepthMap, WholePipelineMatchesItsModels) {
    begin(96, 64, noise(24 * 16 * 3, 14));
    renderer->params.depth_contrast = 30.0f;
    const Bytes depth = noise(96 * 64, 15);
    set(depth, 96, 64);

    const Bytes guide = crossAverage(reducedLuma(photo, 24, 16, 24, 16), 24, 16);
    const Bytes reduced = reducedGray(depth, 96, 64, 24, 16);
    Bytes smooth;
    for (const double q : guidedFilter(guide, reduced, 24, 16, 2, 2, double{1e-6f}))
        smooth.push_back(static_cast<uint8_t>(std::lround(q)));
    Bytes expected;
    for (const uint8_t average : crossAverage(smooth, 24, 16))
        expected.push_back(kContrastCurve[static_cast<size_t>(average * 30 / 32)]);

    EXPECT_EQ(plane(renderer->m_pDenoisedTextureBuf), smooth);
    EXPECT_EQ(result(), expected);
}

TEST_F(DepthMap, FilterParametersReachTheFilter) {
    begin(96, 64, noise(24 * 16 * 3, 16));
    renderer->params.guided_filter_rx = 4;
    renderer->params.guided_filter_ry = 1;
    renderer->params.guided_filter_eps = 0.05f;
    const Bytes depth = noise(96 * 64, 17);
    set(depth, 96, 64);
    const Bytes guide = crossAverage(reducedLuma(photo, 24, 16, 24, 16), 24, 16);
    const auto unrounded =
        guidedFilter(guide, reducedGray(depth, 96, 64, 24, 16), 24, 16, 4, 1, double{0.05f});
    const Bytes filtered = plane(renderer->m_pDenoisedTextureBuf);
    for (size_t i = 0; i < filtered.size(); ++i) ASSERT_LE(std::abs(filtered[i] - unrounded[i]), 0.5 + 1e-6);
}

TEST_F(DepthMap, FilterWorksInItsShareOfTheBlock) {
    begin(96, 64, noise(24 * 16 * 3, 18));
    set(noise(96 * 64, 19), 96, 64);
    EXPECT_EQ(renderer->mGF.buffer(), reinterpret_cast<unsigned char*>(renderer->m_pGFBuf));
    EXPECT_EQ(renderer->mGF.buffer(), rig->block.data());
}

TEST_F(DepthMap, OnlyItsOwnAreasAreWritten) {
    begin(96, 64, noise(24 * 16 * 3, 20));
    const auto* vertices = reinterpret_cast<unsigned char*>(renderer->m_pVtxData);
    const auto* photo_area = reinterpret_cast<unsigned char*>(renderer->m_pTextureData);
    const auto* depth_area = reinterpret_cast<unsigned char*>(renderer->m_pDepthData);
    const unsigned char* end = renderer->m_pDenoisedTextureBuf + 24 * 16;
    const auto before = rig->block;
    set(noise(96 * 64, 21), 96, 64);
    const unsigned char* start = rig->block.data();
    EXPECT_TRUE(std::equal(vertices, depth_area, before.begin() + (vertices - start)));
    EXPECT_TRUE(std::equal(end, start + rig->block.size(), before.begin() + (end - start)));
    EXPECT_TRUE(std::equal(photo.begin(), photo.end(), photo_area));
}

TEST_F(DepthMap, UploadedBytesAreTheShapedDepth) {
    begin(96, 64, noise(24 * 16 * 3, 22));
    set(noise(96 * 64, 23), 96, 64);
    ASSERT_THAT(gl.texture_uploads, SizeIs(1));
    EXPECT_EQ(gl.texture_uploads[0].bytes, result());
    EXPECT_EQ(gl.texture_uploads[0].unpack_alignment, 1);
    EXPECT_EQ(gl.texture_uploads[0].texture, renderer->m_depthName);
}

TEST_F(DepthMap, TextureStaysBoundOnTheActiveUnit) {
    beginGray(32, 16);
    glActiveTexture(GL_TEXTURE3);
    set(Bytes(32 * 16, 1), 32, 16);
    EXPECT_EQ(gl.bound_textures[GL_TEXTURE3], renderer->m_depthName);
    EXPECT_THAT(timeline.callsOf("glActiveTexture"), IsEmpty());
}

TEST_F(DepthMap, SecondMapReplacesTheTexture) {
    beginGray(32, 16);
    set(Bytes(32 * 16, 1), 32, 16);
    const GLuint first = renderer->m_depthName;
    set(Bytes(32 * 16, 2), 32, 16);
    const std::string deleted = "glDeleteTextures(1, {" + std::to_string(first) + "})";
    EXPECT_THAT(timeline.callsOf("glDeleteTextures"), ElementsAre(deleted));
    EXPECT_EQ(timeline.calls().at(0), deleted);
    EXPECT_EQ(gl.live_textures.count(first), 0u);
    EXPECT_EQ(gl.live_textures.count(renderer->m_depthName), 1u);
    EXPECT_THAT(gl.live_textures, SizeIs(2));  // with the photo's
}

TEST_F(DepthMap, SecondCallDependsOnItsOwnInputsOnly) {
    begin(96, 64, noise(24 * 16 * 3, 24));
    const Bytes depth = noise(96 * 64, 25);
    set(depth, 96, 64);
    const Bytes first = result();
    set(Bytes(96 * 64, 255), 96, 64);
    set(depth, 96, 64);
    EXPECT_EQ(result(), first);
}

TEST_F(DepthMap, PivotAndWeightAreTakenFromTheParameters) {
    beginGray(32, 16);
    set(Bytes(32 * 16, 1), 32, 16);
    EXPECT_EQ(renderer->m_z_factor, 40.0f);
    EXPECT_EQ(renderer->m_depthContrastWeight, 24);
    renderer->params.rotate_z_trans = 51.5f;
    renderer->params.depth_contrast = 24.9f;
    set(Bytes(32 * 16, 1), 32, 16);
    EXPECT_EQ(renderer->m_z_factor, 51.5f);
    EXPECT_EQ(renderer->m_depthContrastWeight, 24);
    renderer->params.depth_contrast = -3.7f;
    set(Bytes(32 * 16, 1), 32, 16);
    EXPECT_EQ(renderer->m_depthContrastWeight, -3);
}

TEST_F(DepthMap, WeightStaysWithin32Bits) {
    beginGray(32, 16);
    const auto weight = [this](float contrast) {
        renderer->params.depth_contrast = contrast;
        set(Bytes(32 * 16, 1), 32, 16);
        return renderer->m_depthContrastWeight;
    };
    constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();
    constexpr int32_t kSmallest = std::numeric_limits<int32_t>::min();
    EXPECT_EQ(weight(2147483520.0f), 2147483520);  // the largest float below 2 to the 31
    EXPECT_EQ(weight(2147483648.0f), kLargest);
    EXPECT_EQ(weight(1e30f), kLargest);
    EXPECT_EQ(weight(-2147483648.0f), kSmallest);
    EXPECT_EQ(weight(-1e30f), kSmallest);
    EXPECT_EQ(weight(std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST_F(DepthMap, BorderParameterAndDepthLimitsAreNotTouched) {
    beginGray(32, 16);
    const Bytes depth = noise(32 * 16, 26);
    set(depth, 32, 16);
    const Bytes first = result();
    renderer->params.border_deadzone = 0;
    renderer->setMinMaxDepth(13, 14);
    set(depth, 32, 16);
    EXPECT_EQ(result(), first);
    EXPECT_EQ(renderer->m_minDepth, 13);
    EXPECT_EQ(renderer->m_maxDepth, 14);
}

TEST_F(DepthMap, UploadErrorIsLoggedAndTheFlushFollows) {
    beginGray(32, 16);
    gl.errorAfter("glTexImage2D", GL_OUT_OF_MEMORY);
    set(Bytes(32 * 16, 1), 32, 16);
    EXPECT_THAT(log.texts(),
                ElementsAre("GL SetDepth(): texImage2D", "after glTexImage2D depth() glError (0x505)\n"));
    EXPECT_THAT(timeline.callsOf("glFlush"), SizeIs(1));
}

TEST_F(DepthMap, MapBelow4x4ChangesNothing) {
    beginGray(32, 16);
    set(Bytes(32 * 16, 9), 32, 16);
    const GLuint name = renderer->m_depthName;
    const Bytes before = result();
    renderer->params.rotate_z_trans = 99.0f;
    for (const auto& [small_w, small_h] : {std::pair{3, 16}, {32, 3}, {3, 3}, {0, 0}, {-4, 8}}) {
        Bytes depth(64, 200);
        observed([&] { renderer->setDepth(small_w, small_h, depth.data()); });
        ASSERT_THAT(log.lines(), SizeIs(1));
        EXPECT_EQ(log.lines()[0].priority, 3);
        EXPECT_EQ(timeline.lines().size(), 1u) << "one line, no call, no timing";
        EXPECT_EQ(renderer->m_depthName, name);
        EXPECT_EQ(renderer->m_vtxW, 8);
        EXPECT_EQ(renderer->m_vtxH, 4);
        EXPECT_EQ(renderer->m_z_factor, 40.0f);
        EXPECT_EQ(result(), before);
    }
}

TEST_F(DepthMap, SmallestMapIsOneCell) {
    beginGray(4, 4);
    set(Bytes(16, 100), 4, 4);
    EXPECT_EQ(renderer->m_vtxW, 1);
    EXPECT_EQ(renderer->m_vtxH, 1);
    EXPECT_THAT(result(), ElementsAre(126));
}

TEST_F(DepthMap, GuideWithoutAPhotoIsWhateverTheAreaHolds) {
    Rig fresh(8, 4, 32, 16);
    Bytes depth(32 * 16, 100);
    observed([&] { fresh.renderer.setDepth(32, 16, depth.data()); });
    EXPECT_EQ(static_cast<uint8_t>(fresh.renderer.m_pSmallTextureData[0]), 16);  // zeros are black
    EXPECT_EQ(static_cast<uint8_t>(fresh.renderer.m_pDepthData[0]), 126);
}

TEST_F(DepthMap, DebuggingDumpsTheHostsMapAndTheShapedGrid) {
    const DumpDirectory directory(DumpDirectory::State::present);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    begin(96, 64, noise(24 * 16 * 3, 27));
    renderer->m_debugEnable = 1;
    const Bytes depth = noise(96 * 64, 28);
    set(depth, 96, 64);
    EXPECT_THAT(directory.files(), ElementsAre("depth_GF.ppm", "depth_In.ppm"));
    EXPECT_EQ(fileBytes(DumpDirectory::path("depth_In.ppm")), netpbm("P5", 96, 64, depth));
    EXPECT_EQ(fileBytes(DumpDirectory::path("depth_GF.ppm")), netpbm("P5", 24, 16, result()));
    const auto lines = timeline.lines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[lines.size() - 2], "time     upload depth texture   ");
    EXPECT_EQ(lines.back(), "D Dump depth after GF\n");
}

TEST_F(DepthMap, DebuggingWithoutTheDirectoryLogsBothFilesInOrder) {
    const DumpDirectory directory(DumpDirectory::State::absent);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    beginGray(32, 16);
    renderer->m_debugEnable = 1;
    set(Bytes(32 * 16, 1), 32, 16);
    EXPECT_THAT(log.lines(),
                ElementsAre(debugLine("GL SetDepth(): texImage2D"), debugLine("Dump depth after GF\n"),
                            debugLine("[ERROR] Cannot open file /storage/sdcard0/qrvn/depth_In.ppm\n"),
                            debugLine("[ERROR] Cannot open file /storage/sdcard0/qrvn/depth_GF.ppm\n")));
    EXPECT_NE(renderer->m_depthName, 0u);
}

TEST_F(DepthMap, WithDebuggingOffNothingIsDumped) {
    const DumpDirectory directory(DumpDirectory::State::present);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    beginGray(32, 16);
    set(Bytes(32 * 16, 1), 32, 16);
    EXPECT_THAT(directory.files(), IsEmpty());
}

}  // namespace
}  // namespace quorvane::test
