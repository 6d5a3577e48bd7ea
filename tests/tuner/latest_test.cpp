// Work on a thread of its own.

#include "apps/tuner/core/latest.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <vector>

namespace quorvane::tuner {
namespace {

using Doubling = Latest<int, std::shared_ptr<std::vector<int>>, 2>;

template <typename Worker>
typename Worker::Outcome wait(Worker* worker, size_t slot) {
    for (;;) {
        if (auto outcome = worker->take(slot)) return *outcome;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

std::shared_ptr<std::vector<int>> twice(int value) {
    return std::make_shared<std::vector<int>>(1000, 2 * value);
}

TEST(Latest, GivesWhatTheWorkMade) {
    Doubling worker([](const int& value, const Doubling::Step&) { return twice(value); });
    worker.ask(0, 21, false);
    EXPECT_EQ(wait(&worker, 0).result->front(), 42);
    EXPECT_FALSE(worker.take(0)) << "once";
}

TEST(Latest, OfThoseThatWaitOnlyTheNewestIsDone) {
    std::promise<void> go_on;
    std::shared_future<void> gate = go_on.get_future().share();
    std::atomic<int> done{0};
    Doubling worker([&](const int& value, const Doubling::Step&) {
        if (value == 0) gate.wait();
        ++done;
        return twice(value);
    });
    worker.ask(0, 0, false);
    while (worker.idle()) std::this_thread::yield();
    for (int value = 1; value <= 100; ++value) worker.ask(1, value, false);
    go_on.set_value();
    EXPECT_EQ(wait(&worker, 1).result->front(), 200);
    EXPECT_LE(done, 3);
}

TEST(Latest, WorkThatIsReplacedEndsAtItsNextStep) {
    std::promise<void> started;
    Doubling worker([&, first = true](const int& value, const Doubling::Step& step) mutable {
        if (std::exchange(first, false)) {
            started.set_value();
            for (;;) step("waiting");
        }
        return twice(value);
    });
    worker.ask(0, 1, false);
    started.get_future().wait();
    worker.ask(0, 2, true);
    EXPECT_EQ(wait(&worker, 0).result->front(), 4);
}

TEST(Latest, WorkThatIsNotReplacedStillGivesItsResult) {
    std::promise<void> started, go_on, first_taken;
    Doubling worker([&](const int& value, const Doubling::Step& step) {
        if (value == 1) {
            started.set_value();
            go_on.get_future().wait();
            step("going on");
        } else {
            first_taken.get_future().wait();
        }
        return twice(value);
    });
    worker.ask(0, 1, false);
    started.get_future().wait();
    worker.ask(0, 2, false);
    go_on.set_value();
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    std::optional<Doubling::Outcome> first;
    while (!(first = worker.take(0)) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    first_taken.set_value();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->result->front(), 2);
    EXPECT_EQ(wait(&worker, 0).result->front(), 4);
}

TEST(Latest, AFailureIsASentence) {
    Doubling worker([](const int& value, const Doubling::Step&) -> std::shared_ptr<std::vector<int>> {
        if (value == 1) throw std::bad_alloc();
        throw std::runtime_error("photo.jpg: no picture");
    });
    worker.ask(0, 0, false);
    EXPECT_EQ(wait(&worker, 0).failure, "photo.jpg: no picture");
    worker.ask(0, 1, false);
    EXPECT_EQ(wait(&worker, 0).failure, "out of memory");
}

TEST(Latest, EndsInTheMiddleOfWork) {
    std::promise<void> started;
    auto worker = std::make_unique<Doubling>([&](const int& value, const Doubling::Step& step) {
        started.set_value();
        for (;;) step("going on for ever");
        return twice(value);
    });
    worker->ask(0, 1, false);
    started.get_future().wait();
    while (worker->doing().empty()) std::this_thread::yield();
    EXPECT_EQ(worker->doing(), "going on for ever");
    worker->end();
    worker.reset();
}

TEST(Latest, ManyRequestsWhileOthersAreDoneRaceNowhere) {
    Doubling worker([](const int& value, const Doubling::Step& step) {
        step("one");
        auto result = twice(value);
        step("two");
        return result;
    });
    int newest = 0;
    for (int value = 1; value <= 500; ++value) {
        worker.ask(static_cast<size_t>(value % 2), value, value % 7 == 0);
        worker.doing();
        if (const auto outcome = worker.take(0)) newest = outcome->result->back();
        if (value % 10 == 0) std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    while (newest != 1000) newest = wait(&worker, 0).result->back();
}

}  // namespace
}  // namespace quorvane::tuner
