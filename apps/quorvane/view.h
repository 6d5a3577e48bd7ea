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

/// Both images as the renderer takes them together.
struct FittedInput {
    media::RgbImage photo;
    media::GrayImage depth;
};

/// Throws media::Error where `out` or the timings file would overwrite the photo or the depth map.
void refuseInputAsOutput(const ViewOptions& options, const std::string& out);

/// Throws media::Error where the photo or the depth map lies in the folder `out` under a frame's name, which
/// would be replaced.
void refuseInputAsFrame(const ViewOptions& options, const std::string& out);

/// A signal meanwhile ends the process. Throws media::Error.
Input readInput(const ViewOptions& options);

/// A view of a photo and its depth map, in an offscreen context of its own. Used in the order of its
/// functions, all of which throw media::Error.
class View {
  public:
    /// Pictures are drawn `supersample` times as large on either axis, for the caller to average, into
    /// `outputs` textures by turns.
    View(const ViewOptions& options, media::Size picture, int supersample, int outputs = 1);

    /// Cuts the images to the picture's aspect and fits their sizes to each other.
    FittedInput fit(Input input) const;

    void upload(const FittedInput& input);

    /// Draws the picture and waits until it is finished.
    void draw(Position position);

    /// Copies what was drawn last.
    void readBack(media::RgbaImage* drawn) const;

    GLuint texture() const { return m_view->texture(); }  ///< that holds what was drawn last
    media::Size drawnSize() const { return {m_view->width(), m_view->height()}; }
    const OffscreenContext& context() const { return *m_context; }

    media::GrayImage guide() const;        ///< at grid size
    media::GrayImage shapedDepth() const;  ///< at grid size

  private:
    template <typename... Values>
    void say(const char* format, Values... values) const;

    std::unique_ptr<OffscreenContext> m_context;
    std::unique_ptr<ParallaxView> m_view;
    media::Size m_picture;
    unsigned m_orientation;
    bool m_talks;
};

}  // namespace quorvane::app

#endif
