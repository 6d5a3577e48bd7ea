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

/// Averages every n x n block.
media::RgbaImage averaged(const media::RgbaImage& drawn, int n) {
    media::RgbaImage out(drawn.width / n, drawn.height / n);
    const size_t stride = static_cast<size_t>(drawn.width) * 4;
    uint8_t* next = out.samples.data();
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x)
            for (size_t c = 0; c < 4; ++c) {
                const uint8_t* block =
                    &drawn.samples[static_cast<size_t>(y * n) * stride + static_cast<size_t>(x * n) * 4 + c];
                int sum = 0;
                for (size_t j = 0; j < static_cast<size_t>(n); ++j)
                    for (size_t i = 0; i < static_cast<size_t>(n); ++i) sum += block[j * stride + i * 4];
                *next++ = static_cast<uint8_t>((sum + n * n / 2) / (n * n));
            }
    return out;
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

View::View(const ViewOptions& options, Input input, Size picture, int supersample)
    : m_picture(picture), m_supersample(supersample) {
    if (options.verbosity > 1) __android_log_set_minimum_priority(ANDROID_LOG_DEBUG);
    const auto say = [&options](const char* format, auto... values) {
        if (options.verbosity > 0) std::fprintf(stderr, format, values...);
    };

    require(OffscreenContext::create(&m_context));
    const Status made = ParallaxView::create(picture.width * supersample, picture.height * supersample,
                                             options.orientation, &m_view);
    if (!made && supersample > 1)
        throw media::Error(made.message() + " (--supersample " + std::to_string(supersample) +
                           " multiplies them)");
    require(made);
    for (const auto& [field, value] : options.settings) require(m_view->setParameter(field, value));

    const Size photo_size = {input.photo.width, input.photo.height};
    const Size photo_part = media::croppedSize(photo_size, picture);
    // Less than a pixel of the picture is the aspect's rounding, not another aspect.
    const bool cut = int64_t{photo_size.width - photo_part.width} * picture.width > photo_size.width ||
                     int64_t{photo_size.height - photo_part.height} * picture.height > photo_size.height;
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

    const media::RgbImage photo = media::resample(std::move(input.photo), fit.photo);
    const media::GrayImage depth = media::toBytes(input.depth.plane, fit.depth);
    require(m_view->setPhoto(photo.width, photo.height, photo.samples.data()));
    require(m_view->setDepth(depth.width, depth.height, depth.samples.data()));

    const Geometry geometry = m_view->geometry();
    say("grid     %d x %d cells, %.1f MB of working memory\n", geometry.grid_width, geometry.grid_height,
        geometry.block_bytes / 1e6);
    say("view     %d x %d, orientation %u, shaped depth %.0f of 255 stands still\n", picture.width,
        picture.height, options.orientation, static_cast<double>(geometry.still_depth));
}

const media::RgbaImage& View::pictureAt(Position position) {
    require(m_view->lookAt(static_cast<float>(position.x), static_cast<float>(position.y)));
    require(m_view->render());
    if (m_drawn.samples.empty()) m_drawn = media::RgbaImage(m_view->width(), m_view->height());
    require(m_view->readPixels(m_drawn.samples.data(), m_drawn.samples.size()));
    if (m_supersample == 1) return m_drawn;
    m_averaged = averaged(m_drawn, m_supersample);
    return m_averaged;
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
