#ifndef QUORVANE_APPS_DRAWING_VIEW_H
#define QUORVANE_APPS_DRAWING_VIEW_H

#include <functional>
#include <memory>

#include "apps/quorvane/drawing/planning.h"
#include "apps/quorvane/terminal/talk.h"
#include "media/picture/image.h"
#include "media/picture/resample.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/PhotoView.h"

namespace quorvane::app {

/// Both images as the renderer takes them together.
struct PlannedInput {
    media::RgbImage photo;
    PicturePlan plan;
    Target target;  ///< that it was planned for
    FitPlan fit;
};

/// A photo that may have been shrunk while it was decoded.
struct SourcePhoto {
    /// All pixels, which is what no `whole` gives.
    SourcePhoto(media::RgbImage all);  // NOLINT(google-explicit-constructor)
    SourcePhoto(media::RgbImage some, Size whole_size, std::function<media::RgbImage()> decode_whole);

    media::RgbImage pixels;
    Size size;                               ///< of the whole photo
    std::function<media::RgbImage()> whole;  ///< called where `pixels` are too few
};

/// A view of a photo and its depth map, drawn by the renderer of its options. Used in the order of its
/// functions, all of which throw Error.
class View {
  public:
    View(const ViewOptions& options, const Talk& talk, Size picture);

    /// How many times as large pictures are drawn on either axis, which are then to be averaged: as the
    /// options say, or by the driver.
    int supersample() const { return m_supersample; }

    /// Cuts the images to the picture's aspect, fits their sizes to each other and plans the picture that is
    /// seen from all places of `path`. `depth` is on the scale 0..255, larger = nearer.
    PlannedInput plan(SourcePhoto photo, const media::Plane& depth, std::vector<Position> path) const;

    void upload(const PlannedInput& input);

    /// Draws the picture from `position`, or nearer to the middle where the plan says so, and waits until it
    /// is finished.
    void draw(Position position);

    /// Copies what was drawn last, before it is averaged.
    void readBack(media::RgbaImage* drawn) const;

    /// What was drawn last.
    media::RgbaImage picture() const;

    media::GrayImage guide() const;        ///< at grid size
    media::GrayImage shapedDepth() const;  ///< at grid size

  private:
    void makeView();
    void say(const std::string& line) const;

    std::unique_ptr<OffscreenContext> m_context;  ///< none where the processor draws
    std::unique_ptr<PhotoView> m_view;
    ViewOptions m_options;
    Talk m_talk;
    Size m_picture;
    int m_supersample = 1;
    double m_swing = 1.0;
};

}  // namespace quorvane::app

#endif
