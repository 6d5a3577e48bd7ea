#ifndef QUORVANE_MEDIA_CLIP_FFMPEG_H
#define QUORVANE_MEDIA_CLIP_FFMPEG_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "system/child_process.h"

namespace quorvane::media {

/// A running ffmpeg that reads its input from this process. Killed by the destructor.
class Ffmpeg {
  public:
    /// Starts `words[0]` with the other words as its arguments; `kept` stay open in it. Throws Error when it
    /// cannot be started.
    Ffmpeg(const std::vector<std::string>& words, std::vector<int> kept);

    /// False when ffmpeg has gone away. Throws Cancelled after a signal.
    bool write(const void* bytes, size_t size);

    /// Ends the input and waits. True when ffmpeg succeeded. Throws Cancelled after a signal.
    bool finish();

    /// Throws Error with why it failed to write `path`, such as "a.mp4: ffmpeg failed (disk is full)"; it is
    /// a TemporaryError where ffmpeg was killed or the machine lacked something. Waits for its end. Throws
    /// Cancelled after a signal.
    [[noreturn]] void fail(const std::string& path);

  private:
    /// The last line that ffmpeg printed, or nothing.
    std::string complaint() const;

    // In memory: a full disk is one of the things that ffmpeg complains about.
    Descriptor m_errors;
    Descriptor m_input;
    std::unique_ptr<ChildProcess> m_process;
};

}  // namespace quorvane::media

#endif
