#ifndef QUORVANE_APPS_DRAWING_FITTING_H
#define QUORVANE_APPS_DRAWING_FITTING_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "apps/quorvane/terminal/talk.h"
#include "media/clip/kept_clip.h"
#include "sizes/sizes.h"

namespace quorvane::app {

/// A clip or still that is to take no more than so many bytes.
struct FitTask {
    std::string path;
    const media::OutputFormat& format;
    media::EncoderSettings encoder;
    int64_t limit;  ///< bytes
    Size size;      ///< of a picture, or of each of several views in one: pixels, at most
    int fps;        ///< at most; a still ignores it

    /// The size whose longer side is so many pixels, or next to it one that the format takes.
    std::function<Size(int longest)> size_at;

    // What the user has asked for stays as it is.
    bool keeps_quality;
    bool keeps_size;
    bool keeps_rate;

    /// The quality grows until the limit is reached or nobody sees a difference, not only until it is the
    /// usual one.
    bool fills_limit;
};

/// Draws all frames of the size and at the rate, and gives them to a KeptClip, which it finishes.
using DrawKept = std::function<std::unique_ptr<media::KeptClip>(Size size, int fps)>;

/// Draws the clip, compresses it by several settings and puts the best of those that fit at its place: first
/// a lower quality, then a smaller size, then a lower rate, never below a floor; for codecs without much of a
/// quality first the size, then the rate. Says on standard error what it chose. Throws Error where even the
/// smallest is too large, with its size, and Cancelled after a signal; nothing is at its place then.
void drawToFit(const FitTask& task, const Talk& talk, const DrawKept& draw);

}  // namespace quorvane::app

#endif
