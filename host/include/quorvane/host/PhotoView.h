#ifndef QUORVANE_HOST_PHOTO_VIEW_H
#define QUORVANE_HOST_PHOTO_VIEW_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "Pixels.h"
#include "Status.h"

namespace quorvane {

/// What was planned for the images in use.
struct Geometry {
    int grid_width;      ///< cells; the shaped depth map has a sample for each
    int grid_height;     ///< cells
    int colour_ratio_x;  ///< photo pixels a cell: 1, 2, 4, 8, 16 or 32
    int colour_ratio_y;
    int block_bytes;   ///< working memory
    float half_width;  ///< of the mesh, object units
    float half_height;
    float pivot_distance;  ///< in front of the camera, object units
    /// The shaped depth, on the scale 0..255, that stays in place while the view swings; nearer depths move
    /// one way and farther ones the other. Below 0 when the pivot lies behind everything.
    float still_depth;
    float x_turn_deg;  ///< about the vertical axis, of the next picture; above 0 it is seen from the right
    float x_side_turn_deg;  ///< the same from view position 1
    float visible;          ///< `fov_scale`: the part of each half extent that is seen
};

/// Leaves the number of samples a pixel to the view: 4, or as many as a graphics driver has; 1 where one
/// draws in software, which takes longer for several than for a picture of twice the size.
constexpr int kAutoSamples = 0;

/// A photo that moves in depth, whatever draws it: first the parameters, the photo and its depth map, then
/// for every picture `lookAt`, `render` and `readPixels`. A call that fails leaves the view as it was. Needs
/// no header of a graphics interface.
class PhotoView {
  public:
    virtual ~PhotoView() = default;

    /// A parameter of ParallaxView::parameters: refused when unknown, out of its range or, for an integer
    /// one, fractional.
    virtual Status setParameter(const std::string& name, double value) = 0;

    /// Copies a photo of 3 bytes a pixel: R, G, B. Sides from 1 to `largestPhotoSide`. A photo of another
    /// size than the last one unsets the depth map.
    virtual Status setPhoto(const Pixels& rgb) = 0;

    /// Filters and copies the photo's depth map of a byte a pixel, larger is nearer. Both sides at least 4;
    /// the grid is the size / 4, and the photo must be 1, 2, 4, 8, 16 or 32 times the grid on each axis, to
    /// within one cell.
    virtual Status setDepth(const Pixels& depth) = 0;

    /// Looks from (x, y), each -1..1 and clamped to it: positive x from the right, positive y from above. (0,
    /// 0) is the rest position. The border dead zone holds the ends a little inside.
    virtual Status lookAt(float x, float y) = 0;

    /// Changes the pictures' size, 1 x 1 to what can be drawn. The images stay.
    virtual Status resize(int width, int height) = 0;

    /// Draws the picture and waits until it is finished. Needs a photo and a depth map.
    virtual Status render() = 0;

    /// Copies the last picture, 4 bytes a pixel: R, G, B, A. `rgba` has the picture's size.
    virtual Status readPixels(const WritablePixels& rgba) const = 0;

    /// Whether this view draws by renderYuv420, which is faster than bringing to those colours what `render`
    /// draws.
    virtual bool drawsYuv420() const noexcept { return false; }

    /// Draws the picture, whose sides are even, straight into `planes`, as most encoders take it: Y'CbCr by
    /// BT.709 in limited range, luma and then Cb and Cr at half the size, each for 2 x 2 pixels,
    /// 3 bytes for 2 pixels in all. The picture of `readPixels` stays the last that `render` drew.
    virtual Status renderYuv420(uint8_t* /*planes*/, size_t /*bytes*/) {
        return Status::failure("this view draws no Y'CbCr");
    }

    virtual int width() const noexcept = 0;   ///< of the pictures, pixels
    virtual int height() const noexcept = 0;  ///< of the pictures, pixels

    /// How many samples a pixel are drawn at silhouettes.
    virtual int samples() const noexcept = 0;

    virtual int largestPhotoSide() const noexcept = 0;  ///< pixels

    /// Zeroes but for the extents until photo and depth are set.
    virtual Geometry geometry() const = 0;

    /// A byte a cell, until the next change of photo or depth: the photo's luma, and the depth that bends the
    /// mesh. Without data until photo and depth are set.
    virtual Pixels guide() const = 0;
    virtual Pixels shapedDepth() const = 0;

  protected:
    PhotoView() = default;
    PhotoView(const PhotoView&) = default;
    PhotoView& operator=(const PhotoView&) = default;
};

}  // namespace quorvane

#endif
