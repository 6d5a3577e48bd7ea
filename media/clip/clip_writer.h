#ifndef QUORVANE_MEDIA_CLIP_CLIP_WRITER_H
#define QUORVANE_MEDIA_CLIP_CLIP_WRITER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "media/clip/output_format.h"
#include "media/picture/image.h"
#include "sizes/sizes.h"
#include "system/pending_folder.h"
#include "system/pending_output.h"

namespace quorvane::media {

/// Takes a clip's frames as toYuv420 makes them.
class Yuv420Frames {
  public:
    /// As ClipWriter::add.
    virtual void addYuv420(int number, const std::vector<uint8_t>& planes) = 0;

  protected:
    ~Yuv420Frames() = default;
};

/// Takes a clip's frames. Nothing stands at the path until `finish`; a writer that is destroyed
/// before leaves nothing behind and no process running.
class ClipWriter {
  public:
    virtual ~ClipWriter() = default;

    /// Frame `number`, counted from 0, of the size the writer was opened with; one after the other, unless
    /// the format takes any order. Throws Error, and Cancelled after a signal.
    virtual void add(int number, const RgbaImage& frame) = 0;

    /// What takes the same frames in colours that `add` would only bring them to; null where the format has
    /// others. It lives as long as this.
    virtual Yuv420Frames* yuv420() { return nullptr; }

    /// Completes the clip, whose frames have all been added, and moves it to its place. Throws Error, and
    /// Cancelled after a signal.
    virtual void finish() = 0;
};

struct ClipSettings {
    Size size;                  ///< even sides where the format has them
    int fps = 30;               ///< frames a second, 1..240; stills and folders ignore it
    bool force = false;         ///< write into a folder that is not empty, replacing its numbered frames
    EncoderSettings encoder{};  ///< what the format's codec has
    int standard_output = -1;   ///< what the path "-" stands for
    bool once = false;          ///< players shall not repeat it, where the file can say so
};

/// Whether a folder's writer may take a file of this name for a frame of an earlier clip, and replace it.
bool isFrameName(const std::string& name);

/// A writer of a clip or a still that it puts into `file`, which stays open, is given nothing else until
/// `finish`, and is not committed. Throws Error (no ffmpeg).
std::unique_ptr<ClipWriter> encodeInto(PendingOutput* file, const OutputFormat& format,
                                       const ClipSettings& settings);

/// The same for frames that are to be compressed by several settings: without loss, in at most 3 bytes a
/// pixel and usually one. For clips that ffmpeg writes.
std::unique_ptr<ClipWriter> keepInto(PendingOutput* file, const OutputFormat& format,
                                     const ClipSettings& settings);

/// Puts a clip of `frames`, which keepInto's writer has written, into `file`; it is the one that encodeInto
/// would have made of them. Throws Error, and Cancelled after a signal.
void encodeKept(const PendingOutput& frames, PendingOutput* file, const OutputFormat& format,
                const ClipSettings& settings);

/// A writer for `path`, of the format that outputFormat gave for it; a still is exactly one frame. Most clips
/// go through the `ffmpeg` program. To standard output y4m and rgba go frame by frame, all else at once when
/// it is whole. Throws Error (no ffmpeg, no such folder) and FolderNotEmpty.
std::unique_ptr<ClipWriter> openClip(const std::string& path, const OutputFormat& format,
                                     const ClipSettings& settings);

}  // namespace quorvane::media

#endif
