#ifndef QUORVANE_TESTS_HOST_TEST_H
#define QUORVANE_TESTS_HOST_TEST_H

#include <quorvane/host/OffscreenContext.h>
#include <quorvane/host/ParallaxView.h>

#include <memory>
#include <vector>

#include "support/component_test.h"
#include "support/guarded_bytes.h"
#include "support/reference_models.h"

namespace quorvane::test {

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
