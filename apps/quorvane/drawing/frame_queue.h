#ifndef QUORVANE_APPS_DRAWING_FRAME_QUEUE_H
#define QUORVANE_APPS_DRAWING_FRAME_QUEUE_H

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "apps/quorvane/drawing/parallel_view.h"
#include "media/picture/image.h"

namespace quorvane::app {

/// What one place sees.
struct DrawnView {
    media::RgbaImage drawn;
    std::vector<uint8_t> planes;  ///< instead of `drawn`, where the view draws what the writer takes
    media::RgbaImage averaged;    ///< of `drawn`, where supersampled
    media::RgbaImage parallel;    ///< of that, where it is one of several views
    Lens lens;
    double turn_deg = 0.0;  ///< from the middle view
    double zoom = 1.0;      ///< by which the turn is made undone
};

/// What one frame, or several that look alike, are made of.
struct Drawing {
    std::vector<DrawnView> views = std::vector<DrawnView>(1);
    media::RgbaImage joined;                     ///< of the views, where there are several
    std::mutex finishing;                        ///< held by who averages and joins the views
    const media::RgbaImage* finished = nullptr;  ///< what came of that: one of the above
};

struct Frame {
    int number = 0;  ///< from 0
    std::shared_ptr<Drawing> drawing;
};

/// Takes frames to threads that write them, so that the next one is drawn meanwhile. It lends out a fixed
/// number of frames over and over, so its memory stays what the first few took, as long as nobody keeps their
/// drawings. Calls come from one thread at a time.
class FrameQueue {
  public:
    /// Calls `write` for every frame on one of up to `threads` threads; with one, in the order of `push`.
    /// `frames` is how many there are, those being drawn and written included. Throws Error when no
    /// thread can be started.
    FrameQueue(int threads, int frames, std::function<void(Frame&)> write);

    /// Drops what waits, and waits for what is being written.
    ~FrameQueue();

    FrameQueue(const FrameQueue&) = delete;
    FrameQueue& operator=(const FrameQueue&) = delete;

    /// A frame to fill, with a drawing that nobody else has and that holds what it last held. Waits until
    /// there is a frame. Throws what `write` threw.
    Frame take();

    /// Gives a taken frame to be written.
    void push(Frame frame);

    /// Gives back a drawing that nobody else has, for a frame that will want one.
    void giveBack(std::shared_ptr<Drawing> drawing) { m_spare.push_back(std::move(drawing)); }

    /// Waits until all frames are written. Throws what `write` threw. No frame comes after.
    void finish();

  private:
    void work();
    void end();

    const std::function<void(Frame&)> m_write;
    std::mutex m_mutex;
    std::condition_variable m_changed;  ///< any of the following
    std::vector<Frame> m_free;
    std::vector<std::shared_ptr<Drawing>> m_spare;  ///< of the thread that calls alone
    std::deque<Frame> m_waiting;
    bool m_ending = false;
    std::exception_ptr m_failure;  ///< the first one; nothing is written after it
    std::vector<std::thread> m_threads;
};

}  // namespace quorvane::app

#endif
