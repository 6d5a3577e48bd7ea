#ifndef QUORVANE_BENCH_VIEWS_SHIFTED_VIEWS_H
#define QUORVANE_BENCH_VIEWS_SHIFTED_VIEWS_H

#include <cstdint>
#include <optional>
#include <vector>

#include "bench/render_target.h"
#include "bench/views/picture.h"
#include "quorvane/esRenderer.h"

namespace quorvane::bench {

/// The renderer as a camera that only moves sideways: its pivot lies so far away that what is left of a tiny
/// turn is a shift. A point at distance Z then moves on the screen by strength * (1 / Z - 1 / pivot), and a
/// picture's pixel is a photo's pixel, so that nothing is resampled or fitted.
class ShiftedViews {
  public:
    static constexpr double kPivot = 20000.0;
    static constexpr double kNearest = 30.8, kFarthest = 44.8;  ///< what a depth of 255 and of 0 is drawn at

    /// `depth` has four samples a cell on each axis, and the photo's sides are 1, 2, 4 .. 32 times the
    /// grid's. Needs a current GL context.
    ShiftedViews(const Picture& photo, const DepthMap& depth, bool guided);

    /// The photo's pixels, moved to the right and down; then the whole picture moved back by (left, top)
    /// pixels, up to half of the photo's size. Where the photo does not reach, black.
    Picture draw(double strength_right, double strength_down, int left, int top);

  private:
    int m_width, m_height;
    std::vector<uint8_t> m_block;
    ESRenderer m_renderer;
    std::optional<RenderTarget> m_target;
};

/// The byte of a depth map that the renderer draws at distance `distance`, or the nearest one.
uint8_t depthByteAt(double distance);

/// Where the renderer draws a flat map of this byte.
double distanceOf(uint8_t depth_byte);

}  // namespace quorvane::bench

#endif
