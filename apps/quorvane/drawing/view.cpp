#include "apps/quorvane/drawing/view.h"

#include <GLES2/gl2.h>
#include <android/log.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "apps/quorvane/terminal/text.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

void require(const Status& status) {
    if (!status) throw Error(status.message());
}

media::GrayImage plane(const void* bytes, int width, int height) {
    media::GrayImage image(width, height);
    const uint8_t* samples = static_cast<const uint8_t*>(bytes);
    std::copy_n(samples, image.samples.size(), image.samples.begin());
    return image;
}

}  // namespace

View::View(const ViewOptions& options, const Talk& talk, Size picture, int supersample)
    : m_options(options), m_talk(talk), m_picture(picture), m_supersample(supersample) {
    if (talk.verbosity > 1) __android_log_set_minimum_priority(ANDROID_LOG_DEBUG);
    require(OffscreenContext::create(&m_context));
    const Status made = ParallaxView::create(picture.width * supersample, picture.height * supersample,
                                             static_cast<uint32_t>(options.orientation), &m_view);
    if (!made && supersample > 1)
        throw Error(made.message() + " (--supersample " + std::to_string(supersample) + " multiplies them)");
    require(made);
}

void View::say(const std::string& line) const {
    if (m_talk.verbosity > 0) std::fputs(line.c_str(), stderr);
}

PlannedInput View::plan(media::RgbImage photo, media::Plane depth, std::vector<Position> path) const {
    GLint largest_texture = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest_texture);
    Target target = {m_picture, m_supersample, std::move(path), largest_texture};
    const FitPlan plan = fitFor(m_options, target, {photo.width, photo.height}, {depth.width, depth.height});
    const Fit& fit = plan.fit;
    if (plan.cut) {
        photo = media::crop(photo, plan.photo);
        say(formatted("cut      the middle %d x %d of the photo, for the picture's aspect\n",
                      plan.photo.width, plan.photo.height));
    }
    say(formatted("fitted   photo %d x %d%s, depth %d x %d%s, %d photo pixels a cell\n", fit.photo.width,
                  fit.photo.height, fit.photo == plan.photo ? "" : " (resampled)", fit.depth.width,
                  fit.depth.height, fit.depth == plan.depth ? "" : " (scaled)", fit.ratio));
    photo = media::resample(std::move(photo), fit.photo);
    PicturePlan picture = planFor(m_options, target, plan, photo, std::move(depth));
    if (picture.swing < 1.0 && !m_talk.quiet)
        std::fprintf(stderr,
                     "frame: the view swings %.2f times as far as asked, so that no border shows in half of "
                     "the photo\n",
                     picture.swing);
    return {std::move(photo), std::move(picture), std::move(target), plan};
}

void View::upload(const PlannedInput& input) {
    const PicturePlan& plan = input.plan;
    for (const auto& [name, value] : plan.parameters) require(m_view->setParameter(name, value));
    require(m_view->setPhoto({input.photo.samples, input.photo.width, input.photo.height}));
    require(m_view->setDepth({plan.depth, plan.depth_width, plan.depth_height}));
    m_swing = plan.swing;
    const Geometry geometry = m_view->geometry();
    say(formatted("grid     %d x %d cells, %.1f MB of working memory\n", geometry.grid_width,
                  geometry.grid_height, geometry.block_bytes / 1e6));
    say(
        formatted("view     %d x %d, orientation %d, %.3f of each side seen, shaped depth %.0f of 255 stands "
                  "still\n",
                  m_picture.width, m_picture.height, m_options.orientation, plan.fov_scale,
                  static_cast<double>(geometry.still_depth)));
}

void View::draw(Position position) {
    require(
        m_view->lookAt(static_cast<float>(m_swing * position.x), static_cast<float>(m_swing * position.y)));
    require(m_view->render());
}

void View::readBack(media::RgbaImage* drawn) const {
    if (drawn->samples.empty()) *drawn = media::RgbaImage(m_view->width(), m_view->height());
    require(m_view->readPixels({drawn->samples, drawn->width, drawn->height}));
}

media::GrayImage View::guide() const {
    const ESRenderer& renderer = m_view->renderer();
    return plane(renderer.m_pSmallTextureData, renderer.m_vtxW, renderer.m_vtxH);
}

media::GrayImage View::shapedDepth() const {
    const ESRenderer& renderer = m_view->renderer();
    return plane(renderer.m_pDepthData, renderer.m_vtxW, renderer.m_vtxH);
}

}  // namespace quorvane::app
