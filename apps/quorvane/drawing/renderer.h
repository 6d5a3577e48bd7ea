#ifndef QUORVANE_APPS_DRAWING_RENDERER_H
#define QUORVANE_APPS_DRAWING_RENDERER_H

#include <memory>

#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/PhotoView.h"
#include "sizes/sizes.h"

namespace quorvane::app {

enum class Renderer {
    kAuto,  ///< the graphics driver, or the processor where there is none or it draws on the processor too
    kGl,    ///< the graphics driver, whatever it is
    kSoftware,  ///< the processor, without OpenGL
};

/// A context of the graphics driver, current on this thread; none where the processor draws. Throws Error
/// where a driver is wanted and there is none.
std::shared_ptr<OffscreenContext> contextFor(Renderer renderer);

/// Whether the debug switch asks for a file of every picture that is drawn.
bool dumpsFrames();

/// While it lives, what contextFor has given is given again to the next who asks: for pictures drawn one
/// after the other, on one thread, which then find the driver ready. One at a time.
class WarmContexts {
  public:
    WarmContexts();
    ~WarmContexts();
    WarmContexts(const WarmContexts&) = delete;
    WarmContexts& operator=(const WarmContexts&) = delete;
};

/// A view for pictures of that size in `context`, which is contextFor's. `samples` a pixel are as in
/// ViewOptions of the host; where the processor draws, kAutoSamples is 1.
Status createView(const OffscreenContext* context, Size picture, int orientation, int samples,
                  std::unique_ptr<PhotoView>* view);

}  // namespace quorvane::app

#endif
