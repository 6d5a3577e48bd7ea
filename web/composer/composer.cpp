// How the program composes a picture, for WebAssembly: web/demo/composer.js holds it, and web/demo/compose.js
// calls it.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "media/depth/depth_doctor.h"
#include "media/picture/crop.h"
#include "media/picture/dither.h"
#include "quorvane/host/PicturePlan.h"

namespace quorvane {
namespace {

/// What compose() returns, as compose.js reads it.
struct Found {
    double fov_scale, rotate_z_trans, swing;
    const uint8_t* shaped;  ///< a byte a cell
    const char* findings;   ///< a line for each thing that was amiss with the depth map
    int inverted;           ///< larger was farther
};
static_assert(sizeof(const char*) == 4, "compose.js reads numbers of 32 bits");

/// What is known of which end is near.
enum Near { kLarger, kSmaller, kUnknown };

media::RgbImage g_photo;
media::DepthMap g_depth;
PicturePlan g_plan;
std::string g_findings;
Found g_found;

/// All over the square that the view stays in.
std::vector<LookPosition> everywhere() {
    constexpr int kSteps = 4;
    std::vector<LookPosition> path;
    for (int y = -kSteps; y <= kSteps; ++y)
        for (int x = -kSteps; x <= kSteps; ++x)
            path.push_back({static_cast<float>(x) / kSteps, static_cast<float>(y) / kSteps});
    return path;
}

}  // namespace

extern "C" {

/// Room for a byte of each of R, G and B.
__attribute__((export_name("roomForPhoto"))) uint8_t* roomForPhoto(int width, int height) {
    g_photo = media::RgbImage(width, height);
    return g_photo.samples.data();
}

/// Room for levels of 0 to 255.
__attribute__((export_name("roomForDepth"))) float* roomForDepth(int width, int height) {
    g_depth = media::DepthMap();
    g_depth.plane = media::Plane(width, height);
    return g_depth.plane.samples.data();
}

/// Plans a picture of `width` x `height` on columns x rows cells of `ratio` photo pixels. The photo is in its
/// room, of whatever size, the depth in its own; `inside`: both come from one file. `frame` and `pivot` are
/// parameters that have been chosen; 0 where they have not. Null where it cannot be.
__attribute__((export_name("compose"))) const Found* compose(int columns, int rows, int ratio, int width,
                                                             int height, bool inside, Near near, double frame,
                                                             double pivot) {
    media::DepthKnowledge known;
    known.orientation = inside;
    if (near != kUnknown) known.larger_is_nearer = near == kLarger;
    media::Polarity polarity;
    g_findings.clear();
    for (const media::Finding& finding : media::examine(g_photo, known, &g_depth, &polarity))
        g_findings += finding.text + '\n';
    media::spreadLevels(&g_depth);
    const media::GrayImage depth = media::dithered(g_depth.plane);

    PictureRequest request;
    request.sizes = {columns * ratio, rows * ratio, columns, rows};
    request.depth = Pixels(depth.samples, depth.width, depth.height);
    request.width = width;
    request.height = height;
    request.path = everywhere();
    if (frame > 0.0) request.frame = frame;
    if (pivot > 0.0) request.parameters.emplace_back("rotate_z_trans", pivot);
    if (!planPicture(request, &g_plan)) return nullptr;
    g_found = {g_plan.fov_scale,     g_plan.rotate_z_trans, g_plan.swing,
               g_plan.shaped.data(), g_findings.c_str(),    polarity.inverted};
    return &g_found;
}
}

}  // namespace quorvane
