#include "apps/tuner/core/session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/temporary_folder.h"

namespace quorvane::tuner {
namespace {

using testing::HasSubstr;

TEST(Session, ComesBackAsItWas) {
    const test::TemporaryFolder folder;
    Session session;
    session.photo = "/photos/ä b.jpg";
    session.depth = "/photos/d.png";
    session.tunings[0].parameters["depth_contrast"] = 12.0;
    session.tunings[1].motion = "circle";
    session.window = {1300, 700};
    saveSession(session, folder / "new/session.json");
    std::string remark;
    const std::optional<Session> again = loadSession(folder / "new/session.json", &remark);
    ASSERT_TRUE(again) << remark;
    EXPECT_EQ(again->photo, session.photo);
    EXPECT_EQ(again->depth, session.depth);
    EXPECT_TRUE(again->tunings == session.tunings);
    EXPECT_EQ(again->window, session.window);
    EXPECT_EQ(test::TemporaryFolder::names(folder / "new").size(), 1u) << "nothing half written";
}

TEST(Session, OneThatIsDamagedIsNone) {
    const test::TemporaryFolder folder;
    saveSession({}, folder / "session.json");
    const std::string whole = test::bytesOf(folder / "session.json");
    for (size_t bytes = 0; bytes + 2 < whole.size(); bytes += 7) {
        test::writeBytes(folder / "session.json", whole.substr(0, bytes));
        std::string remark;
        EXPECT_FALSE(loadSession(folder / "session.json", &remark)) << bytes;
        EXPECT_THAT(remark, HasSubstr("session.json")) << bytes;
    }
    std::string remark;
    EXPECT_FALSE(loadSession(folder / "none.json", &remark));
    EXPECT_EQ(remark, "") << "the first session of all";
}

}  // namespace
}  // namespace quorvane::tuner
