#ifndef QUORVANE_SOFTWARE_WORKERS_H
#define QUORVANE_SOFTWARE_WORKERS_H

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quorvane::software {

/// Threads that share the items of a task; the caller's is one of them.
class Workers {
  public:
    /// 1 or more; fewer where the system makes no more.
    explicit Workers(int threads);
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    int count() const noexcept { return static_cast<int>(m_threads.size()) + 1; }

    /// A part of a task: work(item, worker) for every item 0..items - 1, each once, on any of the workers
    /// 0..count() - 1. It throws nothing.
    struct Step {
        int items;
        std::function<void(int item, int worker)> work;
    };

    /// Does the steps one after the other, each when all of the one before is done, and returns after the
    /// last.
    void run(const std::vector<Step>& steps);

  private:
    /// Of a step. Each worker begins with a share of neighbouring items, which find in its caches what those
    /// before them and the same share of the step ahead left there, and then helps the others.
    struct Progress {
        std::vector<std::atomic<int>> begun;  ///< by share
        std::atomic<int> done{0};
    };

    void serve(int worker);
    void takePart(int worker, const std::vector<Step>& steps);

    std::vector<std::thread> m_threads;
    std::mutex m_mutex;
    std::condition_variable m_begun, m_finished;
    const std::vector<Step>* m_steps = nullptr;  ///< none between tasks
    std::vector<Progress> m_progress;            ///< of these
    int m_taking_part = 0;                       ///< threads, the caller's not among them
    unsigned m_task = 0;
    bool m_ends = false;
};

}  // namespace quorvane::software

#endif
