#ifndef QUORVANE_TESTS_SUPPORT_COMPONENT_TEST_H
#define QUORVANE_TESTS_SUPPORT_COMPONENT_TEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <quorvane/esRenderer.h>

#include <memory>
#include <string>
#include <vector>

#include "support/android_log.h"
#include "support/gl_recorder.h"
#include "support/properties.h"
#include "support/timeline.h"

namespace quorvane::test {

/// Every double as new before each test.
class ComponentTest : public ::testing::Test {
  protected:
    explicit ComponentTest(GlRecorder::Mode mode = GlRecorder::Mode::fake) {
        gl.reset(mode);
        properties.clear();
        forget();
    }

    /// Runs `action` with standard output going to the timeline, which starts empty.
    template <typename Action>
    auto observed(Action&& action) {
        forget();
        const OutputToTimeline output;
        return action();
    }

    /// Runs `action` as preparation: what it says is forgotten.
    template <typename Action>
    void prepared(Action&& action) {
        {
            const OutputToTimeline output;
            action();
        }
        forget();
    }

    void forget() {
        log.clear();
        timeline.clear();
    }

    GlRecorder& gl = GlRecorder::instance();
    AndroidLog& log = AndroidLog::instance();
    Properties& properties = Properties::instance();
    Timeline& timeline = Timeline::instance();
};

/// A renderer with its working block, as a host brings it up.
class Rig {
  public:
    /// Sizes in pixels. Nothing of GL is set up yet.
    Rig(int tex_w, int tex_h, int depth_w, int depth_h) {
        const OutputToTimeline output;
        block.assign(static_cast<size_t>(renderer.getRequiredMemSize(tex_w, tex_h, depth_w, depth_h)) + 64,
                     0);
        renderer.assignMem(block.data());
    }

    std::vector<unsigned char> block;
    ESRenderer renderer;
};

}  // namespace quorvane::test

#endif
