#include "software/SoftwareView.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <thread>
#include <utility>

#include "host/checks.h"
#include "host/look_at.h"
#include "host/parameters.h"
#include "host/rows.h"
#include "host/shaping.h"
#include "host/text.h"
#include "software/mesh_drawing.h"
#include "src/view/mesh_extents.h"
#include "src/view/view_matrix.h"

namespace quorvane {
namespace {

constexpr int kLargestSide = 16384;
constexpr int kGoodSamples = 4;

template <typename Work>
Status withMemory(const char* what, const Work& work) {
    try {
        work();
        return Status::success();
    } catch (const std::bad_alloc&) {
        return Status::failure(text("%s: cannot allocate the memory that it takes", what));
    }
}

}  // namespace

SoftwareView::SoftwareView(int samples, const LibParam& parameters)
    : m_samples(samples), m_parameters(parameters) {}

SoftwareView::~SoftwareView() = default;

Status SoftwareView::create(int width, int height, const Options& options,
                            std::unique_ptr<SoftwareView>* view) {
    view->reset();
    Status status = checkSamples(options.samples);
    if (!status) return status;
    const int threads = options.threads > 0
                            ? options.threads
                            : static_cast<int>(std::max(std::thread::hardware_concurrency(), 1u));
    std::unique_ptr<SoftwareView> made;
    status = withMemory("output", [&] {
        made.reset(new SoftwareView(options.samples > 0 ? options.samples : kGoodSamples,
                                    startingParameters(options.orientation, nullptr)));
        made->m_drawing = std::make_unique<software::MeshDrawing>(software::chosenDrawingPath(), threads);
    });
    if (status) status = made->resize(width, height);
    if (status) *view = std::move(made);
    return status;
}

Status SoftwareView::resize(int width, int height) {
    Status status = checkSides("output", width, height, 1, kLargestSide);
    if (!status) return status;
    m_picture = std::vector<uint8_t>();
    m_has_picture = false;
    m_width = width;
    m_height = height;
    m_half_width =
        meshExtents(static_cast<float>(width), static_cast<float>(height), kMeshHalfHeight, kMeshBaseline)
            .half_width;
    return status;
}

Status SoftwareView::setParameter(const std::string& name, double value) {
    return storeParameter(name, value, &m_parameters);
}

Status SoftwareView::setPhoto(const Pixels& rgb) {
    Status status = checkSides("photo", rgb.width, rgb.height, 1, kLargestSide);
    if (status) status = checkPixels("photo", rgb, 3);
    TightRows rows;
    if (status) status = TightRows::of("photo", rgb, 3, 3, &rows);
    if (!status) return status;
    return withMemory("photo", [&] {
        const size_t bytes = size_t{3} * static_cast<size_t>(rgb.width) * static_cast<size_t>(rgb.height);
        std::vector<uint8_t> photo(bytes + kReadBehindPhoto);
        std::memcpy(photo.data(), rows.data(), bytes);
        m_drawing->setPhoto(rows.data(), rgb.width, rgb.height);
        m_photo = std::move(photo);
        if (rgb.width != m_photo_width || rgb.height != m_photo_height) m_shaped.clear();
        m_photo_width = rgb.width;
        m_photo_height = rgb.height;
    });
}

Status SoftwareView::setDepth(const Pixels& depth) {
    if (m_photo.empty()) return Status::failure("depth map: set the photo first");
    const Size photo = {m_photo_width, m_photo_height};
    Status status = checkDepthMap(depth, photo, kLargestSide);
    if (status) status = checkWorkingMemory(photo, {depth.width, depth.height});
    TightRows rows;
    if (status) status = TightRows::of("depth map", depth, 1, 1, &rows);
    if (!status) return status;
    return withMemory("depth map", [&] {
        const Size grid = {depth.width / kDepthPixelsPerCell, depth.height / kDepthPixelsPerCell};
        ShapedPlanes planes = shapedAsByRenderer(m_photo.data(), photo, rows.data(),
                                                 {depth.width, depth.height}, grid, m_parameters);
        m_drawing->setShapedDepth(planes.shaped.data(), grid.width, grid.height);
        m_guide = std::move(planes.guide);
        m_shaped = std::move(planes.shaped);
        m_grid_width = grid.width;
        m_grid_height = grid.height;
    });
}

Status SoftwareView::lookAt(float x, float y) {
    if (!(std::isfinite(x) && std::isfinite(y))) return Status::failure("view position: not a finite number");
    m_x = lookedFrom(x, static_cast<float>(m_width), m_parameters);
    m_y = lookedFrom(y, static_cast<float>(m_height), m_parameters);
    return Status::success();
}

Status SoftwareView::checkImages() const {
    if (m_photo.empty()) return Status::failure("nothing to draw: no photo is set");
    if (m_shaped.empty()) return Status::failure("nothing to draw: no depth map is set for this photo");
    return Status::success();
}

software::Camera SoftwareView::camera() const {
    View view = {};
    view.x = m_x;
    view.y = m_y;
    view.x_boundary = m_parameters.rotate_x_boundary;
    view.y_boundary = m_parameters.rotate_y_boundary;
    view.gain = m_parameters.trans_to_rotate_scale;
    view.fov_scale = m_parameters.fov_scale;
    view.far_offset = m_parameters.far_offset_ext;
    view.pivot = m_parameters.rotate_z_trans;
    view.half_width = m_half_width;
    view.half_height = kMeshHalfHeight;
    return {viewMatrix(view), m_half_width, kMeshHalfHeight, static_cast<float>(farDistance(m_parameters))};
}

Status SoftwareView::render() {
    Status status = checkImages();
    if (!status) return status;
    status = withMemory("drawing", [&] {
        m_picture.resize(size_t{4} * static_cast<size_t>(m_width) * static_cast<size_t>(m_height));
        m_drawing->draw(camera(), m_samples,
                        {m_picture.data(), size_t{4} * static_cast<size_t>(m_width), m_width, m_height});
    });
    m_has_picture = status.ok();
    return status;
}

Status SoftwareView::renderYuv420(uint8_t* planes, size_t bytes) {
    if (m_width % 2 != 0 || m_height % 2 != 0)
        return Status::failure(
            text("drawing Y'CbCr: %d x %d pixels; both sides must be even", m_width, m_height));
    const size_t pixels = static_cast<size_t>(m_width) * static_cast<size_t>(m_height);
    if (planes == nullptr || bytes < pixels / 2 * 3)
        return Status::failure(text("drawing Y'CbCr: %d x %d pixels take %zu bytes, and there are %zu",
                                    m_width, m_height, pixels / 2 * 3, planes == nullptr ? 0 : bytes));
    Status status = checkImages();
    if (!status) return status;
    return withMemory("drawing", [&] {
        m_drawing->draw(camera(), m_samples,
                        {planes, planes + pixels, planes + pixels / 4 * 5, m_width, m_height});
    });
}

Status SoftwareView::readPixels(const WritablePixels& rgba) const {
    constexpr char kWhat[] = "reading the picture";
    if (!m_has_picture) return Status::failure("no picture of this size has been drawn yet");
    if (rgba.width != m_width || rgba.height != m_height)
        return Status::failure(text("%s: %d x %d pixels are asked for, and the picture has %d x %d", kWhat,
                                    rgba.width, rgba.height, m_width, m_height));
    Status status = checkPixels(kWhat, rgba, 4);
    if (!status) return status;
    const size_t row = size_t{4} * static_cast<size_t>(m_width);
    const size_t stride = rgba.stride == 0 ? row : rgba.stride;
    for (size_t y = 0; y < static_cast<size_t>(m_height); ++y)
        std::memcpy(rgba.data + y * stride, m_picture.data() + y * row, row);
    return status;
}

int SoftwareView::largestPhotoSide() const noexcept { return kLargestSide; }

Geometry SoftwareView::geometry() const {
    Geometry geometry = {};
    geometry.half_width = m_half_width;
    geometry.half_height = kMeshHalfHeight;
    if (m_shaped.empty()) return geometry;
    geometry.grid_width = m_grid_width;
    geometry.grid_height = m_grid_height;
    geometry.colour_ratio_x = m_photo_width / m_grid_width;
    geometry.colour_ratio_y = m_photo_height / m_grid_height;
    geometry.block_bytes =
        static_cast<int>(blockBytes({m_photo_width, m_photo_height}, {m_grid_width, m_grid_height}));
    geometry.pivot_distance = m_parameters.rotate_z_trans;
    geometry.still_depth = depthAtDistance(m_parameters.rotate_z_trans);
    geometry.x_side_turn_deg = m_parameters.trans_to_rotate_scale * m_parameters.rotate_x_boundary;
    geometry.x_turn_deg = m_x * geometry.x_side_turn_deg;
    geometry.visible = m_parameters.fov_scale;
    return geometry;
}

Pixels SoftwareView::guide() const {
    if (m_shaped.empty()) return {};
    return {m_guide, m_grid_width, m_grid_height};
}

Pixels SoftwareView::shapedDepth() const {
    if (m_shaped.empty()) return {};
    return {m_shaped, m_grid_width, m_grid_height};
}

}  // namespace quorvane
