// A batch of photos with more and more jobs: what each adds, and what they cost each other.
//
//   bench_batch QUORVANE [--quick]
//
// Frames a second show what is gained in time; frames a second of CPU time, what a core that is kept busy
// gets done: where that stays, more cores bring as much more. Jobs beyond the cores of this machine stand for
// those of larger ones in the second figure alone.

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "system/child_process.h"
#include "system/cores.h"
#include "table.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr int kFrames = 30;
constexpr int kPhotoWidth = 2304, kPhotoHeight = 1728;
constexpr const char* kSize = "960x720";

struct Cost {
    double wall = 0.0, cpu = 0.0;  ///< seconds
    double peak_mb = 0.0;          ///< of the largest process so far
};

Cost childrensCost() {
    rusage used = {};
    getrusage(RUSAGE_CHILDREN, &used);
    const auto seconds = [](timeval time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return {0.0, seconds(used.ru_utime) + seconds(used.ru_stime),
            static_cast<double>(used.ru_maxrss) / 1024.0};
}

void run(const Words& words) {
    const quorvane::ExitStatus status = quorvane::ChildProcess(words, {-1, -1, 2, {}}).wait();
    if (!status.succeeded()) throw quorvane::Error(words[1] + " " + status.words());
}

struct Contender {
    std::string name;
    int jobs;   ///< 0: one process of `render` for each photo
    int cores;  ///< 0: all
    std::vector<Cost> costs;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void measure(Contender* contender, const std::string& program, const fs::path& place, int photos) {
    if (contender->cores > 0) setenv("QUORVANE_CORES", std::to_string(contender->cores).c_str(), 1);
    const Cost before = childrensCost();
    const auto start = std::chrono::steady_clock::now();
    const Words picture = {"--size", kSize, "--frames", std::to_string(kFrames), "-q"};
    if (contender->jobs == 0) {
        for (int i = 0; i < photos; ++i) {
            Words words = {program, "render", (place / "in" / (std::to_string(i) + ".jpg")).string(), "-o",
                           (place / "a.mp4").string()};
            words.insert(words.end(), picture.begin(), picture.end());
            run(words);
        }
    } else {
        Words words = {program,
                       "batch",
                       (place / "in").string(),
                       "-o",
                       (place / "out").string(),
                       "--jobs",
                       std::to_string(contender->jobs)};
        words.insert(words.end(), picture.begin(), picture.end());
        run(words);
    }
    const Cost after = childrensCost();
    unsetenv("QUORVANE_CORES");
    contender->costs.push_back(
        {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
         after.cpu - before.cpu, after.peak_mb});
}

int bench(const std::string& program, bool quick) {
    const int photos = quick ? 4 : 8, rounds = quick ? 1 : 3;
    std::string name = (fs::temp_directory_path() / "quorvane-bench-XXXXXX").string();
    const fs::path place = mkdtemp(name.data());
    fs::create_directory(place / "in");
    const quorvane::media::SampleScene scene = quorvane::media::makeSampleScene(kPhotoWidth, kPhotoHeight);
    const std::string photo = quorvane::media::jpegBytes(scene.photo, 90);
    for (int i = 0; i < photos; ++i) {
        const std::string number = std::to_string(i);
        std::ofstream(place / "in" / (number + ".jpg"), std::ios::binary) << photo;
        quorvane::media::writePng(scene.depth, (place / "in" / (number + "_depth.png")).string());
    }
    std::vector<Contender> contenders = {
        {"`render` for each photo", 0, 0, {}}, {"1 job on one core", 1, 1, {}}, {"1 job", 1, 0, {}}};
    const int cores = quorvane::usableCores();
    for (const int jobs : {2, 4, 8}) {
        const std::string stands_for = jobs > cores ? ", in place of " + std::to_string(jobs) + " cores" : "";
        contenders.push_back({std::to_string(jobs) + " jobs" + stands_for, jobs, 0, {}});
    }
    for (int round = 0; round < rounds; ++round)
        for (Contender& contender : contenders) measure(&contender, program, place, photos);
    fs::remove_all(place);

    std::printf(
        "%d photos of %d x %d, %d frames of %s each, .mp4; %d cores; medians of %d interleaved runs\n\n",
        photos, kPhotoWidth, kPhotoHeight, kFrames, kSize, cores, rounds);
    quorvane::bench::Table table(
        {"work", "seconds", "CPU seconds", "frames a second", "frames a CPU second"});
    for (const Contender& contender : contenders) {
        std::vector<double> wall, cpu;
        for (const Cost& cost : contender.costs) {
            wall.push_back(cost.wall);
            cpu.push_back(cost.cpu);
        }
        const auto number = [](double value) {
            char text[32];
            std::snprintf(text, sizeof text, "%.2f", value);
            return std::string(text);
        };
        const double frames = photos * kFrames;
        table.add({contender.name, number(median(wall)), number(median(cpu)), number(frames / median(wall)),
                   number(frames / median(cpu))});
    }
    table.print();
    std::printf("The largest process held %.0f MB.\n", childrensCost().peak_mb);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc >= 2) return bench(argv[1], argc > 2 && std::strcmp(argv[2], "--quick") == 0);
        std::fputs("bench_batch: the program is wanted: bench_batch QUORVANE [--quick]\n", stderr);
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_batch: %s\n", error.what());
        return 1;
    }
}
