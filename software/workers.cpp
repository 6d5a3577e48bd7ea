#include "software/workers.h"

#include <csignal>

#include <system_error>

namespace quorvane::software {
namespace {

/// Threads that are made meanwhile leave every signal to the others, whose system calls it is to interrupt.
class SignalsHeldOff {
  public:
    SignalsHeldOff() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsHeldOff() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsHeldOff(const SignalsHeldOff&) = delete;
    SignalsHeldOff& operator=(const SignalsHeldOff&) = delete;

  private:
    sigset_t m_before;
};

}  // namespace

Workers::Workers(int threads) {
    const SignalsHeldOff signals;
    try {
        for (int i = 1; i < threads; ++i) m_threads.emplace_back([this, i] { serve(i); });
    } catch (const std::system_error&) {
        // Those that there are do the work.
    }
}

Workers::~Workers() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ends = true;
    }
    m_begun.notify_all();
    for (std::thread& thread : m_threads) thread.join();
}

void Workers::run(const std::vector<Step>& steps) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_steps = &steps;
        m_progress = std::vector<Progress>(steps.size());
        for (Progress& progress : m_progress)
            progress.begun = std::vector<std::atomic<int>>(static_cast<size_t>(count()));
        ++m_task;
    }
    m_begun.notify_all();
    takePart(0, steps);
    // Who wakes up after this has missed the task: nobody waits for him.
    std::unique_lock<std::mutex> lock(m_mutex);
    m_steps = nullptr;
    m_finished.wait(lock, [this] { return m_taking_part == 0; });
}

void Workers::takePart(int worker, const std::vector<Step>& steps) {
    for (size_t i = 0; i < steps.size(); ++i) {
        const Step& step = steps[i];
        Progress& progress = m_progress[i];
        for (int turn = 0; turn < count(); ++turn) {
            const int share = (worker + turn) % count();
            const int first = share * step.items / count(), end = (share + 1) * step.items / count();
            std::atomic<int>& begun = progress.begun[static_cast<size_t>(share)];
            for (int item = first + begun++; item < end; item = first + begun++) {
                step.work(item, worker);
                ++progress.done;
            }
        }
        // For an item at most: falling asleep and waking up would take longer.
        while (progress.done < step.items) std::this_thread::yield();
    }
}

void Workers::serve(int worker) {
    unsigned seen = 0;
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_begun.wait(lock, [&] { return m_ends || m_task != seen; });
        if (m_ends) return;
        seen = m_task;
        if (m_steps == nullptr) continue;
        ++m_taking_part;
        const std::vector<Step>& steps = *m_steps;
        lock.unlock();
        takePart(worker, steps);
        lock.lock();
        if (--m_taking_part == 0) m_finished.notify_one();
    }
}

}  // namespace quorvane::software
