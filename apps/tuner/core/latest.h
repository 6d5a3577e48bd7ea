#ifndef QUORVANE_APPS_TUNER_CORE_LATEST_H
#define QUORVANE_APPS_TUNER_CORE_LATEST_H

#include <array>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace quorvane::tuner {

/// Thrown in work that nobody waits for any more.
class Obsolete {};

/// Does work on one thread of its own while others go on: of the requests that wait in a slot the newest. All
/// calls come from one thread.
template <typename Request, typename Result, size_t kSlots>
class Latest {
  public:
    /// What became of a request.
    struct Outcome {
        Result result;
        std::string failure;  ///< one sentence; empty on success
    };

    /// Says what is being done, and throws Obsolete where that has become pointless.
    using Step = std::function<void(const char* what)>;

    explicit Latest(std::function<Result(const Request&, const Step&)> work)
        : m_work(std::move(work)), m_thread(&Latest::run, this) {}

    /// Waits for the step that is running.
    ~Latest() {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_ending = true;
            m_changed.notify_all();
        }
        m_thread.join();
    }

    Latest(const Latest&) = delete;
    Latest& operator=(const Latest&) = delete;

    /// Asks for another result of `slot` instead of what waits there. What is being worked on still gives its
    /// result first, unless `replaces`: then it is dropped.
    void ask(size_t slot, Request request, bool replaces) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_waiting[slot] = std::move(request);
        if (replaces) {
            m_done[slot].reset();
            m_dropped[slot] = true;
        }
        m_changed.notify_all();
    }

    /// What has become of the newest request of `slot` that has been worked on, once.
    std::optional<Outcome> take(size_t slot) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(m_done[slot], std::nullopt);
    }

    /// What is being done; empty where nothing is.
    std::string doing() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_doing;
    }

    /// From now on every step ends the work, so that the destructor waits for one step only.
    void end() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
        m_changed.notify_all();
    }

    /// Whether the thread has nothing to do, or is about to end.
    bool idle() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return !m_working && (m_ending || nextSlot() == kSlots);
    }

  private:
    size_t nextSlot() const {
        size_t slot = 0;
        while (slot < kSlots && !m_waiting[slot]) ++slot;
        return slot;
    }

    void run() {
        std::unique_lock<std::mutex> lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return m_ending || nextSlot() < kSlots; });
            if (m_ending) return;
            const size_t slot = nextSlot();
            const Request request = std::move(*m_waiting[slot]);
            m_waiting[slot].reset();
            m_dropped[slot] = false;
            m_working = true;
            lock.unlock();
            std::optional<Outcome> outcome = outcomeOf(slot, request);
            lock.lock();
            m_working = false;
            m_doing.clear();
            if (outcome && !m_dropped[slot] && !m_ending) m_done[slot] = std::move(outcome);
        }
    }

    std::optional<Outcome> outcomeOf(size_t slot, const Request& request) {
        const auto step = [this, slot](const char* what) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_ending || m_dropped[slot]) throw Obsolete();
            m_doing = what;
        };
        try {
            return Outcome{m_work(request, step), {}};
        } catch (const Obsolete&) {
            return {};
        } catch (const std::bad_alloc&) {
            return Outcome{{}, "out of memory"};
        } catch (const std::exception& error) {
            return Outcome{{}, error.what()};
        }
    }

    const std::function<Result(const Request&, const Step&)> m_work;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;  ///< any of the following
    std::array<std::optional<Request>, kSlots> m_waiting;
    std::array<std::optional<Outcome>, kSlots> m_done;
    std::array<bool, kSlots> m_dropped{};  ///< what is being worked on there
    std::string m_doing;
    bool m_working = false;
    bool m_ending = false;
    std::thread m_thread;  ///< last: it uses all of the above
};

}  // namespace quorvane::tuner

#endif
