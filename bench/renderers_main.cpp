// bench_renderers: what a frame of 1920 x 1080 costs by the graphics driver and by the processor without one,
// and how far their pictures are apart.
//   bench_renderers [--quick]
// Both draw the same view in turn. Times are the processor's, of all threads, and medians; a ratio is that of
// two medians in one run. It says nothing of a driver that draws on a graphics processor.

#include <GLES2/gl2.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <vector>

#include "bench/content.h"
#include "bench/drawing.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/ParallaxView.h"
#include "sizes/sizes.h"
#include "software/SoftwareView.h"

namespace quorvane::bench {
namespace {

constexpr int kWidth = 1920, kHeight = 1080;

void require(const Status& status) {
    if (status) return;
    std::fprintf(stderr, "bench_renderers: %s\n", status.message().c_str());
    std::exit(1);
}

/// A view, and what its frames took so far.
struct Contender {
    std::unique_ptr<PhotoView> view;
    std::vector<double> processor, wall;

    void draw(float x, float y) {
        require(view->lookAt(x, y));
        const double start = seconds(CLOCK_PROCESS_CPUTIME_ID), wall_start = seconds(CLOCK_MONOTONIC);
        require(view->render());
        processor.push_back(seconds(CLOCK_PROCESS_CPUTIME_ID) - start);
        wall.push_back(seconds(CLOCK_MONOTONIC) - wall_start);
    }

    std::vector<uint8_t> picture() const {
        std::vector<uint8_t> rgba(size_t{4} * kWidth * kHeight);
        require(view->readPixels({rgba, kWidth, kHeight}));
        return rgba;
    }
};

void measure(int triangles, int samples, int frames, FILE* out) {
    const Fit fit = fitSizes({2304, 1296}, {2304, 1296}, 16384, GridBudget{triangles});
    const Bytes photo = scenePhoto(fit.photo.width, fit.photo.height);
    const Bytes depth = sceneDepth(fit.depth.width, fit.depth.height);
    Contender gl, one, two;
    std::unique_ptr<ParallaxView> parallax;
    require(ParallaxView::create(kWidth, kHeight, ViewOptions{4, samples}, &parallax));
    gl.view = std::move(parallax);
    for (Contender* contender : {&one, &two}) {
        std::unique_ptr<SoftwareView> software;
        require(SoftwareView::create(kWidth, kHeight, {4, samples, contender == &one ? 1 : 2}, &software));
        contender->view = std::move(software);
    }
    for (Contender* contender : {&gl, &one, &two}) {
        require(contender->view->setPhoto({photo, fit.photo.width, fit.photo.height}));
        require(contender->view->setDepth({depth, fit.depth.width, fit.depth.height}));
    }
    double sum = 0, beyond = 0, compared = 0;
    for (int i = 0; i < frames; ++i) {
        const float x = static_cast<float>(i % 13 - 6) / 6, y = static_cast<float>(i % 3 - 1) / 2;
        for (Contender* contender : {&gl, &one, &two}) contender->draw(x, y);
        if (i % 5 != 0) continue;
        const std::vector<uint8_t> a = gl.picture(), b = one.picture();
        for (size_t k = 0; k < a.size(); ++k) {
            const int difference = std::abs(a[k] - b[k]);
            sum += difference;
            beyond += difference > 2 ? 1 : 0;
        }
        compared += static_cast<double>(a.size());
    }
    const double driver = median(gl.processor), own = median(one.processor);
    std::fprintf(out, "| %lld | %d | %.1f | %.1f | %.1f | %.2f | %.2f | %.3f | %.2f |\n",
                 static_cast<long long>(triangleCount(fit.grid)), samples, 1e3 * driver, 1e3 * own,
                 driver / own, median(two.processor) / own, median(one.wall) / median(two.wall),
                 sum / compared, 100 * beyond / compared);
}

}  // namespace
}  // namespace quorvane::bench

int main(int argc, char** argv) {
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    FILE* const out = quorvane::bench::figuresOutput();
    if (out == nullptr) return 1;
    std::unique_ptr<quorvane::OffscreenContext> context;
    quorvane::bench::require(quorvane::OffscreenContext::create(&context));
    std::fprintf(out, "driver %s\n\n", reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
    std::fprintf(out,
                 "| triangles | samples | driver, ms | processor, ms | ratio | two threads' work | two "
                 "threads' gain | "
                 "levels apart | beyond 2, %% |\n|---|---|---|---|---|---|---|---|---|\n");
    for (const int samples : {1, 4})
        for (const int triangles : {98000, 400000})
            quorvane::bench::measure(triangles, samples, quick ? 6 : 40, out);
    std::fclose(out);
    return 0;
}
