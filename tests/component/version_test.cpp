#include "quorvane/version.h"

#include <gtest/gtest.h>

#include <string>

TEST(Version, TextIsMadeOfTheNumbers) {
    EXPECT_EQ(QUORVANE_VERSION, std::to_string(QUORVANE_VERSION_MAJOR) + "." +
                                    std::to_string(QUORVANE_VERSION_MINOR) + "." +
                                    std::to_string(QUORVANE_VERSION_PATCH));
}
