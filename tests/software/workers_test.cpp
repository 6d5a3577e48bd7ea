#include "software/workers.h"

#include <gtest/gtest.h>

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
            workers.run(items, [&](int item, int worker) {
                ++done[static_cast<size_t>(item)];
                if (worker < 0 || worker >= threads) ++wrong_worker;
            });
            for (const std::atomic<int>& count : done) ASSERT_EQ(count, 1);
            EXPECT_EQ(wrong_worker, 0);
        }
    }
}

}  // namespace
}  // namespace quorvane::software
