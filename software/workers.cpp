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

void Workers::run(int items, const std::function<void(int, int)>& work) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_work = &work;
        m_items = items;
        m_next = 0;
        m_busy = static_cast<int>(m_threads.size());
        ++m_task;
    }
    m_begun.notify_all();
    takeItems(0);
    std::unique_lock<std::mutex> lock(m_mutex);
    m_finished.wait(lock, [this] { return m_busy == 0; });
}

void Workers::takeItems(int worker) {
    for (int item = m_next++; item < m_items; item = m_next++) (*m_work)(item, worker);
}

void Workers::serve(int worker) {
    unsigned done = 0;
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_begun.wait(lock, [&] { return m_ends || m_task != done; });
        if (m_ends) return;
        done = m_task;
        lock.unlock();
        takeItems(worker);
        lock.lock();
        if (--m_busy == 0) m_finished.notify_one();
    }
}

}  // namespace quorvane::software
