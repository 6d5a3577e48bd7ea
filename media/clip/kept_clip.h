#ifndef QUORVANE_MEDIA_CLIP_KEPT_CLIP_H
#define QUORVANE_MEDIA_CLIP_KEPT_CLIP_H

#include <memory>
#include <string>

#include "media/clip/clip_writer.h"
#include "system/pending_output.h"

namespace quorvane::media {

/// Frames that are drawn once and compressed several times. It takes them as a writer does, and `finish`
/// says that they are all there.
class KeptClip : public ClipWriter {
  public:
    /// Compresses the frames into `file`, which is empty and is not committed. Throws Error, and Cancelled
    /// after a signal.
    virtual void encode(PendingOutput* file, const EncoderSettings& encoder) = 0;
};

/// Keeps what is to become a clip or a still of `format` at `path`. A clip's frames wait without loss in a
/// file without a name in the same folder: 3 bytes a pixel at most and usually a third of that, and no memory
/// but one frame's. Throws Error (no ffmpeg, no such folder).
std::unique_ptr<KeptClip> keepClip(const std::string& path, const OutputFormat& format,
                                   const ClipSettings& settings);

}  // namespace quorvane::media

#endif
