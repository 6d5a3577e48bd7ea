// bench_renderers: what a frame of 1920 x 1080 costs by the graphics driver and by the processor without one,
// and how far their pictures are apart.
//   bench_renderers [--quick]
// All draw the same view in turn, and figures are medians. CPU times are of all threads; elapsed times, which
// say what a second thread gains, want a quiet machine. It says nothing of a driver that draws on a graphics
// processor.

#include <GLES2/gl2.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "bench/content.h"
#include "bench/drawing.h"
#include "bench/table.h"
#include "quorvane/host/OffscreenContext.h"
#include "quorvane/host/ParallaxView.h"
#include "sizes/sizes.h"
#include "software/SoftwareView.h"

namespace quorvane::bench {
namespace {

constexpr int kWidth = 1920, kHeight = 1080;

// Goals: how many times less CPU time than the driver's, with one sample a pixel and with several, and how
// many times faster two threads are than one.
constexpr double kTimesDriver = 5, kTimesDriverSampled = 4, kTwoThreads = 1.9;

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

std::string number(double value, int digits) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

void measure(int triangles, int samples, int frames, Table* table) {
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
    const double gain = median(one.wall) / median(two.wall);
    const auto judged = [](double value, double goal) {
        return number(value, 2) + (value >= goal ? ", met" : ", NOT met");
    };
    table->add({std::to_string(triangleCount(fit.grid)), std::to_string(samples), number(1e3 * driver, 1),
                number(1e3 * own, 1), judged(driver / own, samples == 1 ? kTimesDriver : kTimesDriverSampled),
                number(median(two.processor) / own, 2), number(1e3 * median(gl.wall), 1),
                number(1e3 * median(one.wall), 1), number(1e3 * median(two.wall), 1),
                judged(gain, kTwoThreads), number(sum / compared, 3), number(100 * beyond / compared, 2)});
}

}  // namespace
}  // namespace quorvane::bench

int main(int argc, char** argv) {
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    FILE* const out = quorvane::bench::figuresOutput();
    if (out == nullptr) return 1;
    std::unique_ptr<quorvane::OffscreenContext> context;
    quorvane::bench::require(quorvane::OffscreenContext::create(&context));
    std::fprintf(out, "Frames of %d x %d; the driver is %s.\n\n", quorvane::bench::kWidth,
                 quorvane::bench::kHeight, reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
    quorvane::bench::Table table({"triangles", "samples", "driver, CPU ms", "`software/`, CPU ms",
                                  "times less, goals 5 and 4", "two threads' CPU, to one's",
                                  "driver, elapsed ms", "one thread, elapsed ms", "two threads, elapsed ms",
                                  "gain, goal 1.9", "mean difference, levels", "beyond 2 levels, %"});
    for (const int samples : {1, 4})
        for (const int triangles : {98000, 400000})
            quorvane::bench::measure(triangles, samples, quick ? 6 : 40, &table);
    table.print(out);
    std::fclose(out);
    return 0;
}
