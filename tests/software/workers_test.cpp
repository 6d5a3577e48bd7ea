#include "software/workers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <thread>
#include <vector>

namespace quorvane::software {
namespace {

TEST(Workers, DoEachItemOnceWhateverTheirNumber) {
    for (const int threads : {1, 2, 5}) {
        Workers workers(threads);
        EXPECT_EQ(workers.count(), threads);
        for (const int items : {0, 1, 3, 1000}) {
            std::vector<std::atomic<int>> done(static_cast<size_t>(items));
            std::atomic<int> wrong_worker{0};
            const auto work = [&](int item, int worker) {
                ++done[static_cast<size_t>(item)];
                if (worker < 0 || worker >= threads) ++wrong_worker;
            };
            workers.run({{items, work}});
            for (const std::atomic<int>& count : done) ASSERT_EQ(count, 1);
            EXPECT_EQ(wrong_worker, 0);
        }
    }
}

TEST(Workers, BeginNoStepBeforeTheOneAheadOfItIsDone) {
    constexpr int kTasks = 500, kItems = 7;
    Workers workers(4);
    std::atomic<int> early{0};
    for (int task = 0; task < kTasks; ++task) {
        std::atomic<int> first{0}, second{0};
        workers.run({{kItems,
                      [&](int, int) {
                          std::this_thread::yield();
                          ++first;
                      }},
                     {kItems,
                      [&](int, int) {
                          if (first != kItems) ++early;
                          std::this_thread::yield();
                          ++second;
                      }},
                     {1, [&](int, int) {
                          if (second != kItems) ++early;
                      }}});
        ASSERT_EQ(second, kItems);
    }
    EXPECT_EQ(early, 0);
}

// A program that is asked to end waits in a write, which the signal is to interrupt.
TEST(Workers, LeaveSignalsToTheThreadThatMadeThem) {
    Workers workers(3);
    const pthread_t caller = pthread_self();
    std::atomic<int> open{0}, of_caller{0};
    const auto work = [&](int, int) {
        const bool is_caller = pthread_equal(pthread_self(), caller) != 0;
        // The others leave the caller a share, however late it gets a processor.
        while (!is_caller && of_caller == 0) std::this_thread::yield();
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        if (is_caller)
            ++of_caller;
        else if (sigismember(&blocked, SIGTERM) == 0)
            ++open;
    };
    workers.run({{300, work}});
    EXPECT_EQ(open, 0);
}

}  // namespace
}  // namespace quorvane::software
