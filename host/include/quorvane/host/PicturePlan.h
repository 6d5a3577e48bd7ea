#ifndef QUORVANE_HOST_PICTURE_PLAN_H
#define QUORVANE_HOST_PICTURE_PLAN_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Pixels.h"
#include "Status.h"

// How a picture is composed before anything is drawn: arithmetic only, on any thread, without a context.

namespace quorvane {

/// How much larger than usual everything can be drawn.
constexpr double kLeastZoom = 0.5;
constexpr double kMostZoom = 4.0;

/// What ParallaxView::lookAt takes, and how closely it looks.
struct LookPosition {
    float x = 0.0f;
    float y = 0.0f;
    double zoom = 1.0;  ///< kLeastZoom to kMostZoom: the picture is drawn with `fov_scale` / `zoom`
};

/// How much of the photo is shown, and how far the view swings.
struct SuggestedFrame {
    double fov_scale = 1.0;  ///< the parameter, where the zoom is 1
    double swing = 1.0;      ///< what every x and y is to be multiplied by; below 1 where it has to be less
};

/// Sizes that the renderer takes together.
struct PictureSizes {
    int photo_width = 0;  ///< as ParallaxView::setPhoto takes it: 1, 2, 4, 8, 16 or 32 times the grid
    int photo_height = 0;
    int grid_width = 0;  ///< cells
    int grid_height = 0;
};

/// What stays in place while the view swings.
enum class Pivot {
    kAuto,   ///< the subject: the nearest large thing near the middle
    kPoint,  ///< what the photo shows at a point
    kTuned,  ///< the depth that the parameters give
};

/// A picture that is asked for.
struct PictureRequest {
    PictureSizes sizes;

    /// 3 bytes a pixel, of the size above; needed where `planReadsPhoto` says so.
    Pixels photo;

    /// A byte a pixel, larger is nearer; covers the photo. Any size for clean edges, else 4 times the grid.
    Pixels depth;

    /// Whether the depth is prepared as `cleanDepth` does. The rim of the photo is then also brought closer
    /// to what stays in place, where more of the photo can be seen that way without a border.
    bool clean_edges = true;

    int width = 0;  ///< of the picture as the view draws it, pixels
    int height = 0;
    uint32_t orientation = 4;  ///< as in ViewOptions

    /// Names and values as ParallaxView::setParameter takes them. What is given here or by a device property
    /// is not suggested but kept.
    std::vector<std::pair<std::string, double>> parameters;

    Pivot pivot = Pivot::kAuto;
    double pivot_x = 0.5;  ///< of kPoint: from 0 at the photo's left to 1
    double pivot_y = 0.5;  ///< from its top

    std::optional<double> frame;  ///< `fov_scale`; without one the largest that shows no border

    /// Where the picture will be seen from; without one from wherever lookAt goes.
    std::optional<std::vector<LookPosition>> path;
};

/// What a ParallaxView of that size and orientation draws it with: first setParameter for all of
/// `parameters`, then setPhoto, then setDepth for `depth`; positions are multiplied by `swing`.
struct PicturePlan {
    std::vector<std::pair<std::string, double>> parameters;  ///< those asked for, and those suggested

    int depth_width = 0;  ///< 4 samples a cell
    int depth_height = 0;
    std::vector<uint8_t> depth;

    std::vector<uint8_t> shaped;  ///< the depth as the renderer will bend the grid: a sample a cell

    double fov_scale = 1.0;       ///< in force: the visible part of each side, where the zoom is 1
    double rotate_z_trans = 0.0;  ///< in force: the distance that stays in place, object units
    double swing = 1.0;
};

/// Whether planPicture reads the photo's pixels: where the guided filter is on. For clean edges it is off,
/// unless a parameter or a property turns it on.
bool planReadsPhoto(const PictureRequest& request);

/// On failure `*plan` stays as it was.
Status planPicture(const PictureRequest& request, PicturePlan* plan);

/// How far the grid is stretched. Where a near thing moves off what lies behind it, the cells between them
/// have to cover what the photo does not show.
struct PictureStretch {
    /// How many times as large as at rest a cell is drawn, at least 1: a value a cell, rows from the top.
    /// Cells that are folded over, and so lie behind what folds over them, do not count.
    std::vector<float> times;
    std::vector<uint8_t> seen;  ///< 1 for the cells that any of the pictures shows, else 0
    /// The most stretched cell: its middle from the photo's left and top, 0 to 1, and its `times`.
    double worst_x = 0.5;
    double worst_y = 0.5;
    double worst_times = 1.0;
    /// The part of a picture, 0 to 1, that cells cover which are drawn at least twice as large as at rest. It
    /// hardly depends on how fine the grid is, as `worst_times` does.
    double streaked_part = 0.0;
};

/// Of all pictures from the outermost places of the path, each number being that of the worst one. `plan` is
/// what `planPicture` made of `request`. On failure `*stretch` stays as it was.
Status measureStretch(const PictureRequest& request, const PicturePlan& plan, PictureStretch* stretch);

}  // namespace quorvane

#endif
