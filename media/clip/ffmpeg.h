#ifndef QUORVANE_MEDIA_CLIP_FFMPEG_H
#define QUORVANE_MEDIA_CLIP_FFMPEG_H

#include <sys/types.h>

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace quorvane::media {

/// A running ffmpeg that reads its input from this process. Killed and reaped by the destructor.
class Ffmpeg {
  public:
    /// Starts `arguments[0]`, found on PATH, without a shell. Throws Error when it cannot be started.
    explicit Ffmpeg(const std::vector<std::string>& arguments);
    ~Ffmpeg();

    Ffmpeg(const Ffmpeg&) = delete;
    Ffmpeg& operator=(const Ffmpeg&) = delete;

    /// False when ffmpeg has gone away or a signal asks for the end.
    bool write(const void* bytes, size_t size);

    /// Ends the input and waits. True when ffmpeg succeeded; false also when a signal asks for the end.
    bool finish();

    /// The last line of what ffmpeg complained about, for a message.
    std::string complaint();

  private:
    void closeInput();

    pid_t m_process = -1;
    int m_input = -1;
    std::unique_ptr<FILE, int (*)(FILE*)> m_errors;
};

}  // namespace quorvane::media

#endif
