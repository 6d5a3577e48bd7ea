#ifndef QUORVANE_APPS_VIEW_H
#define QUORVANE_APPS_VIEW_H

#include <memory>

#include "commands.h"
#include "media/fit.h"
#include "media/image.h"
#include "media/picture_file.h"
#include "motion.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/ParallaxView.h"

namespace quorvane::app {

/// Both images as their files hold them.
struct Input {
    media::RgbImage photo;
    media::DepthMap depth;  ///< larger = nearer
};

/// Throws media::Error where `out` or the timings file would overwrite the photo or the depth map.
void refuseInputAsOutput(const ViewOptions& options, const std::string& out);

/// Throws media::Error where the photo or the depth map lies in the folder `out` under a frame's name, which
/// would be replaced.
void refuseInputAsFrame(const ViewOptions& options, const std::string& out);

/// A signal meanwhile ends the process. Throws media::Error.
Input readInput(const ViewOptions& options);

/// A view of a photo and its depth map, in an offscreen context of its own.
class View {
  public:
    /// Cuts the images to the picture's aspect, fits their sizes to each other and sets everything up.
    /// Pictures are drawn `supersample` times as large on either axis and averaged. Throws media::Error.
    View(const ViewOptions& options, Input input, media::Size picture, int supersample);

    /// Good until the next call.
    const media::RgbaImage& pictureAt(Position position);

    media::GrayImage guide() const;        ///< at grid size
    media::GrayImage shapedDepth() const;  ///< at grid size

  private:
    std::unique_ptr<OffscreenContext> m_context;
    std::unique_ptr<ParallaxView> m_view;
    media::Size m_picture;
    int m_supersample;
    media::RgbaImage m_drawn;
    media::RgbaImage m_averaged;  ///< of m_drawn, where supersampled
};

}  // namespace quorvane::app

#endif
