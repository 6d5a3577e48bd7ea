#include <new>
#include <utility>

#include "composition/edges.h"
#include "host/rows.h"
#include "host/text.h"
#include "quorvane/host/CleanDepth.h"
#include "sizes/sizes.h"

namespace quorvane {
namespace {

constexpr const char* kWhat = "depth map";
constexpr int kLargestSide = 65536;

/// Unlike fitSizes, which brings the photo to the grid, this takes the photo as it is.
Size finestGrid(Size photo, int most_triangles) {
    Size grid;
    for (int ratio = 1; ratio <= kLargestRatio; ratio *= 2) {
        const Size next = {photo.width / ratio, photo.height / ratio};
        if (next.width < 1 || next.height < 1) break;
        if (photoPixelsPerCell(photo.width, next.width) == 0 ||
            photoPixelsPerCell(photo.height, next.height) == 0 || !blockFits(photo, next))
            continue;
        grid = next;
        if (triangleCount(grid) <= most_triangles) break;
    }
    return grid;
}

Status checkSide(const char* what, int width, int height) {
    if (width >= 1 && height >= 1 && width <= kLargestSide && height <= kLargestSide)
        return Status::success();
    return Status::failure(
        text("%s: %d x %d pixels; each side must be 1 to %d", what, width, height, kLargestSide));
}

}  // namespace

Status cleanDepth(const Pixels& depth, int photo_width, int photo_height, int most_triangles,
                  CleanDepth* clean) {
    Status status = checkSide("photo", photo_width, photo_height);
    if (status) status = checkSide(kWhat, depth.width, depth.height);
    if (status) status = checkPixels(kWhat, depth, 1);
    if (!status) return status;
    const Size grid = finestGrid({photo_width, photo_height}, most_triangles);
    if (grid.width == 0)
        return Status::failure(
            text("photo: %d x %d pixels take more than 2 GB of working memory", photo_width, photo_height));

    TightRows rows;
    status = TightRows::of(kWhat, depth, 1, 1, &rows);
    if (!status) return status;
    try {
        CleanDepth made;
        made.width = grid.width * kDepthPixelsPerCell;
        made.height = grid.height * kDepthPixelsPerCell;
        made.samples = cleanEdges(rows.data(), {depth.width, depth.height}, grid);
        made.guided_filter_radius = kCleanEdgesFilterRadius;
        *clean = std::move(made);
    } catch (const std::bad_alloc&) {
        return Status::failure(
            text("%s: cannot allocate a grid of %d x %d cells", kWhat, grid.width, grid.height));
    }
    return Status::success();
}

}  // namespace quorvane
