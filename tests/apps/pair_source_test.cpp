#include "apps/quorvane/input/pair_source.h"

#include <gtest/gtest.h>

namespace quorvane::app {
namespace {

std::string layoutOf(const std::string& path) {
    const auto layout = layoutInName(path);
    if (!layout) return "none";
    return std::string(layout->squeezed ? "half " : "") + (layout->one_above_other ? "tb" : "sbs") +
           (layout->right_first ? " crossed" : "");
}

TEST(PairSource, ReadsTheLayoutInAName) {
    for (const char* name : {"a_sbs.jpg", "A_SBS.PNG", "trip-LR.jpg", "x/calf-left-right.jpg", "b.sbs.jpg"})
        EXPECT_EQ(layoutOf(name), "sbs") << name;
    for (const char* name : {"robot.jps", "ROBOT.JPS", "a.pns", "a_rl.jpg", "a_right_left.webp"})
        EXPECT_EQ(layoutOf(name), "sbs crossed") << name;
    for (const char* name : {"a_hsbs.jpg", "a-half-sbs.jpg"}) EXPECT_EQ(layoutOf(name), "half sbs") << name;
    for (const char* name : {"a_tb.jpg", "a_ou.jpg"}) EXPECT_EQ(layoutOf(name), "tb") << name;
    for (const char* name : {"a_htb.jpg", "a_half_ou.jpg"}) EXPECT_EQ(layoutOf(name), "half tb") << name;
    // A name of its own beats the order that such files have by default.
    EXPECT_EQ(layoutOf("a_sbs.jps"), "sbs");
    for (const char* name :
         {"photo.jpg", "sbs.jpg", "asbs.jpg", "_tb.jpg", "a_sbs_2.jpg", "jps", "dir_sbs/photo.jpg"})
        EXPECT_EQ(layoutOf(name), "none") << name;
}

}  // namespace
}  // namespace quorvane::app
