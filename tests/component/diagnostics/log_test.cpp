#include "diagnostics/log.h"

#include "support/component_test.h"

namespace quorvane::test {
namespace {

using ::testing::ElementsAre;

class Log : public ComponentTest {};

TEST_F(Log, DebugAndErrorLinesCarryTheTagAndTheirPriority) {
    LOGD("%d things", 3);
    LOGE("broken");
    EXPECT_THAT(log.lines(), ElementsAre(LogLine{ANDROID_LOG_DEBUG, "AppQRVN", "3 things"},
                                         LogLine{ANDROID_LOG_ERROR, "AppQRVN", "broken"}));
}

}  // namespace
}  // namespace quorvane::test
