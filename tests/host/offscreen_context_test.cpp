#include <thread>

#include "host_test.h"

namespace quorvane::test {
namespace {

using OffscreenContextTest = DriverTest;

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

TEST_F(OffscreenContextTest, ComesAndGoesManyTimes) {
    for (int i = 0; i < 50; ++i) {
        std::unique_ptr<OffscreenContext> other;
        ASSERT_TRUE(OffscreenContext::create(&other).ok());
    }
}

}  // namespace
}  // namespace quorvane::test
