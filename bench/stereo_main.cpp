// bench_stereo: how right the depth from stereo pairs is, and what it costs.
//   scripts/bench --stereo [FOLDER]
// FOLDER, or stereo/ in the folder that QUORVANE_SHARED_PHOTOS names, holds pairs with their true
// disparities: NAME_left.png, NAME_right.png and NAME_disp.png, 0 where there is none.

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "media/depth/stereo_depth.h"
#include "media/picture/picture_file.h"
#include "media/picture/resample.h"

namespace quorvane::bench {
namespace {

struct Truth {
    const char* name;
    const char* disparities;  ///< the file's end
    float scale;              ///< a level of the file for each pixel
};

constexpr Truth kTruths[] = {{"cones", "_disp.png", 4},
                             {"teddy", "_disp.png", 4},
                             {"books", "_disp.png", 3},
                             {"dolls", "_disp.png", 3},
                             {"terrace", "_disp16.png", 256}};

media::Plane readTruth(const std::string& path, float scale) {
    media::DepthMap map = media::readDepthMap(path);
    const float full = map.bits > 8 ? 65535.0f / 255.0f : 1.0f;
    for (float& level : map.plane.samples) level *= full / scale;
    return std::move(map.plane);
}

/// A pixel that both eyes see: its depth as it was found, and its true disparity.
struct Sample {
    double found, truth;
};

/// Those of a row: not outside the right view, nor behind what has a larger disparity.
void addRow(const media::Plane& found, const media::Plane& truth, int y, std::vector<Sample>* samples) {
    const auto place = [&truth, y](int x) {
        return static_cast<int>(std::lround(static_cast<float>(x) - truth.at(x, y)));
    };
    const int w = truth.width;
    std::vector<float> nearest(static_cast<size_t>(w), 0.0f);
    for (int x = 0; x < w; ++x)
        if (const int there = place(x); truth.at(x, y) > 0 && there >= 0)
            nearest[static_cast<size_t>(there)] =
                std::max(nearest[static_cast<size_t>(there)], truth.at(x, y));
    for (int x = 0; x < w; ++x) {
        const float disparity = truth.at(x, y);
        const int there = place(x);
        if (disparity <= 0 || there < 0) continue;
        const auto from = nearest.begin() + std::max(0, there - 1),
                   to = nearest.begin() + std::min(w, there + 2);
        if (*std::max_element(from, to) <= disparity + 1.0f) samples->push_back({found.at(x, y), disparity});
    }
}

/// The share that is more than 2 pixels off after the line that suits most of them.
double wrongShare(const std::vector<Sample>& samples) {
    constexpr double kLimit = 2.0;
    double slope = 0.0, start = 0.0;
    const auto off = [&](const Sample& s) { return std::abs(slope * s.found + start - s.truth); };
    for (const double limit : {1e9, 8.0, 5.0, 3.0, kLimit, kLimit, kLimit}) {
        double n = 0, x = 0, y = 0, xx = 0, xy = 0;
        for (const Sample& s : samples) {
            if (off(s) > limit) continue;
            n += 1;
            x += s.found;
            y += s.truth;
            xx += s.found * s.found;
            xy += s.found * s.truth;
        }
        slope = (n * xy - x * y) / (n * xx - x * x);
        start = (y - slope * x) / n;
    }
    const auto wrong =
        std::count_if(samples.begin(), samples.end(), [&](const Sample& s) { return off(s) > kLimit; });
    return static_cast<double>(wrong) / static_cast<double>(samples.size());
}

double cpuSeconds() {
    rusage used = {};
    getrusage(RUSAGE_SELF, &used);
    return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) / 1e6;
}

double peakMegabytes() {
    rusage used = {};
    getrusage(RUSAGE_SELF, &used);
    return static_cast<double>(used.ru_maxrss) / 1024;
}

struct Cost {
    double cpu, wall;
};

media::DepthMap timed(const media::StereoViews& views, const char* name, Cost* cost) {
    const double cpu = cpuSeconds();
    const auto begin = std::chrono::steady_clock::now();
    media::DepthMap depth = media::depthOfPair(views, name, nullptr);
    *cost = {cpuSeconds() - cpu,
             std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count()};
    return depth;
}

void run(const std::string& folder) {
    std::printf("| pair | size | more than 2 px off | CPU s | s |\n|---|---|---|---|---|\n");
    double sum = 0.0;
    media::StereoViews large;
    for (const Truth& truth : kTruths) {
        const std::string stem = folder + "/" + truth.name;
        media::StereoViews views = {media::readPhoto(stem + "_left.png"),
                                    media::readPhoto(stem + "_right.png")};
        const media::Plane disparities = readTruth(stem + truth.disparities, truth.scale);
        Cost cost = {};
        const media::DepthMap depth = timed(views, truth.name, &cost);
        std::vector<Sample> samples;
        for (int y = 0; y < disparities.height; ++y) addRow(depth.plane, disparities, y, &samples);
        const double wrong = wrongShare(samples);
        sum += wrong / std::size(kTruths);
        std::printf("| %s | %d x %d | %.1f %% | %.1f | %.1f |\n", truth.name, disparities.width,
                    disparities.height, 100 * wrong, cost.cpu, cost.wall);
        if (large.left.width == 0) large = std::move(views);
    }
    std::printf("| mean | | %.1f %% | | |\n", 100 * sum);
    // A photo as large as phones make them; what it shows is the first pair.
    constexpr Size kLarge = {4000, 3000};
    large.left = media::resample(large.left, kLarge);
    large.right = media::resample(large.right, kLarge);
    Cost cost = {};
    timed(large, "large", &cost);
    std::printf("| large | %d x %d | | %.1f | %.1f |\n\npeak memory %.0f MB\n", kLarge.width, kLarge.height,
                cost.cpu, cost.wall, peakMegabytes());
}

}  // namespace
}  // namespace quorvane::bench

int main(int argc, char** argv) {
    const char* photos = std::getenv("QUORVANE_SHARED_PHOTOS");
    if (argc > 2 || (argc < 2 && photos == nullptr)) {
        std::fputs("usage: bench_stereo FOLDER\n", stderr);
        return 2;
    }
    try {
        quorvane::bench::run(argc == 2 ? argv[1] : std::string(photos) + "/stereo");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_stereo: %s\n", error.what());
        return 1;
    }
    return 0;
}
