#include "apps/quorvane/drawing/stage_times.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

#include "apps/quorvane/drawing/frame_queue.h"

namespace quorvane::app {
namespace {

using testing::HasSubstr;
using testing::Not;

/// What `stage` took by the table, in milliseconds.
double millisecondsOf(const std::string& stage, const std::string& table) {
    const size_t line = table.find("\n" + stage + " ");
    return line == std::string::npos ? 0.0 : std::stod(table.substr(line + 1 + stage.size()));
}

TEST(StageTimes, AddsUpWhatThreadsMeasure) {
    constexpr int kThreads = 4, kTimes = 5;
    StageTimes times;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&times] {
            for (int j = 0; j < kTimes; ++j)
                times.measure(Stage::kEncode,
                              [] { std::this_thread::sleep_for(std::chrono::milliseconds(2)); });
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_GE(millisecondsOf("encode", times.table(20, kThreads)), kThreads * kTimes * 2.0);
}

// As a clip is drawn: one thread draws and fills frames, others average and encode them.
TEST(StageTimes, MeasuresBothSidesOfAFrameQueue) {
    constexpr int kFrames = 200;
    StageTimes times;
    long long encoded = 0;
    std::mutex mutex;
    FrameQueue queue(3, 5, [&](Frame& frame) {
        times.measure(Stage::kAverage, [&frame] {
            frame.drawing->views[0].averaged = media::RgbaImage(8, 8);
            frame.drawing->views[0].averaged.samples[0] = frame.drawing->views[0].drawn.samples[0];
        });
        times.measure(Stage::kEncode, [&] {
            const std::lock_guard<std::mutex> lock(mutex);
            encoded += frame.drawing->views[0].averaged.samples[0];
        });
    });
    long long drawn = 0;
    for (int number = 0; number < kFrames; ++number) {
        Frame frame = queue.take();
        frame.number = number;
        times.measure(Stage::kReadBack, [&] {
            if (frame.drawing->views[0].drawn.samples.empty())
                frame.drawing->views[0].drawn = media::RgbaImage(16, 16);
            frame.drawing->views[0].drawn.samples[0] = static_cast<uint8_t>(number);
        });
        drawn += frame.drawing->views[0].drawn.samples[0];
        queue.push(std::move(frame));
        if (number == 0) times.noteFirstFrame();
    }
    queue.finish();
    EXPECT_EQ(encoded, drawn);
    const std::string table = times.table(kFrames, 3);
    for (const char* stage : {"read back", "average", "encode"}) EXPECT_THAT(table, HasSubstr(stage));
    EXPECT_THAT(table, HasSubstr("  on 3 threads together\n"));
    EXPECT_THAT(table, HasSubstr("200 frames in "));
    EXPECT_THAT(table, Not(HasSubstr("decode"))) << "it never ran";
}

}  // namespace
}  // namespace quorvane::app
