#ifndef QUORVANE_MEDIA_CLIP_CLIP_WRITER_H
#define QUORVANE_MEDIA_CLIP_CLIP_WRITER_H

#include <memory>
#include <string>

#include "media/picture/image.h"
#include "media/picture/resample.h"

namespace quorvane::media {

enum class OutputKind { kStill, kMp4, kWebp, kGif, kFolder };

/// What `path` asks for: by its extension (.png a still, .mp4, .webp, .gif a clip), and a folder of numbered
/// PNG files when it ends in '/', is a folder already or has no extension. Throws Error for another
/// extension.
OutputKind outputKind(const std::string& path);

/// Takes a clip's frames. Nothing stands at the path until `finish`; a writer that is destroyed
/// before leaves nothing behind and no process running.
class ClipWriter {
  public:
    virtual ~ClipWriter() = default;

    /// Whether frames may come in any order and from several threads at once; they are to come in order
    /// otherwise, one after the other.
    virtual bool takesAnyOrder() const { return false; }

    /// Frame `number`, counted from 0, of the size the writer was opened with. Throws Error, "interrupted"
    /// after a signal.
    virtual void add(int number, const RgbaImage& frame) = 0;

    /// Completes the clip, whose frames have all been added, and moves it to its place. Throws Error.
    virtual void finish() = 0;
};

struct ClipFormat {
    Size size;           ///< both sides even for kMp4
    int fps = 30;        ///< frames a second, 1..240; a folder ignores it
    bool force = false;  ///< write into a folder that is not empty, replacing its numbered frames
};

/// Whether a folder's writer may take a file of this name for a frame of an earlier clip, and replace it.
bool isFrameName(const std::string& name);

/// A writer for clips, stills (exactly one frame) and folders. Clips go through the `ffmpeg` program.
/// Throws Error: no ffmpeg, no such folder, or a folder that is not empty without `force`.
std::unique_ptr<ClipWriter> openClip(const std::string& path, OutputKind kind, const ClipFormat& format);

}  // namespace quorvane::media

#endif
