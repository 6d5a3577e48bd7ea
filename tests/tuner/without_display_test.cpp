// The program where no window can be.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "support/temporary_folder.h"
#include "system/child_process.h"

namespace quorvane::tuner {
namespace {

using testing::HasSubstr;

bool succeeds(const std::vector<std::string>& words) {
    ChildProcess process(words, ChildFiles());
    return process.wait().succeeded();
}

TEST(TunerWithoutDisplay, OneLineSaysSo) {
    const test::TemporaryFolder folder;
    test::writeBytes(folder / "run", "unset DISPLAY WAYLAND_DISPLAY; XDG_CONFIG_HOME=" + folder.path() +
                                         " " QUORVANE_TUNER " photo.jpg 2>" + (folder / "said") +
                                         "; echo $? >" + (folder / "code"));
    ASSERT_TRUE(succeeds({"sh", folder / "run"}));
    const std::string said = test::bytesOf(folder / "said");
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_THAT(said, HasSubstr("there is no display"));
    EXPECT_EQ(test::bytesOf(folder / "code"), "1\n");
}

}  // namespace
}  // namespace quorvane::tuner
