#ifndef QUORVANE_APPS_DRAWING_FRAME_READER_H
#define QUORVANE_APPS_DRAWING_FRAME_READER_H

#include <GLES2/gl2.h>

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "media/picture/image.h"
#include "media/picture/resample.h"
#include "quorvane/host/OffscreenContext.h"

namespace quorvane::app {

/// Copies finished pictures out of their textures on a thread of its own, in a context of its own, so that
/// the next one is drawn meanwhile. All calls come from one thread.
class FrameReader {
  public:
    /// Copies a picture. Throws Error.
    using Copy = std::function<void(media::RgbaImage*)>;

    /// Reads textures of the given size that belong to `share`. Calls `deliver` on its thread for every
    /// picture, in the order of `read`; `copy` works until `deliver` returns. `share` may be current on the
    /// calling thread, and is needed by the constructor alone.
    FrameReader(const OffscreenContext& share, Size size,
                std::function<void(int number, const Copy& copy)> deliver);

    /// Waits for what is being delivered.
    ~FrameReader();

    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;

    /// Why nothing can be read, because no thread could be started or the driver makes no context that
    /// shares; empty where all is well.
    const std::string& fault() const { return m_fault; }

    /// Gives a finished picture to be read, once the one before has been: with two textures by turns, the
    /// other one is free to be drawn into afterwards. Not where there is a fault. Throws what `deliver`
    /// threw.
    void read(int number, GLuint texture);

    /// Waits until all are delivered. Throws what `deliver` threw. Nothing is read after.
    void finish();

  private:
    void work(const OffscreenContext& share);
    void copy(GLuint texture, media::RgbaImage* picture) const;
    void end();

    const Size m_size;
    const std::function<void(int, const Copy&)> m_deliver;
    std::string m_fault;
    std::mutex m_mutex;
    std::condition_variable m_changed;  ///< any of the following
    bool m_opened = false;              ///< or found that it cannot be
    bool m_reading = false;
    bool m_ending = false;
    int m_number = 0;      ///< of the picture that is read
    GLuint m_texture = 0;  ///< that holds it
    std::exception_ptr m_failure;
    std::thread m_thread;
};

}  // namespace quorvane::app

#endif
