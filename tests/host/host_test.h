#ifndef QUORVANE_TESTS_HOST_TEST_H
#define QUORVANE_TESTS_HOST_TEST_H

#include <quorvane/host/OffscreenContext.h>
#include <quorvane/host/ParallaxView.h>

#include <memory>
#include <vector>

#include "support/component_test.h"

namespace quorvane::test {

using Bytes = std::vector<uint8_t>;

inline Bytes noiseBytes(size_t size, uint32_t seed) {
    Bytes bytes(size);
    for (uint8_t& byte : bytes) {
        seed = seed * 1664525u + 1013904223u;
        byte = static_cast<uint8_t>(seed >> 24);
    }
    return bytes;
}

/// The message of a status that should be a failure.
inline std::string sentence(const Status& status) { return status.ok() ? "succeeded" : status.message(); }

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
