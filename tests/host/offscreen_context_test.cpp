#include <thread>

#include "host_test.h"

namespace quorvane::test {
namespace {

class OffscreenContextTest : public DriverTest {
  protected:
    /// A finished texture of 2 x 2 pixels.
    static GLuint paintedTexture() {
        GLuint texture = 0;
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, kPainted.data());
        glFinish();
        return texture;
    }

    static inline const Bytes kPainted = noise(2 * 2 * 4, 3);
};

TEST_F(OffscreenContextTest, IsCurrentWhereItWasMade) {
    EXPECT_TRUE(context->isCurrent());
    EXPECT_NE(glGetString(GL_VERSION), nullptr);
    EXPECT_FALSE(context->platform().empty());
}

TEST_F(OffscreenContextTest, MovesToAnotherThreadOnceReleased) {
    context->release();
    EXPECT_FALSE(context->isCurrent());
    bool current = false;
    std::thread([&] {
        current = context->makeCurrent().ok() && context->isCurrent();
        context->release();
    }).join();
    EXPECT_TRUE(current);
    EXPECT_TRUE(context->makeCurrent().ok());
}

TEST_F(OffscreenContextTest, CannotBeCurrentTwice) {
    std::string said;
    std::thread([&] { said = sentence(context->makeCurrent()); }).join();
    EXPECT_THAT(said, testing::HasSubstr("eglMakeCurrent failed"));
}

TEST_F(OffscreenContextTest, OutlivesAnotherOneOfTheSameDisplay) {
    std::unique_ptr<OffscreenContext> other;
    ASSERT_TRUE(OffscreenContext::create(&other).ok());
    other.reset();
    ASSERT_TRUE(context->makeCurrent().ok());
    EXPECT_NE(glGetString(GL_VERSION), nullptr);
}

TEST_F(OffscreenContextTest, TextureIsReadInAContextThatSharesItOnAnotherThread) {
    const GLuint texture = paintedTexture();
    Bytes read;
    bool still_current = false;
    std::thread([&] {
        std::unique_ptr<OffscreenContext> other;
        ASSERT_EQ(sentence(OffscreenContext::create(&other, context.get())), "succeeded");
        EXPECT_TRUE(other->isCurrent());
        EXPECT_EQ(other->platform(), context->platform());
        read = pixelsOf(texture, 2, 2);
    }).join();
    still_current = context->isCurrent();
    EXPECT_EQ(read, kPainted);
    EXPECT_TRUE(still_current);
    glDeleteTextures(1, &texture);
}

TEST_F(OffscreenContextTest, TextureIsNotSharedUnasked) {
    const GLuint texture = paintedTexture();
    std::unique_ptr<OffscreenContext> other;
    ASSERT_TRUE(OffscreenContext::create(&other).ok());
    EXPECT_EQ(glIsTexture(texture), GL_FALSE);
}

TEST_F(OffscreenContextTest, SharedTextureOutlivesTheContextThatMadeIt) {
    const GLuint texture = paintedTexture();
    std::unique_ptr<OffscreenContext> other;
    ASSERT_EQ(sentence(OffscreenContext::create(&other, context.get())), "succeeded");
    context.reset();
    ASSERT_TRUE(other->isCurrent());
    EXPECT_EQ(pixelsOf(texture, 2, 2), kPainted);
    glDeleteTextures(1, &texture);
}

TEST_F(OffscreenContextTest, ComesAndGoesManyTimes) {
    for (int i = 0; i < 50; ++i) {
        std::unique_ptr<OffscreenContext> other;
        ASSERT_TRUE(OffscreenContext::create(&other, i % 2 == 0 ? nullptr : context.get()).ok());
    }
}

}  // namespace
}  // namespace quorvane::test
