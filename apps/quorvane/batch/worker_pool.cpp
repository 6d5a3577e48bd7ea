#include "apps/quorvane/batch/worker_pool.h"

#include <poll.h>

#include <algorithm>
#include <csignal>

#include "apps/quorvane/batch/batch_worker.h"
#include "apps/quorvane/batch/result.h"
#include "system/cancel.h"

namespace quorvane::app {
namespace {

using Clock = std::chrono::steady_clock;

// A signal that comes just before a wait does not end it.
constexpr int kLongestWaitMs = 100;

/// What became of a worker that has ended in the middle of a photo.
PhotoOutcome outcomeOf(const ExitStatus& status) {
    // Who sends these two means the process, not the photo: the kernel where memory is short, or a person.
    const bool killed =
        status.signal() == SIGKILL || status.signal() == SIGTERM || status.code() == kSysexitTryAgain;
    PhotoOutcome outcome;
    outcome.exit = killed ? kSysexitTryAgain : kSysexitNever;
    outcome.error = "the process that rendered it " + status.words();
    return outcome;
}

}  // namespace

WorkerPool::WorkerPool(int workers, int cores, int kept)
    : m_cores(cores), m_kept(kept), m_workers(static_cast<size_t>(workers)) {}

bool WorkerPool::hasIdle() const {
    return std::any_of(m_workers.begin(), m_workers.end(),
                       [](const Worker& worker) { return !worker.photo; });
}

bool WorkerPool::isBusy() const {
    return std::any_of(m_workers.begin(), m_workers.end(), [](const Worker& worker) { return worker.photo; });
}

void WorkerPool::start(Worker* worker) const {
    worker->connection = connection();
    const Descriptor said = memoryFile();
    ChildFiles files;
    files.input = worker->connection.there.number();
    files.error = said.number();
    files.kept = {m_kept};
    worker->process = std::make_unique<ChildProcess>(
        std::vector<std::string>{"/proc/self/exe", kBatchWorker, std::to_string(m_cores)}, files);
    // With this end open here too, the worker's death would go unnoticed.
    worker->connection.there.close();
}

void WorkerPool::give(size_t photo, const std::vector<std::string>& words) {
    // One that runs is warm.
    auto idle = std::find_if(m_workers.begin(), m_workers.end(),
                             [](const Worker& worker) { return !worker.photo && worker.process; });
    if (idle == m_workers.end())
        idle = std::find_if(m_workers.begin(), m_workers.end(),
                            [](const Worker& worker) { return !worker.photo; });
    if (!idle->process || idle->process->ended()) start(&*idle);
    // Where it has just died, its answer says so.
    idle->photo = photo;
    sendWords(idle->connection.here, words);
}

WorkerPool::Answer WorkerPool::take(Worker* worker) {
    const size_t photo = *worker->photo;
    std::vector<std::string> words;
    if (receiveWords(worker->connection.here, &words) && words.size() == 1) {
        worker->photo.reset();
        return {photo, words[0]};
    }
    worker->process->kill();
    const ExitStatus status = *worker->process->ended();
    worker->process.reset();
    worker->photo.reset();
    return {photo, outcomeText(outcomeOf(status))};
}

std::optional<WorkerPool::Answer> WorkerPool::wait() {
    for (;;) {
        std::vector<pollfd> waited;
        std::vector<Worker*> workers;
        for (Worker& worker : m_workers) {
            if (!worker.photo) continue;
            waited.push_back({worker.connection.here.number(), POLLIN, 0});
            workers.push_back(&worker);
        }
        poll(waited.data(), waited.size(), kLongestWaitMs);
        if (cancelled()) return {};
        for (size_t i = 0; i < waited.size(); ++i)
            if (waited[i].revents != 0) return take(workers[i]);
    }
}

std::vector<size_t> WorkerPool::end(std::chrono::milliseconds patience) {
    const Clock::time_point end = Clock::now() + patience;
    std::vector<size_t> left;
    for (Worker& worker : m_workers) {
        if (worker.process) worker.process->terminate();
        if (worker.photo) left.push_back(*worker.photo);
    }
    for (Worker& worker : m_workers) {
        while (worker.process && !worker.process->ended() && Clock::now() < end) poll(nullptr, 0, 10);
        worker = {};
    }
    return left;
}

}  // namespace quorvane::app
