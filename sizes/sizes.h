#ifndef QUORVANE_SIZES_SIZES_H
#define QUORVANE_SIZES_SIZES_H

#include <cstdint>

namespace quorvane {

struct Size {
    int width = 0;
    int height = 0;
    bool operator==(const Size& other) const { return width == other.width && height == other.height; }
    bool operator!=(const Size& other) const { return !(*this == other); }
};

/// A cell of the grid covers this many depth pixels on each axis.
constexpr int kDepthPixelsPerCell = 4;

/// A cell of the grid covers up to this many photo pixels on each axis.
constexpr int kLargestRatio = 32;

/// How many photo pixels the renderer takes for a cell on one axis: 1, 2, 4, 8, 16 or 32; 0 where `photo`
/// pixels are none of these times `cells`, to within one cell.
int photoPixelsPerCell(int photo, int cells);

/// Bytes of working memory that the renderer asks for. A double, since it is exact wherever the renderer's
/// own 32-bit count is, and cannot overflow.
double blockBytes(Size photo, Size grid);

/// The renderer counts its working memory in 32 bits.
bool blockFits(Size photo, Size grid);

/// Sizes that the renderer takes together: photo = ratio * grid and depth = 4 * grid on both axes.
struct Fit {
    int ratio = 1;  ///< photo pixels a grid cell: 1, 2, 4, 8, 16 or 32
    Size grid;
    Size photo;
    Size depth;
};

/// How fine a grid may be. The finer, the closer silhouettes follow the photo, and the more there is to draw.
struct GridBudget {
    int triangles = 0;  ///< 0: the coarsest grid that keeps every sample of the depth map
};

constexpr GridBudget kCoarseGrid = {};
constexpr GridBudget kFineGrid = {1600000};
/// For pictures that are made, not watched while they move.
constexpr GridBudget kAutoGrid = {400000};
/// For windows, phones and pages, which draw every picture in time.
constexpr GridBudget kAutoGridLive = {100000};

int64_t triangleCount(Size grid);

/// For a photo of its size or, where it is larger than `largest_photo_side`, scaled down to that. The photo
/// grows by less than one cell. Without a budget the coarsest grid that keeps every sample of the depth map,
/// or, where the photo is too small for that grid or the working memory would pass 2 GB, the nearest grid
/// that fits; where none does, the photo is scaled down further. With a budget the finest grid within it, a
/// cell a photo pixel at most, for a photo of the same size; where even 32 photo pixels a cell pass it, that.
/// All sizes, given and returned, are at least 1.
Fit fitSizes(Size photo, Size depth, int largest_photo_side, const GridBudget& budget = kCoarseGrid);

/// The picture size for a photo: its aspect, the long side at most `longest`, never larger than the photo.
/// `even` rounds both sides down to even numbers (2 at least), as 4:2:0 video needs.
Size pictureSize(Size photo, int longest, bool even);

/// The same with the long side exactly `longest`, however large the photo is.
Size scaledPictureSize(Size photo, int longest, bool even);

/// The largest part of `image` that has the aspect of `wanted`.
Size croppedSize(Size image, Size wanted);

/// What of both images is used for a picture, and the sizes that it is brought to.
struct FitPlan {
    bool cut = false;  ///< the picture has another aspect, and shows the middle only
    Size photo;        ///< pixels used, of the middle
    Size depth;        ///< the same part of the depth map
    Fit fit;
};

FitPlan planFit(Size photo, Size depth, Size picture, int largest_texture,
                const GridBudget& budget = kCoarseGrid);

}  // namespace quorvane

#endif
