#ifndef QUORVANE_APPS_BATCH_WORKER_POOL_H
#define QUORVANE_APPS_BATCH_WORKER_POOL_H

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "system/child_process.h"

namespace quorvane::app {

/// Processes that render photos, one photo each at a time. They are started when they are needed, and one
/// that dies is replaced. Calls come from the thread that made this, which outlives it.
class WorkerPool {
  public:
    /// `workers` processes with `cores` each to keep busy; `kept` stays open in them.
    WorkerPool(int workers, int cores, int kept);

    bool hasIdle() const;
    bool isBusy() const;

    /// Has an idle worker render what `words` of `render` say. Throws Error.
    void give(size_t photo, const std::vector<std::string>& words);

    struct Answer {
        size_t photo;
        std::string outcome;  ///< as outcomeText gives it
    };

    /// Waits for the next photo that is done, or nothing after a signal. A worker that dies says why it did.
    std::optional<Answer> wait();

    /// Asks the workers to end, kills those that have not by then, and returns the photos that were not done.
    std::vector<size_t> end(std::chrono::milliseconds patience);

  private:
    struct Worker {
        Connection connection;
        std::unique_ptr<ChildProcess> process;
        std::optional<size_t> photo;  ///< that it renders
    };

    void start(Worker* worker) const;
    Answer take(Worker* worker);

    int m_cores;
    int m_kept;
    std::vector<Worker> m_workers;
};

}  // namespace quorvane::app

#endif
