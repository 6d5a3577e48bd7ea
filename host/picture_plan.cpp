#include "quorvane/host/PicturePlan.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "composition/edges.h"
#include "composition/pivot.h"
#include "composition/rim.h"
#include "composition/stretch.h"
#include "depth/depth_curve.h"
#include "host/checks.h"
#include "host/parameters.h"
#include "host/rows.h"
#include "host/shaping.h"
#include "host/suggestions.h"
#include "host/text.h"
#include "quorvane/host/ParallaxView.h"
#include "sizes/sizes.h"
#include "view/mesh_extents.h"

namespace quorvane {
namespace {

constexpr int kLargestSide = 65536;
/// The depth curve falls again for a higher one.
constexpr float kMostRisingContrast = 32.0f;

/// The parameters as ESRenderer::getProperties sets them, and which of them somebody has chosen.
class Parameters {
  public:
    explicit Parameters(uint32_t orientation) : m_values(startingParameters(orientation, &m_chosen)) {}

    Status choose(const std::string& name, double value) {
        Status status = storeParameter(name, value, &m_values);
        if (status) m_chosen.push_back(name);
        return status;
    }

    /// What was chosen stays.
    void suggest(const std::string& name, double value) {
        if (isChosen(name)) return;
        store(name, value);
        m_suggested.emplace_back(name, value);
    }

    bool isChosen(const std::string& name) const {
        return std::find(m_chosen.begin(), m_chosen.end(), name) != m_chosen.end();
    }

    bool filterDepth() const { return m_values.guided_filter_rx > 0 || m_values.guided_filter_ry > 0; }

    const LibParam& values() const { return m_values; }
    const std::vector<std::pair<std::string, double>>& suggested() const { return m_suggested; }

  private:
    void store(const std::string& name, double value) {
        for (const Parameter& parameter : kParameters)
            if (name == parameter.name) parameter.store(value, &m_values);
    }

    std::vector<std::string> m_chosen;
    LibParam m_values;
    std::vector<std::pair<std::string, double>> m_suggested;
};

/// Those in force when the depth is shaped.
Status parametersFor(const PictureRequest& request, Parameters* parameters) {
    for (const auto& [name, value] : request.parameters) {
        Status status = parameters->choose(name, value);
        if (!status) return status;
    }
    if (request.clean_edges)
        for (const char* radius : {"guided_filter_rx", "guided_filter_ry"})
            parameters->suggest(radius, kCleanEdgesFilterRadius);
    return Status::success();
}

Status checkSides(const char* what, int width, int height) {
    return quorvane::checkSides(what, width, height, 1, kLargestSide);
}

Status checkSizes(const PictureSizes& sizes) {
    Status status = checkSides("photo", sizes.photo_width, sizes.photo_height);
    if (status) status = checkSides("grid", sizes.grid_width, sizes.grid_height);
    if (!status) return status;
    if (photoPixelsPerCell(sizes.photo_width, sizes.grid_width) == 0 ||
        photoPixelsPerCell(sizes.photo_height, sizes.grid_height) == 0)
        return Status::failure(
            text("the %d x %d photo is not 1, 2, 4, 8, 16 or 32 times the grid of %d x %d cells",
                 sizes.photo_width, sizes.photo_height, sizes.grid_width, sizes.grid_height));
    if (!blockFits({sizes.photo_width, sizes.photo_height}, {sizes.grid_width, sizes.grid_height}))
        return Status::failure(text("a %d x %d photo with a grid of %d x %d cells takes more than 2 GB",
                                    sizes.photo_width, sizes.photo_height, sizes.grid_width,
                                    sizes.grid_height));
    return status;
}

Status prepareDepth(const PictureRequest& request, PicturePlan* plan) {
    constexpr char kWhat[] = "depth map";
    const Pixels& depth = request.depth;
    const Size grid = {request.sizes.grid_width, request.sizes.grid_height};
    Status status = checkSides(kWhat, depth.width, depth.height);
    if (status) status = checkPixels(kWhat, depth, 1);
    TightRows rows;
    if (status) status = TightRows::of(kWhat, depth, 1, 1, &rows);
    if (!status) return status;

    plan->depth_width = grid.width * kDepthPixelsPerCell;
    plan->depth_height = grid.height * kDepthPixelsPerCell;
    if (request.clean_edges) {
        plan->depth = cleanEdges(rows.data(), {depth.width, depth.height}, grid);
        return status;
    }
    if (depth.width != plan->depth_width || depth.height != plan->depth_height)
        return Status::failure(text("%s: %d x %d pixels; a grid of %d x %d cells takes %d x %d", kWhat,
                                    depth.width, depth.height, grid.width, grid.height, plan->depth_width,
                                    plan->depth_height));
    plan->depth.assign(rows.data(),
                       rows.data() + static_cast<size_t>(depth.width) * static_cast<size_t>(depth.height));
    return status;
}

/// As ESRenderer::setDepth shapes it.
Status shape(const PictureRequest& request, const Parameters& chosen, PicturePlan* plan) {
    const PictureSizes& sizes = request.sizes;
    const LibParam& parameters = chosen.values();
    Size guide = {sizes.grid_width, sizes.grid_height};
    std::vector<uint8_t> photo;
    if (chosen.filterDepth()) {
        guide = {sizes.photo_width, sizes.photo_height};
        if (request.photo.width != guide.width || request.photo.height != guide.height)
            return Status::failure(
                text("photo: %d x %d pixels are needed for the guided filter", guide.width, guide.height));
        Status status = checkPixels("photo", request.photo, 3);
        TightRows rows;
        if (status) status = TightRows::of("photo", request.photo, 3, 3, &rows);
        if (!status) return status;
        photo.assign(rows.data(), rows.data() + size_t{3} * static_cast<size_t>(guide.width) *
                                                    static_cast<size_t>(guide.height));
    } else {
        photo.resize(size_t{3} * static_cast<size_t>(guide.width) * static_cast<size_t>(guide.height));
    }
    photo.resize(photo.size() + kReadBehindPhoto);

    plan->shaped =
        shapedAsByRenderer(photo.data(), guide, plan->depth.data(), {plan->depth_width, plan->depth_height},
                           {sizes.grid_width, sizes.grid_height}, parameters)
            .shaped;
    return Status::success();
}

Composed composedOf(const PictureRequest& request, const ShapedDepth& shaped, const LibParam& parameters) {
    const auto width = static_cast<float>(request.width), height = static_cast<float>(request.height);
    const MeshExtents extents = meshExtents(width, height, kMeshHalfHeight, kMeshBaseline);
    return {{shaped, static_cast<double>(extents.half_width), static_cast<double>(kMeshHalfHeight)},
            parameters,
            width,
            height};
}

/// Of the places that a view goes to, or of all that it can, the outermost in eight directions.
std::vector<LookPosition> outermost(const std::optional<std::vector<LookPosition>>& path) {
    std::vector<LookPosition> directions = {{-1, -1}, {-1, 0}, {-1, 1}, {0, -1},
                                            {0, 1},   {1, -1}, {1, 0},  {1, 1}};
    if (!path) return directions;
    std::vector<LookPosition> places;
    for (const LookPosition& direction : directions) {
        const auto way = [&](const LookPosition& place) {
            return place.x * direction.x + place.y * direction.y;
        };
        const auto outer =
            std::max_element(path->begin(), path->end(),
                             [&](const LookPosition& a, const LookPosition& b) { return way(a) < way(b); });
        if (outer == path->end() || way(*outer) <= 0.0f) continue;
        const bool known = std::any_of(places.begin(), places.end(), [&](const LookPosition& place) {
            return place.x == outer->x && place.y == outer->y;
        });
        if (!known) places.push_back(*outer);
    }
    return places;
}

/// Whether the renderer draws every picture of the path. A frame that was given knows nothing of the zooms.
Status checkZooms(const std::vector<LookPosition>& path, double fov_scale) {
    for (const LookPosition& place : path)
        if (!ParallaxView::checkParameter("fov_scale", fov_scale / place.zoom).ok())
            return Status::failure(
                text("zoom: %g of a frame that shows %g of each side would show %.3g; 0.05 to 1 can be shown",
                     place.zoom, fov_scale, fov_scale / place.zoom));
    return Status::success();
}

/// Suggests the frame. Clean edges have the photo's rim eased too, where more can be seen that way.
Status chooseFrame(const PictureRequest& request, Parameters* parameters, PicturePlan* plan) {
    const LibParam& values = parameters->values();
    const auto composed = [&](const PicturePlan& of) {
        return composedOf(request, {request.sizes.grid_width, request.sizes.grid_height, of.shaped.data()},
                          values);
    };
    const auto solve = [&](const PicturePlan& of) {
        return request.path ? frameFor(composed(of), *request.path) : frameFor(composed(of));
    };
    SuggestedFrame found = solve(*plan);
    if (request.clean_edges && values.depth_contrast <= kMostRisingContrast) {
        PicturePlan eased = *plan;
        uint8_t curve[256];
        scaleDepthCurve(values.depth_contrast, curve);
        easeRim(eased.depth.data(), {eased.depth_width, eased.depth_height}, curve, composed(eased).grid,
                cameraOf(values), reachOf(composed(eased), request.path));
        Status status = shape(request, *parameters, &eased);
        if (!status) return status;
        const SuggestedFrame with_ease = solve(eased);
        if (std::pair(with_ease.swing, with_ease.fov_scale) > std::pair(found.swing, found.fov_scale)) {
            found = with_ease;
            *plan = std::move(eased);
        }
    }
    if (!request.frame && !parameters->isChosen("fov_scale")) plan->swing = found.swing;
    parameters->suggest("fov_scale", request.frame.value_or(found.fov_scale));
    return request.path ? checkZooms(*request.path, static_cast<double>(values.fov_scale))
                        : Status::success();
}

Status composePicture(const PictureRequest& request, PicturePlan* plan) {
    Status status = checkSizes(request.sizes);
    if (status) status = checkSides("picture", request.width, request.height);
    if (status && request.pivot == Pivot::kPoint) status = checkPhotoPoint(request.pivot_x, request.pivot_y);
    if (status && request.path) status = checkPath(*request.path);
    if (status && request.frame) status = ParallaxView::checkParameter("fov_scale", *request.frame);
    if (!status) return status;

    Parameters parameters(request.orientation);
    status = parametersFor(request, &parameters);
    if (!status) return status;
    status = prepareDepth(request, plan);
    if (status) status = shape(request, parameters, plan);
    if (!status) return status;

    const ShapedDepth shaped = {request.sizes.grid_width, request.sizes.grid_height, plan->shaped.data()};
    if (request.pivot == Pivot::kAuto)
        parameters.suggest("rotate_z_trans", distanceOf(subjectDepth(shaped)));
    else if (request.pivot == Pivot::kPoint)
        parameters.suggest("rotate_z_trans", distanceOf(depthAt(shaped, request.pivot_x, request.pivot_y)));

    status = chooseFrame(request, &parameters, plan);
    if (!status) return status;

    plan->parameters = request.parameters;
    plan->parameters.insert(plan->parameters.end(), parameters.suggested().begin(),
                            parameters.suggested().end());
    plan->fov_scale = static_cast<double>(parameters.values().fov_scale);
    plan->rotate_z_trans = static_cast<double>(parameters.values().rotate_z_trans);
    return status;
}

}  // namespace

bool planReadsPhoto(const PictureRequest& request) {
    Parameters parameters(request.orientation);
    return parametersFor(request, &parameters).ok() && parameters.filterDepth();
}

Status planPicture(const PictureRequest& request, PicturePlan* plan) {
    try {
        PicturePlan made;
        Status status = composePicture(request, &made);
        if (status) *plan = std::move(made);
        return status;
    } catch (const std::bad_alloc&) {
        return Status::failure("cannot allocate the memory that a picture's plan takes");
    }
}

Status measureStretch(const PictureRequest& request, const PicturePlan& plan, PictureStretch* stretch) {
    const PictureSizes& sizes = request.sizes;
    if (sizes.grid_width < 1 || sizes.grid_height < 1 ||
        plan.shaped.size() != static_cast<size_t>(sizes.grid_width) * static_cast<size_t>(sizes.grid_height))
        return Status::failure("stretch: the plan is not one of this request");
    Status status = checkSides("picture", request.width, request.height);
    if (status && request.path) status = checkPath(*request.path);
    if (!status) return status;
    Parameters parameters(request.orientation);
    for (const auto& [name, value] : plan.parameters) {
        status = parameters.choose(name, value);
        if (!status) return status;
    }
    try {
        const Composed composed = composedOf(
            request, {sizes.grid_width, sizes.grid_height, plan.shaped.data()}, parameters.values());
        std::vector<ViewPosition> positions;
        for (const LookPosition& place : outermost(request.path))
            positions.push_back(positionOf(composed, place, plan.swing));
        Stretch found = stretchOf(composed.grid, cameraOf(composed.parameters), plan.fov_scale, positions);
        *stretch = {std::move(found.times), std::move(found.seen), found.worst_x,
                    found.worst_y,          found.worst_times,     found.streaked_part};
    } catch (const std::bad_alloc&) {
        return Status::failure("cannot allocate the memory that a picture's stretch takes");
    }
    return status;
}

}  // namespace quorvane
