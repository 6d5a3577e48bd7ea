#ifndef QUORVANE_APPS_DRAWING_VIEW_H
#define QUORVANE_APPS_DRAWING_VIEW_H

#include <functional>
#include <memory>
#include <string>

#include "apps/quorvane/drawing/parallel_view.h"
#include "apps/quorvane/drawing/planning.h"
#include "apps/quorvane/terminal/talk.h"
#include "media/picture/image.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/PhotoView.h"

namespace quorvane::app {

/// Makes a view for pictures of that size, drawn with so many samples a pixel.
using ViewMaker = std::function<Status(Size picture, int samples, std::unique_ptr<PhotoView>* view)>;

/// A view of a photo and its depth map, drawn by the renderer of its options. Used in the order of its
/// functions, all of which throw Error.
class View {
  public:
    View(const ViewOptions& options, const Talk& talk, Size picture);

    /// A view that `make` makes, whatever renderer the options name: for who has a context of his own.
    View(const ViewOptions& options, const Talk& talk, Size picture, const ViewMaker& make);

    /// How many times as large pictures are drawn on either axis, which are then to be averaged: as the
    /// options say, or by the driver.
    int supersample() const { return m_supersample; }

    /// What is asked of a plan for pictures from all places of `path`.
    Target target(std::vector<Position> path) const;

    /// planInput for that target.
    PlannedInput plan(SourcePhoto photo, const media::Plane& depth, std::vector<Position> path) const;

    void upload(const PlannedInput& input);

    /// Changes a parameter of the pictures until the next upload. The plan stays as it was, so that a frame
    /// may show a border then.
    void set(const std::string& name, double value);

    /// Draws the picture from `position`, or nearer to the middle where the plan says so, as closely as its
    /// zoom says, and waits until it is finished.
    void draw(Position position);

    /// Whether there is drawYuv420.
    bool drawsYuv420() const;

    /// As `draw`, into `planes` as media::toYuv420 makes them, and with nothing to read back. The picture's
    /// sides are even.
    void drawYuv420(Position position, std::vector<uint8_t>* planes);

    /// Keeps what showDepth needs: what was uploaded, and the depth map that it was planned from.
    void keepDepth(const PlannedInput& input, const media::Plane& depth);

    /// Has the depth map drawn in the photo's place from now on, nearer being brighter, or the photo again.
    /// Goes with keepDepth.
    void showDepth(bool depth);

    /// Copies what was drawn last, before it is averaged.
    void readBack(media::RgbaImage* drawn) const;

    /// What was drawn last.
    media::RgbaImage picture() const;

    // Of what was drawn last: what it shows to its sides, and by how many degrees it is turned about the
    // vertical axis.
    Lens lens() const;
    double turn() const { return static_cast<double>(m_view->geometry().x_turn_deg); }

    /// The turn at a view position, before the border dead zone holds it back.
    double turnAt(double x) const;

    media::GrayImage guide() const;        ///< at grid size
    media::GrayImage shapedDepth() const;  ///< at grid size

  private:
    void makeView(const ViewMaker& make);
    void lookFrom(Position position);
    void say(const std::string& line) const;

    std::shared_ptr<OffscreenContext> m_context;  ///< none where the processor draws
    std::unique_ptr<PhotoView> m_view;
    ViewOptions m_options;
    Talk m_talk;
    Size m_picture;
    int m_supersample = 1;
    double m_swing = 1.0;
    double m_fov_scale = 1.0;
    double m_zoom = 1.0;               ///< of what was drawn last
    media::RgbImage m_photo, m_depth;  ///< of keepDepth
    bool m_shows_depth = false;
};

}  // namespace quorvane::app

#endif
