#include "timing.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <random>
#include <utility>

namespace quorvane::bench {
namespace {

constexpr double kSampleSeconds = 2e-3;
constexpr double kContenderSeconds = 0.8;  // in all samples together, where these are not too few then
constexpr int kFewestSamples = 5;

double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

struct Samples {
    int wanted = 0;
    int repetitions = 1;
    std::vector<double> seconds;
};

Samples plan(const Timed& contender, int rounds) {
    contender(1);  // touches its memory
    double once = contender(1);
    if (once < kSampleSeconds / 10) once = contender(10) / 10;
    once = std::max(once, 1e-8);
    Samples samples;
    samples.repetitions = std::max(1, static_cast<int>(std::ceil(kSampleSeconds / once)));
    const int affordable = static_cast<int>(kContenderSeconds / (once * samples.repetitions));
    samples.wanted = std::clamp(affordable, std::min(kFewestSamples, rounds), rounds);
    return samples;
}

}  // namespace

Timed timed(Work work) {
    return [work = std::move(work)](int count) {
        const double start = cpuSeconds();
        for (int i = 0; i < count; ++i) work();
        return cpuSeconds() - start;
    };
}

Timed timedApart(const char* lanes, const std::function<Work()>& prepare) {
    return apart(lanes, [&] { return timed(prepare()); });
}

std::vector<Figure> interleaved(const std::vector<Timed>& contenders, int rounds) {
    std::vector<Samples> samples;
    std::vector<size_t> order;
    for (const Timed& contender : contenders) {
        order.push_back(order.size());
        samples.push_back(plan(contender, rounds));
    }
    // Another order every round: what a contender finds in the caches was left there by the one before it.
    std::mt19937 random(1);  // NOLINT: runs should repeat
    for (int round = 0; round < rounds; ++round) {
        std::shuffle(order.begin(), order.end(), random);
        for (const size_t i : order) {
            Samples& own = samples[i];
            if ((round + 1) * own.wanted / rounds == round * own.wanted / rounds) continue;
            own.seconds.push_back(contenders[i](own.repetitions) / own.repetitions);
        }
    }

    std::vector<Figure> figures;
    for (Samples& own : samples) {
        std::sort(own.seconds.begin(), own.seconds.end());
        figures.push_back({own.seconds[own.seconds.size() / 5], static_cast<int>(own.seconds.size())});
    }
    return figures;
}

}  // namespace quorvane::bench
