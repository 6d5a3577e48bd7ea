#include <algorithm>

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

class ColourImage : public ComponentTest {
  protected:
    ColourImage() { forget(); }

    void set(const Bytes& pixels, int w, int h) {
        GuardedBytes hosts(pixels);
        observed([&] { rig.renderer.setTexture(w, h, hosts.data()); });
        EXPECT_EQ(hosts.bytes(), pixels);
    }

    Bytes stored(size_t size) const {
        const auto* bytes = reinterpret_cast<const uint8_t*>(rig.renderer.m_pTextureData);
        return {bytes, bytes + size};
    }

    Rig rig{8, 4, 32, 16};
    const Bytes photo = noise(8 * 4 * 3, 1);
};

TEST_F(ColourImage, IsCopiedAndUploadedInThisOrder) {
    set(photo, 8, 4);
    EXPECT_THAT(timeline.lines(),
                ElementsAre("D GL SetTexture(): GenTexture", "time     memcpy input image     ",
                            "glGenTextures(1) = {1}", "glBindTexture(GL_TEXTURE_2D, 1)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)",
                            "glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)",
                            "D GL SetTexture(): texImage2D", "time     gen input texture      ",
                            "glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 8, 4, 0, GL_RGB, GL_UNSIGNED_BYTE, data)",
                            "glFlush()", "time     glTexImage2D           "));
}

TEST_F(ColourImage, SecondUploadDeletesTheFirstTexture) {
    set(photo, 8, 4);
    set(photo, 8, 4);
    const auto lines = timeline.lines();
    ASSERT_GE(lines.size(), 5u);
    EXPECT_EQ(lines[2], "glDeleteTextures(1, {1})");
    EXPECT_EQ(lines[3], "glGenTextures(1) = {2}");
    EXPECT_EQ(lines[4], "glBindTexture(GL_TEXTURE_2D, 2)");
    EXPECT_THAT(gl.live_textures, ElementsAre(2u));
    EXPECT_EQ(rig.renderer.m_texName, 2u);
}

TEST_F(ColourImage, UploadDeletesAnAdoptedTexture) {
    GLuint hosts = 0;
    glGenTextures(1, &hosts);
    prepared([&] { rig.renderer.setTexture(8, 4, hosts); });
    set(photo, 8, 4);
    EXPECT_EQ(gl.live_textures.count(hosts), 0u);
    EXPECT_THAT(gl.live_textures, SizeIs(1));
}

TEST_F(ColourImage, IsStoredAndUploadedByteForByte) {
    set(photo, 8, 4);
    EXPECT_EQ(stored(photo.size()), photo);
    ASSERT_THAT(gl.texture_uploads, SizeIs(1));
    EXPECT_EQ(gl.texture_uploads[0].bytes, photo);
    EXPECT_EQ(gl.texture_uploads[0].texture, rig.renderer.m_texName);
    EXPECT_EQ(rig.renderer.m_texWidth, 8);
    EXPECT_EQ(rig.renderer.m_texHeight, 4);
}

TEST_F(ColourImage, CopyStaysWithinItsArea) {
    std::fill(rig.block.begin(), rig.block.end(), uint8_t{0x5c});
    set(photo, 8, 4);
    const auto* area = reinterpret_cast<unsigned char*>(rig.renderer.m_pTextureData);
    for (const unsigned char* byte = rig.block.data(); byte < rig.block.data() + rig.block.size(); ++byte)
        if (byte < area || byte >= area + photo.size()) {
            ASSERT_EQ(*byte, 0x5c);
        }
}

TEST_F(ColourImage, StaysBoundOnTheActiveUnit) {
    glActiveTexture(GL_TEXTURE3);
    set(photo, 8, 4);
    EXPECT_EQ(gl.bound_textures[GL_TEXTURE3], rig.renderer.m_texName);
    EXPECT_THAT(timeline.callsOf("glActiveTexture"), IsEmpty());
}

TEST_F(ColourImage, UnpackAlignmentIsLeftAsItIs) {
    set(noise(5 * 3 * 3, 2), 5, 3);
    EXPECT_EQ(gl.texture_uploads.at(0).unpack_alignment, 4);
    EXPECT_THAT(timeline.callsOf("glPixelStorei"), IsEmpty());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 2);
    set(noise(5 * 3 * 3, 2), 5, 3);
    EXPECT_EQ(gl.texture_uploads.at(1).unpack_alignment, 2);
}

TEST_F(ColourImage, UnpackAlignmentIs1OnceADepthMapHasBeenSet) {
    Bytes depth(32 * 16, 100);
    set(photo, 8, 4);
    prepared([&] { rig.renderer.setDepth(32, 16, depth.data()); });
    set(photo, 8, 4);
    EXPECT_EQ(gl.texture_uploads.back().internal_format, GL_RGB);
    EXPECT_EQ(gl.texture_uploads.back().unpack_alignment, 1);
}

TEST_F(ColourImage, UploadErrorsAreLeftPending) {
    gl.errorAfter("glTexImage2D", GL_OUT_OF_MEMORY);
    set(photo, 8, 4);
    EXPECT_THAT(timeline.callsOf("glGetError"), IsEmpty());
    EXPECT_EQ(gl.pendingErrors(), 1u);
}

TEST_F(ColourImage, PrintsThreeTimingLabelsOf27Characters) {
    set(photo, 8, 4);
    for (const std::string& label : timeline.timingLabels()) EXPECT_EQ(label.size(), 27u);
    EXPECT_THAT(timeline.timingLabels(), SizeIs(3));
}

TEST_F(ColourImage, EachStepIsMeasuredFromTheOneBefore) {
    const SteppingClock clock(40);
    set(photo, 8, 4);
    EXPECT_THAT(timeline.timingLines(), Each(EndsWith(":       40(us) = 0.0400(ms)")));
}

TEST_F(ColourImage, DebuggingDumpsTheStoredBytesBeforeTheLastTimingLine) {
    const DumpDirectory directory(DumpDirectory::State::present);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    rig.renderer.m_debugEnable = 1;
    set(photo, 8, 4);
    EXPECT_THAT(directory.files(), ElementsAre("input.ppm"));
    EXPECT_EQ(fileBytes(DumpDirectory::path("input.ppm")), netpbm("P6", 8, 4, photo));
    const auto lines = timeline.lines();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_THAT(std::vector<std::string>(lines.end() - 3, lines.end()),
                ElementsAre("glFlush()", "D Dump input image\n", "time     glTexImage2D           "));
}

TEST_F(ColourImage, DebuggingWithoutTheDirectoryLogsAndGoesOn) {
    const DumpDirectory directory(DumpDirectory::State::absent);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    rig.renderer.m_debugEnable = 1;
    set(photo, 8, 4);
    EXPECT_THAT(log.lines(),
                ElementsAre(debugLine("GL SetTexture(): GenTexture"),
                            debugLine("GL SetTexture(): texImage2D"), debugLine("Dump input image\n"),
                            debugLine("[ERROR] Cannot open file /storage/sdcard0/qrvn/input.ppm\n")));
    EXPECT_THAT(timeline.timingLabels(), SizeIs(3));
    EXPECT_NE(rig.renderer.m_texName, 0u);
}

TEST_F(ColourImage, WithDebuggingOffNothingIsDumped) {
    const DumpDirectory directory(DumpDirectory::State::present);
    if (!directory.obstacle().empty()) GTEST_SKIP() << directory.obstacle();
    set(photo, 8, 4);
    EXPECT_THAT(directory.files(), IsEmpty());
}

}  // namespace
}  // namespace quorvane::test
