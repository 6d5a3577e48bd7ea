#include "scene.h"
#include "support/guarded_bytes.h"

namespace quorvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class GlObjects : public GlTest {};

TEST_F(GlObjects, RepeatedUploadsLeaveOnePhotoAndOneDepthTexture) {
    Scene scene({32, 32, 16, 16, 64, 64});
    for (int i = 0; i < 4; ++i) {
        scene.setPhoto(noise(16 * 16 * 3, 1));
        scene.setFlatDepth(50 * i);
        scene.frame();
    }
    EXPECT_THAT(gl.live_textures, SizeIs(3));  // and the target
    EXPECT_TRUE(glIsTexture(scene.renderer().m_texName));
    EXPECT_TRUE(glIsTexture(scene.renderer().m_depthName));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(GlObjects, DestructorLeavesOnlyTheTarget) {
    Scene scene({32, 32, 16, 16, 64, 64});
    scene.setPhoto(noise(16 * 16 * 3, 1));
    scene.setFlatDepth(50);
    scene.frame();
    const GLuint photo = scene.renderer().m_texName, depth = scene.renderer().m_depthName;
    const GLuint vertices = scene.renderer().m_gridVertexBuf[0],
                 indices = scene.renderer().m_gridVertexBuf[1];
    const GLuint framebuffer = scene.renderer().m_fbo;
    scene.destroyRenderer();
    EXPECT_THAT(gl.live_textures, ElementsAre(scene.target().texture()));
    EXPECT_THAT(gl.live_framebuffers, ElementsAre(scene.target().framebuffer()));
    EXPECT_THAT(gl.live_buffers, IsEmpty());
    EXPECT_THAT(gl.live_programs, IsEmpty());
    EXPECT_FALSE(glIsTexture(photo));
    EXPECT_FALSE(glIsTexture(depth));
    EXPECT_FALSE(glIsBuffer(vertices));
    EXPECT_FALSE(glIsBuffer(indices));
    EXPECT_FALSE(glIsFramebuffer(framebuffer));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(GlObjects, DestructorDeletesAnAdoptedPhoto) {
    GLuint hosts = 0;
    glGenTextures(1, &hosts);
    glBindTexture(GL_TEXTURE_2D, hosts);
    {
        ESRenderer renderer;
        prepared([&] { renderer.setTexture(8, 8, hosts); });
        EXPECT_TRUE(glIsTexture(hosts));
    }
    EXPECT_FALSE(glIsTexture(hosts));
}

TEST_F(GlObjects, UnusedRendererIsDestroyedWithoutAGlError) {
    { ESRenderer renderer; }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(GlObjects, WholeLifeRaisesNoGlError) {
    {
        Scene scene({32, 32, 16, 16, 64, 64});
        scene.setPhoto(noise(16 * 16 * 3, 1));
        scene.setDepth(noise(64 * 64, 2));
        scene.frame();
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_THAT(log.textsStartingWith("after "), IsEmpty());
}

class GlOutput : public GlTest {
  protected:
    void SetUp() override {
        GlTest::SetUp();
        if (IsSkipped()) return;
        m_renderer = std::make_unique<ESRenderer>();
        prepared([this] { m_renderer->setupGraphics(16, 16); });
    }

    bool accepted(GLuint texture) {
        return observed([&] { return m_renderer->setOutTexture(texture); });
    }

    GLuint textureOf(GLenum format, int size) {
        GLuint texture = 0;
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        if (size > 0)
            glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(format), size, size, 0, format,
                         GL_UNSIGNED_BYTE, nullptr);
        return texture;
    }

    void TearDown() override { m_renderer.reset(); }

    std::unique_ptr<ESRenderer> m_renderer;
};

TEST_F(GlOutput, ColourTextureIsAccepted) {
    EXPECT_TRUE(accepted(textureOf(GL_RGBA, 16)));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(GlOutput, LuminanceTextureIsRefusedSilently) {
    EXPECT_FALSE(accepted(textureOf(GL_LUMINANCE, 16)));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(GlOutput, TextureWithoutAnImageIsRefusedSilently) {
    EXPECT_FALSE(accepted(textureOf(GL_RGBA, 0)));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(GlOutput, NameThatIsNoTextureIsRefusedSilently) {
    EXPECT_FALSE(accepted(0));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(GlOutput, RefusedOutputCanBeFollowedByAnother) {
    EXPECT_FALSE(accepted(textureOf(GL_LUMINANCE, 16)));
    EXPECT_TRUE(accepted(textureOf(GL_RGBA, 16)));
}

/// The rows that the driver takes from an upload of an odd width.
class GlUnpack : public GlTest {
  protected:
    static constexpr int kWidth = 33, kHeight = 9;

    /// The photo if its rows began every `row_bytes` bytes of the working block.
    Picture photoWithRows(size_t row_bytes, Scene* scene) {
        const auto* start = reinterpret_cast<const uint8_t*>(scene->renderer().m_pTextureData);
        Picture picture;
        picture.width = kWidth;
        picture.height = kHeight;
        for (size_t y = 0; y < kHeight; ++y)
            for (size_t x = 0; x < kWidth; ++x) {
                for (size_t c = 0; c < 3; ++c) picture.rgba.push_back(start[y * row_bytes + 3 * x + c]);
                picture.rgba.push_back(255);
            }
        return picture;
    }
};

TEST_F(GlUnpack, OddWidthIsSkewedUntilADepthMapHasBeenSet) {
    Scene scene({32, 32, kWidth, kHeight, kWidth * 4, kHeight * 4});
    const Bytes photo = noise(kWidth * kHeight * 3, 3);

    // 99 bytes a row, taken as 100.
    scene.setPhoto(photo);
    const Picture skewed = photoWithRows(100, &scene);
    EXPECT_EQ(largestDifference(readTexture(scene.renderer().m_texName, kWidth, kHeight), skewed), 0);

    scene.setFlatDepth(100);
    scene.setPhoto(photo);
    const Picture straight = photoWithRows(99, &scene);
    EXPECT_EQ(largestDifference(readTexture(scene.renderer().m_texName, kWidth, kHeight), straight), 0);
    EXPECT_GT(largestDifference(skewed, straight), 100);
}

TEST_F(GlUnpack, OddGridWidthIsUploadedStraight) {
    Scene scene({64, 32, kWidth, kHeight, kWidth * 4, kHeight * 4});
    ESRenderer& renderer = scene.renderer();
    scene.setPhoto(Bytes(kWidth * kHeight * 3, 128));
    scene.setDepth(noise(kWidth * 4 * kHeight * 4, 4));
    Bytes as_photo;
    for (size_t i = 0; i < kWidth * kHeight; ++i)
        as_photo.insert(as_photo.end(), 3, static_cast<uint8_t>(renderer.m_pDepthData[i]));

    // A framebuffer cannot read such a texture, so the renderer draws it, as the photo over another, flat
    // depth.
    glDeleteTextures(1, &renderer.m_texName);
    renderer.m_texName = renderer.m_depthName;
    renderer.m_depthName = 0;
    scene.setFlatDepth(100);
    EXPECT_LE(largestDifference(scene.frame(), croppedPhoto(as_photo, kWidth, kHeight, 64, 32)), 3);
}

}  // namespace
}  // namespace quorvane::test
