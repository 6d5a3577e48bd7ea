#include "system/cancel.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include "system/error.h"

namespace quorvane {
namespace {

/// The exit code says what was caught.
[[noreturn]] void throwAfterASignal() {
    catchSignals();
    std::raise(SIGTERM);
    try {
        throwIfCancelled();
    } catch (const Error&) {
        std::_Exit(1);
    } catch (const Cancelled& cancelled) {
        std::_Exit(std::string(cancelled.what()) == "interrupted" ? 7 : 2);
    }
    std::_Exit(3);
}

TEST(CancelDeathTest, CancellingIsNoError) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(throwAfterASignal(), testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace quorvane
