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

    /// Calls work(item, worker) for every item 0..items - 1, each once, on any of the workers 0..count() - 1,
    /// and returns when all are done. `work` throws nothing.
    void run(int items, const std::function<void(int item, int worker)>& work);

  private:
    void serve(int worker);
    void takeItems(int worker);

    std::vector<std::thread> m_threads;
    std::mutex m_mutex;
    std::condition_variable m_begun, m_finished;
    const std::function<void(int, int)>* m_work = nullptr;
    std::atomic<int> m_next{0};
    int m_items = 0;
    int m_busy = 0;
    unsigned m_task = 0;
    bool m_ends = false;
};

}  // namespace quorvane::software

#endif
