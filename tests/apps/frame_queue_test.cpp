#include "apps/quorvane/drawing/frame_queue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <numeric>

#include "system/error.h"

namespace quorvane::app {
namespace {

constexpr auto kSoon = std::chrono::milliseconds(50);
constexpr auto kLong = std::chrono::seconds(20);

/// Holds a writer up until it is let go.
class Gate {
  public:
    void pass() {
        m_reached.set_value();
        m_open.get_future().wait();
    }
    bool reached() { return m_reached.get_future().wait_for(kLong) == std::future_status::ready; }
    void open() { m_open.set_value(); }

  private:
    std::promise<void> m_reached;
    std::promise<void> m_open;
};

void push(FrameQueue* queue, int number) {
    Frame frame = queue->take();
    frame.number = number;
    queue->push(std::move(frame));
}

TEST(FrameQueue, OneThreadWritesInOrder) {
    std::vector<int> written;
    FrameQueue queue(1, 3, [&](Frame& frame) { written.push_back(frame.number); });
    for (int number = 0; number < 500; ++number) push(&queue, number);
    queue.finish();
    std::vector<int> wanted(500);
    std::iota(wanted.begin(), wanted.end(), 0);
    EXPECT_EQ(written, wanted);
}

TEST(FrameQueue, SeveralThreadsWriteEveryFrameOnce) {
    std::array<std::atomic<int>, 500> written{};
    {
        FrameQueue queue(4, 6, [&](Frame& frame) { ++written[static_cast<size_t>(frame.number)]; });
        for (int number = 0; number < 500; ++number) push(&queue, number);
        queue.finish();
    }
    EXPECT_TRUE(std::all_of(written.begin(), written.end(), [](int times) { return times == 1; }));
}

TEST(FrameQueue, SeveralThreadsWriteAtOnce) {
    Gate first, second;
    FrameQueue queue(2, 2, [&](Frame& frame) { (frame.number == 0 ? first : second).pass(); });
    push(&queue, 0);
    push(&queue, 1);
    EXPECT_TRUE(first.reached());
    EXPECT_TRUE(second.reached()) << "waits for the first frame";
    first.open();
    second.open();
    queue.finish();
}

TEST(FrameQueue, UsesItsPicturesOverAndOver) {
    FrameQueue queue(1, 3, [](Frame&) {});
    int made = 0;
    for (int number = 0; number < 100; ++number) {
        Frame frame = queue.take();
        if (frame.drawing->views[0].drawn.samples.empty()) {
            frame.drawing->views[0].drawn = media::RgbaImage(64, 64);
            ++made;
        }
        queue.push(std::move(frame));
    }
    queue.finish();
    EXPECT_LE(made, 3);
}

TEST(FrameQueue, NobodyIsLentADrawingThatSomebodyKeeps) {
    FrameQueue queue(1, 1, [](Frame&) {});
    Frame frame = queue.take();
    const std::shared_ptr<Drawing> kept = frame.drawing;
    kept->joined = media::RgbaImage(2, 2);
    kept->finished = &kept->joined;
    queue.push(std::move(frame));
    EXPECT_NE(queue.take().drawing, kept);
    EXPECT_EQ(kept->finished, &kept->joined);
}

TEST(FrameQueue, LendsWhatWasGivenBackBeforeItMakesAnother) {
    FrameQueue queue(1, 1, [](Frame&) {});
    Frame frame = queue.take();
    auto other = std::make_shared<Drawing>();
    const Drawing* const given_back = other.get();
    queue.giveBack(std::move(other));
    const std::shared_ptr<Drawing> kept = frame.drawing;
    queue.push(std::move(frame));
    EXPECT_EQ(queue.take().drawing.get(), given_back);
}

TEST(FrameQueue, LendsFramesWhileOneIsWrittenAndNoMoreThanItHas) {
    Gate gate;
    FrameQueue queue(1, 3, [&](Frame& frame) {
        if (frame.number == 0) gate.pass();
    });
    push(&queue, 0);
    ASSERT_TRUE(gate.reached());
    push(&queue, 1);
    push(&queue, 2);
    auto fourth = std::async(std::launch::async, [&] { push(&queue, 3); });
    EXPECT_EQ(fourth.wait_for(kSoon), std::future_status::timeout) << "there were to be three";
    gate.open();
    EXPECT_EQ(fourth.wait_for(kLong), std::future_status::ready);
    queue.finish();
}

std::string failureOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const Error& error) {
        return error.what();
    }
    return "none";
}

TEST(FrameQueue, FailureWakesWhoWaitsForAFrame) {
    Gate gate;
    FrameQueue queue(1, 2, [&](Frame&) {
        gate.pass();
        throw Error("the disk is full");
    });
    push(&queue, 0);
    push(&queue, 1);
    ASSERT_TRUE(gate.reached());
    auto third = std::async(std::launch::async, [&] { return failureOf([&] { queue.take(); }); });
    EXPECT_EQ(third.wait_for(kSoon), std::future_status::timeout);
    gate.open();
    ASSERT_EQ(third.wait_for(kLong), std::future_status::ready) << "waits forever";
    EXPECT_EQ(third.get(), "the disk is full");
}

TEST(FrameQueue, NothingIsWrittenAfterAFailure) {
    Gate gate;
    std::vector<int> written;
    FrameQueue queue(1, 3, [&](Frame& frame) {
        written.push_back(frame.number);
        gate.pass();
        throw Error("ffmpeg failed");
    });
    for (int number = 0; number < 3; ++number) push(&queue, number);
    ASSERT_TRUE(gate.reached());
    gate.open();
    EXPECT_EQ(failureOf([&] { queue.finish(); }), "ffmpeg failed");
    EXPECT_THAT(written, testing::ElementsAre(0));
}

TEST(FrameQueue, FirstFailureIsTheOneTold) {
    Gate first, second;
    FrameQueue queue(2, 2, [&](Frame& frame) {
        (frame.number == 0 ? first : second).pass();
        throw Error("frame " + std::to_string(frame.number));
    });
    push(&queue, 0);
    push(&queue, 1);
    ASSERT_TRUE(first.reached());
    ASSERT_TRUE(second.reached());
    second.open();
    EXPECT_EQ(failureOf([&] { queue.take(); }), "frame 1");
    first.open();
    EXPECT_EQ(failureOf([&] { queue.finish(); }), "frame 1");
}

TEST(FrameQueue, AbandonedDropsWhatWaits) {
    Gate gate;
    std::vector<int> written;
    std::thread opener;
    {
        FrameQueue queue(1, 3, [&](Frame& frame) {
            written.push_back(frame.number);
            gate.pass();
        });
        for (int number = 0; number < 3; ++number) push(&queue, number);
        ASSERT_TRUE(gate.reached());
        opener = std::thread([&] {
            std::this_thread::sleep_for(kSoon);
            gate.open();
        });
    }
    opener.join();
    EXPECT_THAT(written, testing::ElementsAre(0));
}

}  // namespace
}  // namespace quorvane::app
