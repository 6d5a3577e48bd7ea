// bench_textures: how fine detail of a large photo comes out in a smaller picture, and how quiet it stays.
//   bench_textures [--quick] [--pictures FOLDER]
// Draws a photo of fine texture, 12 megapixels, from successive views of a swing at 960 x 720, and compares
// with the same views drawn from the whole photo at four times the size: all pixels, and by how much a pixel
// changes from one view to the next.

#include <GLES2/gl2.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bench/drawing.h"
#include "bench/views/measures.h"
#include "media/picture/picture_file.h"
#include "media/picture/resample.h"
#include "media/scene/paint.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/ParallaxView.h"
#include "sizes/detail.h"
#include "system/error.h"

namespace quorvane::bench {
namespace {

constexpr Size kPhoto = {4000, 3000};
constexpr Size kPicture = {960, 720};
constexpr double kVisible = 0.81;
constexpr int kTruth = 4;  // times the picture's size
constexpr double kPi = 3.14159265358979323846;

void require(const Status& status) {
    if (!status) throw quorvane::Error(status.message());
}

/// What a photo of stone, bark and cloth has: as much contrast in each octave as in the next finer one is
/// half of, down to the single pixel, and a few regular weaves, which alias worst.
media::RgbImage paintTexture() {
    using media::paint::noise;
    media::RgbImage photo(kPhoto.width, kPhoto.height);
    for (int y = 0; y < photo.height; ++y)
        for (int x = 0; x < photo.width; ++x) {
            const float u = static_cast<float>(x), v = static_cast<float>(y);
            float level = 0.0f, tint = 0.0f, strength = 74.0f;
            for (int octave = 8; octave >= 0; --octave) {
                const float scale = std::ldexp(1.0f, -octave);
                level += strength * (noise(u * scale, v * scale, 17u + static_cast<uint32_t>(octave)) - 0.5f);
                if (octave > 2)
                    tint +=
                        strength * (noise(u * scale, v * scale, 91u + static_cast<uint32_t>(octave)) - 0.5f);
                strength *= 0.72f;
            }
            // A weave of 3 to 6 pixels a thread in a band of every column of cloth.
            const float period = 3.0f + 3.0f * v / static_cast<float>(photo.height);
            if (x / 500 % 4 == 1)
                level += 12.0f * std::sin(2.0f * media::paint::kPi * u / period) *
                         std::sin(2.0f * media::paint::kPi * v / period);
            uint8_t* pixel = &photo.at(x, y);
            pixel[0] = static_cast<uint8_t>(std::clamp(128.0f + level + 0.4f * tint, 0.0f, 255.0f));
            pixel[1] = static_cast<uint8_t>(std::clamp(124.0f + level, 0.0f, 255.0f));
            pixel[2] = static_cast<uint8_t>(std::clamp(116.0f + level - 0.4f * tint, 0.0f, 255.0f));
        }
    return photo;
}

/// Hills without a silhouette, so that only textures tell the ways apart.
DepthMap relief(Size size) {
    DepthMap depth(size.width, size.height);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const double u = (x + 0.5) / size.width, v = (y + 0.5) / size.height;
            const double hills = std::sin(2.0 * kPi * 1.5 * u) * std::sin(2.0 * kPi * 1.2 * v);
            depth.at(x, y) = static_cast<uint8_t>(std::lround(130.0 + 90.0 * hills));
        }
    return depth;
}

Picture averaged(const std::vector<uint8_t>& rgba, Size size, int ratio) {
    Picture result(size.width / ratio, size.height / ratio);
    const int count = ratio * ratio;
    for (int y = 0; y < result.height; ++y)
        for (int x = 0; x < result.width; ++x)
            for (int c = 0; c < 3; ++c) {
                int sum = 0;
                for (int j = y * ratio; j < (y + 1) * ratio; ++j) {
                    const uint8_t* row =
                        &rgba[size_t{4} * static_cast<size_t>(j) * static_cast<size_t>(size.width)];
                    for (int i = x * ratio; i < (x + 1) * ratio; ++i) sum += row[4 * i + c];
                }
                result.at(x, y, c) = static_cast<uint8_t>((sum + count / 2) / count);
            }
    return result;
}

double processorSeconds() { return seconds(CLOCK_PROCESS_CPUTIME_ID); }

struct Sequence {
    std::vector<Picture> pictures;
    double fitting_ms = 0.0, frame_ms = 0.0;  ///< CPU time, of the fastest frame
};

/// What of a photo is drawn, and how.
struct Way {
    const char* name;
    int samples;  ///< a pixel
    int scale;    ///< times the picture's size
    Fit fit;
};

/// The views of a swing of 120 frames where it is fastest.
Sequence draw(const media::RgbImage& whole, const Way& way, int views) {
    Sequence sequence;
    double start = processorSeconds();
    const media::RgbImage photo = media::resample(whole, way.fit.photo);
    sequence.fitting_ms = 1e3 * (processorSeconds() - start);
    const DepthMap depth = relief(way.fit.depth);
    std::unique_ptr<ParallaxView> view;
    const Size size = {kPicture.width * way.scale, kPicture.height * way.scale};
    require(ParallaxView::create(size.width, size.height, ViewOptions{4, way.samples}, &view));
    require(view->setParameter("fov_scale", kVisible));
    require(view->setParameter("guided_filter_rx", 0));
    require(view->setParameter("guided_filter_ry", 0));
    require(view->setPhoto({photo.samples, photo.width, photo.height}));
    require(view->setDepth({depth.samples, depth.width, depth.height}));
    std::vector<uint8_t> rgba(size_t{4} * static_cast<size_t>(size.width) * static_cast<size_t>(size.height));
    for (int i = 0; i < views; ++i) {
        require(view->lookAt(static_cast<float>(std::sin(2.0 * kPi * i / 120.0)), 0.0f));
        start = processorSeconds();
        require(view->render());
        const double took = 1e3 * (processorSeconds() - start);
        if (i == 0 || took < sequence.frame_ms) sequence.frame_ms = took;
        require(view->readPixels({rgba, size.width, size.height}));
        sequence.pictures.push_back(averaged(rgba, size, way.scale));
    }
    return sequence;
}

double decibels(const Sequence& drawn, const Sequence& truth) {
    const Mask everywhere(kPicture.width, kPicture.height, 1);
    Error error;
    for (size_t i = 0; i < drawn.pictures.size(); ++i)
        addError(drawn.pictures[i], truth.pictures[i], everywhere, &error);
    return error.decibels();
}

void writePicture(const std::string& path, const Picture& picture) {
    media::RgbImage image(picture.width, picture.height);
    image.samples = picture.samples;
    media::writePng(image, path);
}

/// The mean change of a pixel from one view to the next.
double flicker(const Sequence& drawn) {
    double sum = 0.0, count = 0.0;
    for (size_t i = 1; i < drawn.pictures.size(); ++i) {
        const std::vector<uint8_t>&now = drawn.pictures[i].samples, &before = drawn.pictures[i - 1].samples;
        for (size_t j = 0; j < now.size(); ++j) sum += std::abs(now[j] - before[j]);
        count += static_cast<double>(now.size());
    }
    return sum / count;
}

void measure(int views, const std::string& pictures, FILE* out) {
    const media::RgbImage photo = paintTexture();
    const auto whole = [] { return fitSizes(kPhoto, kPhoto, 16384, kAutoGrid); };
    const auto halved = [] {
        const Size half = {kPhoto.width / 2, kPhoto.height / 2};
        return fitSizes(half, half, 16384, kAutoGrid);
    };
    const auto fitted = [](int scale) {
        return fitShown(kPhoto, kPhoto, 16384, kAutoGrid,
                        {{kPicture.width * scale, kPicture.height * scale}, kVisible});
    };
    const Sequence truth = draw(photo, {"", 1, kTruth, whole()}, views);
    const double still = flicker(truth);
    std::fprintf(out,
                 "photo %d x %d, picture %d x %d, visible %.2f; the true views flicker by %.2f levels\n\n",
                 kPhoto.width, kPhoto.height, kPicture.width, kPicture.height, kVisible, still);
    std::fprintf(out, "%-24s %11s %7s %6s %8s %6s %8s %7s\n", "", "photo drawn", "texels", "dB", "flicker",
                 "times", "frame ms", "fit ms");
    for (const Way& way :
         {Way{"whole photo", 1, 1, whole()}, Way{"whole photo, 4 samples", 4, 1, whole()},
          Way{"whole photo, 2 x 2", 1, 2, whole()}, Way{"halved photo", 1, 1, halved()},
          Way{"fitted photo", 1, 1, fitted(1)}, Way{"fitted photo, 4 samples", 4, 1, fitted(1)},
          Way{"fitted photo, 2 x 2", 1, 2, fitted(2)}}) {
        const Sequence drawn = draw(photo, way, views);
        std::fprintf(out, "%-24s %5d x %4d %7.2f %6.2f %8.2f %6.2f %8.1f %7.1f\n", way.name,
                     way.fit.photo.width, way.fit.photo.height,
                     way.fit.photo.width * kVisible / (kPicture.width * way.scale), decibels(drawn, truth),
                     flicker(drawn), flicker(drawn) / still, drawn.frame_ms, drawn.fitting_ms);
        if (!pictures.empty()) writePicture(pictures + "/" + way.name + ".png", drawn.pictures.back());
    }
    if (!pictures.empty()) writePicture(pictures + "/true.png", truth.pictures.back());
}

}  // namespace
}  // namespace quorvane::bench

int main(int argc, char** argv) {
    std::string pictures;
    int views = 9;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) views = 3;
        if (std::strcmp(argv[i], "--pictures") == 0 && i + 1 < argc) pictures = argv[++i];
    }
    FILE* const out = quorvane::bench::figuresOutput();
    if (out == nullptr) return 1;
    try {
        if (!pictures.empty()) std::filesystem::create_directories(pictures);
        std::unique_ptr<quorvane::OffscreenContext> context;
        quorvane::bench::require(quorvane::OffscreenContext::create(&context));
        std::fprintf(out, "driver %s\n", reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
        quorvane::bench::measure(views, pictures, out);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_textures: %s\n", error.what());
        return 1;
    }
    std::fclose(out);
    return 0;
}
