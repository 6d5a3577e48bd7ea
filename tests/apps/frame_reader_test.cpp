#include "apps/quorvane/drawing/frame_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <vector>

#include "system/error.h"

namespace quorvane::app {
namespace {

constexpr auto kSoon = std::chrono::milliseconds(50);
constexpr auto kLong = std::chrono::seconds(20);
constexpr Size kSize = {40, 30};

/// Two textures to draw into by turns, in a context of the real driver.
class FrameReaderTest : public testing::Test {
  protected:
    void SetUp() override {
        const Status made = OffscreenContext::create(&context);
        if (!made) GTEST_SKIP() << "NO GRAPHICS DRIVER, NOT TESTED: " << made.message();
        glGenTextures(2, textures);
        for (const GLuint texture : textures) {
            glBindTexture(GL_TEXTURE_2D, texture);
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, kSize.width, kSize.height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                         nullptr);
        }
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    }

    void TearDown() override {
        if (context == nullptr) return;
        glDeleteFramebuffers(1, &framebuffer);
        glDeleteTextures(2, textures);
    }

    /// Fills a texture with a colour that tells the picture's number.
    GLuint draw(int number) {
        const GLuint texture = textures[number % 2];
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
        glClearColor(static_cast<float>(number) / 255.0f, 0.0f, 0.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        glFinish();
        return texture;
    }

    static std::string failureOf(const std::function<void()>& call) {
        try {
            call();
        } catch (const Error& error) {
            return error.what();
        }
        return "none";
    }

    std::unique_ptr<OffscreenContext> context;
    GLuint textures[2] = {0, 0};
    GLuint framebuffer = 0;
};

TEST_F(FrameReaderTest, DeliversEveryPictureInOrderWhileOthersAreDrawn) {
    std::vector<int> numbers, colours;
    media::RgbaImage picture;
    bool even = true;
    FrameReader reader(*context, kSize, [&](int number, const FrameReader::Copy& copy) {
        copy(&picture);
        numbers.push_back(number);
        colours.push_back(picture.samples[0]);
        for (size_t i = 0; i < picture.samples.size(); ++i)
            even = even && picture.samples[i] == picture.samples[i % 4];
    });
    ASSERT_EQ(reader.fault(), "");
    std::vector<int> wanted;
    for (int number = 0; number < 250; ++number) {
        reader.read(number, draw(number));
        wanted.push_back(number);
    }
    reader.finish();
    EXPECT_EQ(numbers, wanted);
    EXPECT_EQ(colours, wanted);
    EXPECT_TRUE(even) << "a picture was drawn over while it was read";
    EXPECT_EQ(picture.width, kSize.width);
    EXPECT_EQ(picture.height, kSize.height);
    EXPECT_TRUE(context->isCurrent());
}

TEST_F(FrameReaderTest, WaitsForTheLastPictureAndNotForThisOne) {
    std::promise<void> reached, open;
    FrameReader reader(*context, kSize, [&](int number, const FrameReader::Copy&) {
        if (number > 0) return;
        reached.set_value();
        open.get_future().wait();
    });
    reader.read(0, draw(0));
    ASSERT_EQ(reached.get_future().wait_for(kLong), std::future_status::ready);
    auto second = std::async(std::launch::async, [&] { reader.read(1, textures[1]); });
    EXPECT_EQ(second.wait_for(kSoon), std::future_status::timeout) << "its texture is still read";
    open.set_value();
    EXPECT_EQ(second.wait_for(kLong), std::future_status::ready);
    reader.finish();
}

TEST_F(FrameReaderTest, FailureIsToldAndNothingIsReadAfterIt) {
    std::atomic<int> delivered{0};
    FrameReader reader(*context, kSize, [&](int, const FrameReader::Copy&) {
        ++delivered;
        throw Error("the disk is full");
    });
    reader.read(0, draw(0));
    EXPECT_EQ(failureOf([&] { reader.read(1, draw(1)); }), "the disk is full");
    EXPECT_EQ(failureOf([&] { reader.finish(); }), "the disk is full");
    EXPECT_EQ(delivered, 1);
}

TEST_F(FrameReaderTest, TextureThatCannotBeReadIsTold) {
    media::RgbaImage picture;
    FrameReader reader(*context, kSize, [&](int, const FrameReader::Copy& copy) { copy(&picture); });
    reader.read(0, 0);
    EXPECT_EQ(failureOf([&] { reader.finish(); }),
              "reading the picture: the graphics driver reports error 0x0506");
}

TEST_F(FrameReaderTest, AbandonedWaitsForWhatIsRead) {
    std::atomic<bool> done{false};
    {
        FrameReader reader(*context, kSize, [&](int, const FrameReader::Copy&) {
            std::this_thread::sleep_for(kSoon);
            done = true;
        });
        reader.read(0, draw(0));
    }
    EXPECT_TRUE(done);
}

}  // namespace
}  // namespace quorvane::app
