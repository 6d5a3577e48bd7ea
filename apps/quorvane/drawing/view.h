#ifndef QUORVANE_APPS_DRAWING_VIEW_H
#define QUORVANE_APPS_DRAWING_VIEW_H

#include <memory>

#include "apps/quorvane/drawing/motion.h"
#include "apps/quorvane/drawing/view_options.h"
#include "apps/quorvane/terminal/talk.h"
#include "media/picture/image.h"
#include "media/picture/resample.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/ParallaxView.h"

namespace quorvane::app {

/// Both images as the renderer takes them together.
struct FittedInput {
    media::RgbImage photo;
    media::GrayImage depth;
};

/// A view of a photo and its depth map, in an offscreen context of its own. Used in the order of its
/// functions, all of which throw Error.
class View {
  public:
    /// Pictures are drawn `supersample` times as large on either axis, for the caller to average.
    View(const ViewOptions& options, const Talk& talk, Size picture, int supersample);

    /// Cuts the images to the picture's aspect and fits their sizes to each other. `depth` is on the scale
    /// 0..255, larger = nearer.
    FittedInput fit(media::RgbImage photo, media::Image<float, 1> depth) const;

    void upload(const FittedInput& input);

    /// Draws the picture and waits until it is finished.
    void draw(Position position);

    /// Copies what was drawn last.
    void readBack(media::RgbaImage* drawn) const;

    media::GrayImage guide() const;        ///< at grid size
    media::GrayImage shapedDepth() const;  ///< at grid size

  private:
    void say(const std::string& line) const;

    std::unique_ptr<OffscreenContext> m_context;
    std::unique_ptr<ParallaxView> m_view;
    Size m_picture;
    int m_orientation;
    bool m_talks;
};

}  // namespace quorvane::app

#endif
