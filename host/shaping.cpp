#include "host/shaping.h"

#include "depth/shape_depth.h"
#include "kernels/guided_filter.h"
#include "renderer/chosen_path.h"

namespace quorvane {

ShapedPlanes shapedAsByRenderer(const uint8_t* photo, Size photo_size, const uint8_t* depth, Size depth_size,
                                Size grid, const LibParam& parameters) {
    const auto cells = static_cast<size_t>(grid.width) * static_cast<size_t>(grid.height);
    ShapedPlanes planes = {std::vector<uint8_t>(cells), std::vector<uint8_t>(cells)};
    std::vector<uint8_t> scratch(cells);
    std::vector<unsigned char> filter_buffer(
        static_cast<size_t>(guidedFilterBufferSize(grid.width, grid.height)));

    DepthShaping shaping = {};
    shaping.photo = photo;
    shaping.photo_width = photo_size.width;
    shaping.photo_height = photo_size.height;
    shaping.depth = depth;
    shaping.depth_width = depth_size.width;
    shaping.depth_height = depth_size.height;
    shaping.width = grid.width;
    shaping.height = grid.height;
    shaping.rx = parameters.guided_filter_rx;
    shaping.ry = parameters.guided_filter_ry;
    shaping.eps = parameters.guided_filter_eps;
    shaping.contrast = parameters.depth_contrast;
    shaping.guide = planes.guide.data();
    shaping.scratch = scratch.data();
    shaping.filter_buffer = filter_buffer.data();
    shaping.shaped = planes.shaped.data();
    shapeDepth(chosenPath(), shaping, [](ShapingStep, bool) {});
    return planes;
}

}  // namespace quorvane
