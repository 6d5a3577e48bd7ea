// bench_silhouettes: how smooth silhouettes come out with several samples a pixel, and what a frame costs.
//   bench_silhouettes [--quick]
// Draws the sample scene from views of a swing, plainly, with 4 samples a pixel and at twice the size, and
// compares with pictures drawn at four times the size: the pixels beside silhouettes of a photo without
// detail (soft) and of the photo (band), and all pixels.

#include <GLES2/gl2.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <vector>

#include "bench/drawing.h"
#include "bench/views/measures.h"
#include "composition/edges.h"
#include "media/scene/sample_scene.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/ParallaxView.h"
#include "sizes/sizes.h"

namespace quorvane::bench {
namespace {

constexpr int kTruth = 4;  // times the picture's size
constexpr int kBand = 1;   // pixels on either side of a silhouette
constexpr int kJump = 2;   // of 255 levels across the photo: about a hundredth of its side

/// What is seen over a swing, in directions that leave no silhouette along a row or column alone.
constexpr std::array<std::array<float, 2>, 6> kPositions = {
    {{-1.0f, 0.1f}, {-0.6f, -0.4f}, {-0.2f, 0.3f}, {0.3f, -0.2f}, {0.7f, 0.5f}, {1.0f, -0.1f}}};

void require(const Status& status) {
    if (status) return;
    std::fprintf(stderr, "bench_silhouettes: %s\n", status.message().c_str());
    std::exit(1);
}

/// Each pixel the mean of `ratio` * `ratio`, which have `stride` samples each.
template <int kChannels>
Raster<uint8_t, kChannels> reduced(const std::vector<uint8_t>& samples, int stride, Size size, int ratio) {
    Raster<uint8_t, kChannels> result(size.width / ratio, size.height / ratio);
    const int count = ratio * ratio;
    for (int y = 0; y < result.height; ++y)
        for (int x = 0; x < result.width; ++x)
            for (int c = 0; c < kChannels; ++c) {
                int sum = 0;
                for (int j = y * ratio; j < (y + 1) * ratio; ++j)
                    for (int i = x * ratio; i < (x + 1) * ratio; ++i)
                        sum += samples[static_cast<size_t>(j * size.width + i) * static_cast<size_t>(stride) +
                                       static_cast<size_t>(c)];
                result.at(x, y, c) = static_cast<uint8_t>((sum + count / 2) / count);
            }
    return result;
}

/// The sample scene for pictures of up to kTruth times a size.
class Scene {
  public:
    Scene(Size picture, double fov_scale) {
        const Size seen = {static_cast<int>(picture.width / fov_scale),
                           static_cast<int>(picture.height / fov_scale)};
        const Fit fit = fitSizes(seen, seen, 16384, kAutoGrid);
        m_size = {kTruth * fit.photo.width, kTruth * fit.photo.height};
        m_painted = media::makeSampleScene(m_size.width, m_size.height);
        m_depth = DepthMap(fit.depth.width, fit.depth.height);
        m_depth.samples = cleanEdges(m_painted.depth.samples.data(), m_size, fit.grid);
    }

    const DepthMap& depth() const { return m_depth; }

    /// With a pixel for about every one of a picture of `scale` times the size.
    Picture photo(int scale) const { return reduced<3>(m_painted.photo.samples, 3, m_size, kTruth / scale); }

    /// Without detail, so that only silhouettes gain by finer drawing.
    Picture softPhoto() const {
        constexpr double kSigma = 4.0;
        Picture photo = this->photo(1);
        for (int c = 0; c < 3; ++c) {
            Plane plane(photo.width, photo.height);
            for (int y = 0; y < photo.height; ++y)
                for (int x = 0; x < photo.width; ++x) plane.at(x, y) = photo.at(x, y, c);
            plane = blurred(plane, kSigma);
            for (int y = 0; y < photo.height; ++y)
                for (int x = 0; x < photo.width; ++x)
                    photo.at(x, y, c) = static_cast<uint8_t>(plane.at(x, y) + 0.5f);
        }
        return photo;
    }

    /// Its colours say where in the photo a pixel lies, so that silhouettes show as jumps.
    Picture places() const {
        Picture photo(m_size.width / kTruth, m_size.height / kTruth);
        for (int y = 0; y < photo.height; ++y)
            for (int x = 0; x < photo.width; ++x) {
                photo.at(x, y, 0) = static_cast<uint8_t>(255 * x / photo.width);
                photo.at(x, y, 1) = static_cast<uint8_t>(255 * y / photo.height);
            }
        return photo;
    }

  private:
    media::SampleScene m_painted;
    Size m_size;
    DepthMap m_depth;
};

struct Time {
    double wall, processor;  ///< seconds; the processor's of all threads, a software driver's too
};

/// One way of drawing: with `samples` a pixel, at `scale` times the picture's size.
class Drawing {
  public:
    Drawing(const Picture& photo, const DepthMap& depth, Size picture, int samples, int scale)
        : m_scale(scale) {
        require(ParallaxView::create(picture.width * scale, picture.height * scale, ViewOptions{4, samples},
                                     &m_view));
        require(m_view->setParameter("guided_filter_rx", kCleanEdgesFilterRadius));
        require(m_view->setParameter("guided_filter_ry", kCleanEdgesFilterRadius));
        require(m_view->setPhoto({photo.samples, photo.width, photo.height}));
        require(m_view->setDepth({depth.samples, depth.width, depth.height}));
    }

    const ParallaxView& view() const { return *m_view; }

    Time draw(const std::array<float, 2>& position) {
        require(m_view->lookAt(position[0], position[1]));
        const Time start = {seconds(CLOCK_MONOTONIC), seconds(CLOCK_PROCESS_CPUTIME_ID)};
        require(m_view->render());
        return {seconds(CLOCK_MONOTONIC) - start.wall, seconds(CLOCK_PROCESS_CPUTIME_ID) - start.processor};
    }

    Picture picture(const std::array<float, 2>& position) {
        draw(position);
        const Size size = {m_view->width(), m_view->height()};
        std::vector<uint8_t> rgba(size_t{4} * static_cast<size_t>(size.width) *
                                  static_cast<size_t>(size.height));
        require(m_view->readPixels({rgba, size.width, size.height}));
        return reduced<3>(rgba, 4, size, m_scale);
    }

  private:
    int m_scale;
    std::unique_ptr<ParallaxView> m_view;
};

/// The pixels within kBand of a silhouette, where neighbours show places far apart.
Mask bandOf(const Picture& places) {
    Mask jumps(places.width, places.height);
    const auto mark = [&](int x, int y, int other_x, int other_y) {
        if (std::abs(places.at(x, y, 0) - places.at(other_x, other_y, 0)) > kJump ||
            std::abs(places.at(x, y, 1) - places.at(other_x, other_y, 1)) > kJump)
            jumps.at(x, y) = jumps.at(other_x, other_y) = 1;
    };
    for (int y = 0; y + 1 < places.height; ++y)
        for (int x = 0; x + 1 < places.width; ++x) {
            mark(x, y, x + 1, y);
            mark(x, y, x, y + 1);
        }
    return grown(jumps, kBand);
}

/// The same way once with the photo and once with the soft one.
struct Way {
    const char* name;
    Drawing drawing, soft_drawing;
    Error band, all, soft_band;
    std::vector<double> wall, processor;
};

/// The median of what each value is to the one beside it.
double ratio(std::vector<double> values, const std::vector<double>& plain) {
    for (size_t i = 0; i < values.size(); ++i) values[i] /= plain[i];
    return median(values);
}

void measure(Size picture, bool quick, FILE* out) {
    const Scene scene(picture, 0.81);
    const Picture soft = scene.softPhoto();
    const auto drawing = [&](const Picture& photo, int samples, int scale) {
        return Drawing(photo, scene.depth(), picture, samples, scale);
    };
    std::vector<Way> ways;
    const auto add = [&](const char* name, int samples, int scale) {
        ways.push_back({name,
                        drawing(scene.photo(scale), samples, scale),
                        drawing(soft, samples, scale),
                        {},
                        {},
                        {},
                        {},
                        {}});
    };
    add("one sample", 1, 1);
    add("4 samples", 4, 1);
    add("supersampled 2 x 2", 1, 2);
    {
        Drawing truth = drawing(scene.photo(kTruth), 1, kTruth), soft_truth = drawing(soft, 1, kTruth);
        Drawing places = drawing(scene.places(), 1, 1);
        const Mask everywhere(picture.width, picture.height, 1);
        for (const auto& position : kPositions) {
            const Picture wanted = truth.picture(position), soft_wanted = soft_truth.picture(position);
            const Mask band = bandOf(places.picture(position));
            for (Way& way : ways) {
                const Picture drawn = way.drawing.picture(position);
                addError(drawn, wanted, band, &way.band);
                addError(drawn, wanted, everywhere, &way.all);
                addError(way.soft_drawing.picture(position), soft_wanted, band, &way.soft_band);
            }
        }
    }
    const size_t rounds = quick ? 6 : 36;
    for (size_t round = 0; round < rounds; ++round)
        for (size_t i = 0; i < ways.size(); ++i) {
            // Whoever comes first finds other caches.
            Way& way = ways[(i + round) % ways.size()];
            const Time time = way.drawing.draw(kPositions[round % kPositions.size()]);
            way.wall.push_back(time.wall);
            way.processor.push_back(time.processor);
        }

    const ParallaxView& smooth = ways[1].drawing.view();
    const Geometry geometry = smooth.geometry();
    const Way& plain = ways.front();
    std::fprintf(out, "\npicture %d x %d, grid %d x %d, %d samples in force, %.1f %% beside silhouettes\n",
                 picture.width, picture.height, geometry.grid_width, geometry.grid_height, smooth.samples(),
                 100.0 * plain.band.samples / plain.all.samples);
    std::fprintf(out, "%-20s %8s %8s %8s %8s %8s %8s %8s\n", "", "soft dB", "band dB", "all dB", "ms",
                 "times", "CPU ms", "times");
    for (const Way& way : ways)
        std::fprintf(out, "%-20s %8.2f %8.2f %8.2f %8.2f %8.2f %8.2f %8.2f\n", way.name,
                     way.soft_band.decibels(), way.band.decibels(), way.all.decibels(),
                     1e3 * median(way.wall), ratio(way.wall, plain.wall), 1e3 * median(way.processor),
                     ratio(way.processor, plain.processor));
}

}  // namespace
}  // namespace quorvane::bench

int main(int argc, char** argv) {
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    FILE* const out = quorvane::bench::figuresOutput();
    if (out == nullptr) return 1;

    std::unique_ptr<quorvane::OffscreenContext> context;
    quorvane::bench::require(quorvane::OffscreenContext::create(&context));
    std::fprintf(out, "driver %s\n", reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
    quorvane::bench::measure({960, 720}, quick, out);
    if (!quick) quorvane::bench::measure({1440, 1080}, quick, out);
    std::fclose(out);
    return 0;
}
