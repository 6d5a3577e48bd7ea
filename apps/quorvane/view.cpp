#include "view.h"

#include <GLES2/gl2.h>
#include <android/log.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "media/cancel.h"
#include "media/clip_writer.h"
#include "media/error.h"
#include "standard_streams.h"

namespace quorvane::app {
namespace {

using media::Size;

void require(const Status& status) {
    if (!status) throw media::Error(status.message());
}

media::GrayImage plane(const void* bytes, int width, int height) {
    media::GrayImage image(width, height);
    const uint8_t* samples = static_cast<const uint8_t*>(bytes);
    std::copy_n(samples, image.samples.size(), image.samples.begin());
    return image;
}

}  // namespace

void refuseInputAsOutput(const ViewOptions& options, const std::string& out) {
    for (const std::string& input : {options.photo, options.depth})
        for (const std::string& output : {out, options.timings}) {
            std::error_code ignored;
            if (std::filesystem::equivalent(input, output, ignored))
                throw media::Error(output + ": is an input; write somewhere else");
        }
}

void refuseInputAsFrame(const ViewOptions& options, const std::string& out) {
    namespace fs = std::filesystem;
    for (const std::string& input : {options.photo, options.depth}) {
        std::error_code ignored;
        const fs::path file = fs::canonical(input, ignored);
        if (media::isFrameName(file.filename().string()) && fs::equivalent(file.parent_path(), out, ignored))
            throw media::Error(out + ": holds the input " + input +
                               " among its frames; write somewhere else");
    }
}

Input readInput(const ViewOptions& options) {
    Input input = [&options]() -> Input {
        const StandardErrorNowhere silence;
        const media::EndingAtOnce decoding(silence.descriptor(), "quorvane: interrupted\n");
        return {media::readPhoto(options.photo), media::readDepthMap(options.depth)};
    }();
    if (options.invert_depth)
        for (float& sample : input.depth.plane.samples) sample = 255.0f - sample;
    if (options.verbosity > 0) {
        std::fprintf(stderr, "photo    %s: %d x %d\n", options.photo.c_str(), input.photo.width,
                     input.photo.height);
        std::fprintf(stderr, "depth    %s: %d x %d, %d bit%s%s\n", options.depth.c_str(),
                     input.depth.plane.width, input.depth.plane.height, input.depth.bits,
                     input.depth.bits == 16 ? " spread over its used range" : "",
                     options.invert_depth ? ", inverted" : "");
    }
    return input;
}

View::View(const ViewOptions& options, Size picture, int supersample, int outputs)
    : m_picture(picture), m_orientation(options.orientation), m_talks(options.verbosity > 0) {
    if (options.verbosity > 1) __android_log_set_minimum_priority(ANDROID_LOG_DEBUG);
    require(OffscreenContext::create(&m_context));
    const Status made = ParallaxView::create(picture.width * supersample, picture.height * supersample,
                                             options.orientation, &m_view, outputs);
    if (!made && supersample > 1)
        throw media::Error(made.message() + " (--supersample " + std::to_string(supersample) +
                           " multiplies them)");
    require(made);
    for (const auto& [field, value] : options.settings) require(m_view->setParameter(field, value));
}

template <typename... Values>
void View::say(const char* format, Values... values) const {
    if (m_talks) std::fprintf(stderr, format, values...);
}

FittedInput View::fit(Input input) const {
    const Size photo_size = {input.photo.width, input.photo.height};
    const Size photo_part = media::croppedSize(photo_size, m_picture);
    // Less than a pixel of the picture is the aspect's rounding, not another aspect.
    const bool cut = int64_t{photo_size.width - photo_part.width} * m_picture.width > photo_size.width ||
                     int64_t{photo_size.height - photo_part.height} * m_picture.height > photo_size.height;
    if (cut) {
        const Size depth_size = {input.depth.plane.width, input.depth.plane.height};
        const auto share = [](int part, int whole, int length) {
            return std::max(1, static_cast<int>(static_cast<int64_t>(length) * part / whole));
        };
        input.photo = media::crop(input.photo, photo_part);
        input.depth.plane =
            media::crop(input.depth.plane, {share(photo_part.width, photo_size.width, depth_size.width),
                                            share(photo_part.height, photo_size.height, depth_size.height)});
        say("cut      the middle %d x %d of the photo, for the picture's aspect\n", photo_part.width,
            photo_part.height);
    }

    GLint largest_texture = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest_texture);
    const Size depth_size = {input.depth.plane.width, input.depth.plane.height};
    const media::Fit fit =
        media::fitSizes({input.photo.width, input.photo.height}, depth_size, largest_texture);
    say("fitted   photo %d x %d%s, depth %d x %d%s, %d photo pixels a cell\n", fit.photo.width,
        fit.photo.height, fit.photo == Size{input.photo.width, input.photo.height} ? "" : " (resampled)",
        fit.depth.width, fit.depth.height, fit.depth == depth_size ? "" : " (scaled)", fit.ratio);
    return {media::resample(std::move(input.photo), fit.photo), media::toBytes(input.depth.plane, fit.depth)};
}

void View::upload(const FittedInput& input) {
    require(m_view->setPhoto(input.photo.width, input.photo.height, input.photo.samples.data()));
    require(m_view->setDepth(input.depth.width, input.depth.height, input.depth.samples.data()));
    const Geometry geometry = m_view->geometry();
    say("grid     %d x %d cells, %.1f MB of working memory\n", geometry.grid_width, geometry.grid_height,
        geometry.block_bytes / 1e6);
    say("view     %d x %d, orientation %u, shaped depth %.0f of 255 stands still\n", m_picture.width,
        m_picture.height, m_orientation, static_cast<double>(geometry.still_depth));
}

void View::draw(Position position) {
    require(m_view->lookAt(static_cast<float>(position.x), static_cast<float>(position.y)));
    require(m_view->render());
}

void View::readBack(media::RgbaImage* drawn) const {
    if (drawn->samples.empty()) *drawn = media::RgbaImage(m_view->width(), m_view->height());
    require(m_view->readPixels(drawn->samples.data(), drawn->samples.size()));
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
