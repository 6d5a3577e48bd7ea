#ifndef QUORVANE_TESTS_APPS_ON_SAMPLE_SCENE_H
#define QUORVANE_TESTS_APPS_ON_SAMPLE_SCENE_H

#include <gtest/gtest.h>

#include <string>

#include "process.h"
#include "support/temporary_folder.h"

namespace quorvane::test {

/// The tests of Suite, which share the program's made-up scene of Suite::kSceneSize, such as "240x180".
template <typename Suite>
class OnSampleScene : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        s_scene = new TemporaryFolder;
        ASSERT_EQ(
            quorvane({"sample", scene("photo.png"), scene("depth.png"), "--size", Suite::kSceneSize}).code,
            0);
    }
    static void TearDownTestSuite() {
        delete s_scene;
        s_scene = nullptr;
    }

    /// The path of photo.png or depth.png.
    static std::string scene(const std::string& name) { return *s_scene / name; }

    const TemporaryFolder folder;

  private:
    static inline TemporaryFolder* s_scene = nullptr;
};

}  // namespace quorvane::test

#endif
