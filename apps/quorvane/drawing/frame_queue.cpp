#include "apps/quorvane/drawing/frame_queue.h"

#include <string>
#include <system_error>
#include <utility>

#include "system/error.h"

namespace quorvane::app {

FrameQueue::FrameQueue(int threads, int frames, std::function<void(Frame&)> write)
    : m_write(std::move(write)), m_free(static_cast<size_t>(frames)) {
    m_threads.reserve(static_cast<size_t>(threads));
    try {
        for (int i = 0; i < threads; ++i) m_threads.emplace_back(&FrameQueue::work, this);
    } catch (const std::system_error& failed) {
        // Fewer will do.
        if (m_threads.empty()) throwFor("no thread can be started", failed.code().value());
    }
}

FrameQueue::~FrameQueue() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_waiting.clear();
    }
    end();
}

Frame FrameQueue::take() {
    std::unique_lock<std::mutex> lock(m_mutex);
    // A failure and a signal need no wake-up of their own: both end the writing that this waits for.
    m_changed.wait(lock, [this] { return !m_free.empty(); });
    if (m_failure != nullptr) std::rethrow_exception(m_failure);
    Frame frame = std::move(m_free.back());
    m_free.pop_back();
    lock.unlock();
    if (frame.drawing.use_count() != 1) {
        if (m_spare.empty()) m_spare.push_back(std::make_shared<Drawing>());
        frame.drawing = std::move(m_spare.back());
        m_spare.pop_back();
    }
    frame.drawing->finished = nullptr;
    return frame;
}

void FrameQueue::push(Frame frame) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waiting.push_back(std::move(frame));
    m_changed.notify_all();
}

void FrameQueue::finish() {
    end();
    if (m_failure != nullptr) std::rethrow_exception(m_failure);
}

void FrameQueue::end() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
        m_changed.notify_all();
    }
    for (std::thread& thread : m_threads) thread.join();
    m_threads.clear();
}

void FrameQueue::work() {
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_ending || m_failure != nullptr || !m_waiting.empty(); });
        if (m_failure != nullptr || m_waiting.empty()) return;
        Frame frame = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.unlock();
        std::exception_ptr failure;
        try {
            m_write(frame);
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        if (m_failure == nullptr) m_failure = failure;
        m_free.push_back(std::move(frame));
        m_changed.notify_all();
    }
}

}  // namespace quorvane::app
