#ifndef QUORVANE_APPS_DRAWING_STAGE_TIMES_H
#define QUORVANE_APPS_DRAWING_STAGE_TIMES_H

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>

namespace quorvane::app {

/// The stages of a render. Averaging and encoding run on other threads while the next frame is drawn.
enum class Stage { kDecode, kSetUp, kFit, kUpload, kDraw, kReadBack, kAverage, kEncode };

/// What every stage took, and the whole since this was made. Any thread may measure.
class StageTimes {
  public:
    /// Does `work` and adds what it took to `stage`.
    template <typename Work>
    auto measure(Stage stage, Work work) {
        const Running running(&m_nanoseconds[static_cast<size_t>(stage)]);
        return work();
    }

    /// The first frame is on its way to the encoder.
    void noteFirstFrame() { m_first_frame = Clock::now() - m_start; }

    /// The table for a clip of `frames` frames that `writers` threads have written and that is complete now.
    /// Stages that never ran are left out.
    std::string table(int frames, int writers) const;

  private:
    using Clock = std::chrono::steady_clock;

    class Running {
      public:
        explicit Running(std::atomic<long long>* sum) : m_sum(sum), m_start(Clock::now()) {}
        ~Running() { *m_sum += std::chrono::nanoseconds(Clock::now() - m_start).count(); }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

      private:
        std::atomic<long long>* m_sum;
        Clock::time_point m_start;
    };

    const Clock::time_point m_start = Clock::now();
    Clock::duration m_first_frame = Clock::duration::zero();
    std::array<std::atomic<long long>, static_cast<size_t>(Stage::kEncode) + 1> m_nanoseconds{};
};

}  // namespace quorvane::app

#endif
