#ifndef QUORVANE_APPS_TUNER_WINDOW_PICTURE_H
#define QUORVANE_APPS_TUNER_WINDOW_PICTURE_H

#include <memory>
#include <optional>

#include "apps/quorvane/drawing/view.h"
#include "apps/tuner/core/preparing.h"
#include "quorvane/host/ParallaxView.h"

namespace quorvane::tuner {

/// One photo in depth as a tuning draws it, in the context of the window. All calls from the thread that
/// draws, with that context current. What fails throws Error.
class Picture {
  public:
    /// How pictures are drawn here, which a plan has to know: a small one is made to see.
    static app::Target probe(int samples);

    /// Uploads what was prepared. The first time, and whenever that has another size or another set of
    /// parameters, the renderer is made anew.
    void take(Prepared prepared);

    bool ready() const { return m_parallax != nullptr; }
    const Prepared& prepared() const { return m_prepared; }

    /// Shows parameters that take effect at once without a new plan; those of `values` that were planned
    /// otherwise.
    void preview(const Tuning& tuning);

    /// Does nothing where that picture is the last one.
    void draw(app::Position position);

    GLuint texture() const { return m_parallax->texture(); }
    Size textureSize() const { return {m_parallax->width(), m_parallax->height()}; }
    const ParallaxView& parallax() const { return *m_parallax; }

    /// What was drawn last, as `quorvane render` would write it.
    media::RgbaImage pixels() const { return m_view->picture(); }
    app::View& view() { return *m_view; }

  private:
    Prepared m_prepared;
    std::unique_ptr<app::View> m_view;
    ParallaxView* m_parallax = nullptr;  ///< the view's own
    LibParam m_shown;                    ///< the parameters that it draws with
    std::optional<app::Position>
        m_drawn;  ///< where the last picture is from; none where that is another one's
};

}  // namespace quorvane::tuner

#endif
