#include "apps/quorvane/drawing/view.h"

#include <android/log.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "apps/quorvane/drawing/average.h"
#include "apps/quorvane/terminal/text.h"
#include "media/clip/yuv420.h"
#include "media/picture/crop.h"
#include "media/picture/resample.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

/// Where the field of view is measured, object units.
constexpr double kReferenceDistance = 32.0;

void require(const Status& status) {
    if (!status) throw Error(status.message());
}

media::GrayImage imageOf(const Pixels& plane) {
    media::GrayImage image(plane.width, plane.height);
    std::copy_n(plane.data, image.samples.size(), image.samples.begin());
    return image;
}

/// The renderer's timing lines come from OpenGL's.
Renderer chosenRenderer(const ViewOptions& options) {
    const bool timed = options.renderer == Renderer::kAuto && !options.timings.empty();
    return timed ? Renderer::kGl : options.renderer;
}

}  // namespace

View::View(const ViewOptions& options, const Talk& talk, Size picture)
    : m_options(options), m_talk(talk), m_picture(picture), m_supersample(options.supersample) {
    if (talk.verbosity > 1) __android_log_set_minimum_priority(ANDROID_LOG_DEBUG);
    m_context = contextFor(chosenRenderer(options));
    say(formatted("renderer %s\n", m_context != nullptr ? "gl" : "software"));
    makeView([this](Size size, int samples, std::unique_ptr<PhotoView>* view) {
        const bool by_samples = m_context == nullptr && m_options.moves && samples == kAutoSamples;
        return createView(m_context.get(), size, m_options.orientation, by_samples ? kMovingSamples : samples,
                          view);
    });
}

View::View(const ViewOptions& options, const Talk& talk, Size picture, const ViewMaker& make)
    : m_options(options), m_talk(talk), m_picture(picture), m_supersample(options.supersample) {
    makeView(make);
}

void View::makeView(const ViewMaker& make) {
    const Status made = make({m_picture.width * m_supersample, m_picture.height * m_supersample},
                             m_supersample > 1 ? 1 : m_options.samples, &m_view);
    if (!made && m_supersample > 1)
        throw Error(made.message() + " (--supersample " + std::to_string(m_supersample) +
                    " multiplies them)");
    require(made);
    // A picture too large for the driver to draw twice as large stays as it is.
    if (m_options.samples != 1 && m_supersample == 1 && m_view->samples() == 1 &&
        m_view->resize(2 * m_picture.width, 2 * m_picture.height))
        m_supersample = 2;
}

void View::say(const std::string& line) const {
    if (m_talk.verbosity > 0) std::fputs(line.c_str(), stderr);
}

Target View::target(std::vector<Position> path) const {
    return {m_picture, m_supersample, std::move(path), m_view->largestPhotoSide()};
}

PlannedInput View::plan(SourcePhoto photo, const media::Plane& depth, std::vector<Position> path) const {
    return planInput(m_options, m_talk, target(std::move(path)), std::move(photo), depth);
}

void View::upload(const PlannedInput& input) {
    const PicturePlan& plan = input.plan;
    for (const auto& [name, value] : plan.parameters) require(m_view->setParameter(name, value));
    require(m_view->setPhoto({input.photo.samples, input.photo.width, input.photo.height}));
    require(m_view->setDepth({plan.depth, plan.depth_width, plan.depth_height}));
    m_swing = plan.swing;
    m_fov_scale = plan.fov_scale;
    m_zoom = 1.0;
    const Geometry geometry = m_view->geometry();
    say(formatted("grid     %d x %d cells, %.1f MB of working memory\n", geometry.grid_width,
                  geometry.grid_height, geometry.block_bytes / 1e6));
    say(
        formatted("view     %d x %d, orientation %d, %.3f of each side seen, shaped depth %.0f of 255 stands "
                  "still\n",
                  m_picture.width, m_picture.height, m_options.orientation, plan.fov_scale,
                  static_cast<double>(geometry.still_depth)));
    if (m_supersample > 1)
        say(formatted("drawn    %d times as large, then averaged\n", m_supersample));
    else
        say(formatted("drawn    with %d sample%s a pixel\n", m_view->samples(),
                      m_view->samples() == 1 ? "" : "s"));
}

void View::set(const std::string& name, double value) {
    require(m_view->setParameter(name, name == "fov_scale" ? value / m_zoom : value));
    if (name == "fov_scale") m_fov_scale = value;
}

void View::lookFrom(Position position) {
    if (position.zoom != m_zoom) {
        require(m_view->setParameter("fov_scale", m_fov_scale / position.zoom));
        m_zoom = position.zoom;
    }
    require(
        m_view->lookAt(static_cast<float>(m_swing * position.x), static_cast<float>(m_swing * position.y)));
}

void View::draw(Position position) {
    lookFrom(position);
    require(m_view->render());
}

bool View::drawsYuv420() const { return m_supersample == 1 && m_view->drawsYuv420(); }

void View::drawYuv420(Position position, std::vector<uint8_t>* planes) {
    planes->resize(media::yuv420Bytes(m_picture));
    lookFrom(position);
    require(m_view->renderYuv420(planes->data(), planes->size()));
}

void View::keepDepth(const PlannedInput& input, const media::Plane& depth) {
    m_photo = input.photo;
    // Not the plan's, whose rim may lie closer to what stays in place than the scene does.
    const media::GrayImage gray =
        media::toBytes(media::crop(depth, input.fit.depth), {m_photo.width, m_photo.height});
    m_depth = media::RgbImage(gray.width, gray.height);
    for (size_t i = 0; i < gray.samples.size(); ++i)
        std::fill_n(m_depth.samples.begin() + static_cast<std::ptrdiff_t>(3 * i), 3, gray.samples[i]);
}

void View::showDepth(bool depth) {
    if (depth == m_shows_depth) return;
    const media::RgbImage& shown = depth ? m_depth : m_photo;
    require(m_view->setPhoto({shown.samples, shown.width, shown.height}));
    m_shows_depth = depth;
}

Lens View::lens() const {
    const Geometry geometry = m_view->geometry();
    const double share = static_cast<double>(geometry.visible) / kReferenceDistance;
    return {share * static_cast<double>(geometry.half_width),
            share * static_cast<double>(geometry.half_height)};
}

double View::turnAt(double x) const {
    return m_swing * x * static_cast<double>(m_view->geometry().x_side_turn_deg);
}

void View::readBack(media::RgbaImage* drawn) const {
    if (drawn->samples.empty()) *drawn = media::RgbaImage(m_view->width(), m_view->height());
    require(m_view->readPixels({drawn->samples, drawn->width, drawn->height}));
}

media::RgbaImage View::picture() const {
    media::RgbaImage drawn, averaged;
    readBack(&drawn);
    if (m_supersample == 1) return drawn;
    average(drawn, m_picture, &averaged);
    return averaged;
}

media::GrayImage View::guide() const { return imageOf(m_view->guide()); }

media::GrayImage View::shapedDepth() const { return imageOf(m_view->shapedDepth()); }

}  // namespace quorvane::app
