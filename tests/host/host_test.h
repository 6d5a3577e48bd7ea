#ifndef QUORVANE_TESTS_HOST_TEST_H
#define QUORVANE_TESTS_HOST_TEST_H

#include <quorvane/host/OffscreenContext.h>
#include <quorvane/host/ParallaxView.h>

#include <memory>
#include <vector>

#include "support/component_test.h"
#include "support/guarded_bytes.h"
#include "support/models.h"

namespace quorvane::test {

/// The message of a status that should be a failure.
inline std::string sentence(const Status& status) { return status.ok() ? "succeeded" : status.message(); }

/// What a texture holds, in the context that is current.
inline Bytes pixelsOf(GLuint texture, int width, int height) {
    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    Bytes pixels(4 * static_cast<size_t>(width) * static_cast<size_t>(height));
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    glDeleteFramebuffers(1, &framebuffer);
    return pixels;
}

/// A context of the real driver, with the recorder in front of it. Skips loudly where there is none.
class DriverTest : public ComponentTest {
  protected:
    DriverTest() : ComponentTest(GlRecorder::Mode::driver) {}

    void SetUp() override {
        const Status made = OffscreenContext::create(&context);
        if (!made) GTEST_SKIP() << "NO GRAPHICS DRIVER, NOT TESTED: " << made.message();
    }

    std::unique_ptr<OffscreenContext> context;
};

}  // namespace quorvane::test

#endif
