// bench_composition: how much of photos is seen by default, and how far their subjects move.
//   bench_composition [PHOTO[@X,Y] [DEPTH]]... [--pictures FOLDER]
// Draws each photo from both ends of a full sway, as `quorvane render` does without options. The subject is
// what stands around the rest picture's point (X, Y), 0 to 1, or around its middle. Its blocks are matched
// between the two pictures; the median of their moves, in percent of the width, is printed, next to the
// median of all blocks above and beside it. A depth map's end is judged as the program judges it.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "apps/quorvane/drawing/clip_drawing.h"
#include "apps/quorvane/drawing/view.h"
#include "apps/quorvane/input/depth_source.h"
#include "apps/quorvane/terminal/numbers.h"
#include "media/picture/picture_file.h"
#include "media/scene/sheet.h"
#include "system/standard_streams.h"

namespace quorvane::bench {
namespace {

constexpr int kLongest = 960;
constexpr int kBlock = 24;
constexpr int kStep = 12;
constexpr double kSubject = 0.08;  ///< half a side of the subject's box, of the picture's
constexpr double kReach = 0.08;    ///< of the width, how far blocks are looked for
constexpr int kReachDown = 4;
/// The mean difference of neighbours in a block that can be found again.
constexpr double kTexture = 4.0;

struct Job {
    std::string photo, depth;
    double x = 0.5, y = 0.5;
};

struct Gray {
    int width, height;
    std::vector<int> samples;
    int at(int x, int y) const {
        return samples[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
};

Gray grayOf(const media::RgbImage& picture) {
    Gray gray = {picture.width, picture.height, {}};
    for (size_t i = 0; i < picture.samples.size(); i += 3)
        gray.samples.push_back(
            (2 * picture.samples[i] + 5 * picture.samples[i + 1] + picture.samples[i + 2]) / 8);
    return gray;
}

double textureOf(const Gray& gray, int left, int top) {
    int sum = 0;
    for (int y = top; y < top + kBlock; ++y)
        for (int x = left; x < left + kBlock; ++x) sum += std::abs(gray.at(x, y) - gray.at(x - 1, y));
    return static_cast<double>(sum) / (kBlock * kBlock);
}

int differenceOf(const Gray& a, const Gray& b, int left, int top, int dx, int dy, int most) {
    int sum = 0;
    for (int y = top; y < top + kBlock && sum < most; ++y)
        for (int x = left; x < left + kBlock; ++x) sum += std::abs(a.at(x, y) - b.at(x + dx, y + dy));
    return sum;
}

/// How many pixels to the right the block is found in the other picture; to a part of a pixel.
double moveOf(const Gray& a, const Gray& b, int left, int top) {
    const int reach = static_cast<int>(kReach * a.width);
    int best = 1 << 30, best_dx = 0, best_dy = 0;
    for (int dy = -kReachDown; dy <= kReachDown; ++dy) {
        if (top + dy < 0 || top + dy + kBlock > b.height) continue;
        for (int dx = -reach; dx <= reach; ++dx) {
            if (left + dx < 0 || left + dx + kBlock > b.width) continue;
            const int difference = differenceOf(a, b, left, top, dx, dy, best);
            if (difference >= best) continue;
            best = difference;
            best_dx = dx;
            best_dy = dy;
        }
    }
    if (left + best_dx < 1 || left + best_dx + kBlock >= b.width) return best_dx;
    const double before = differenceOf(a, b, left, top, best_dx - 1, best_dy, 1 << 30) - best;
    const double behind = differenceOf(a, b, left, top, best_dx + 1, best_dy, 1 << 30) - best;
    return before + behind > 0.0 ? best_dx + (before - behind) / (2.0 * (before + behind)) : best_dx;
}

double medianOf(std::vector<double> values) {
    if (values.empty()) return std::nan("");
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

struct Moves {
    double subject, others;  ///< percent of the width
};

Moves movesBetween(const Gray& left, const Gray& right, const Job& job) {
    std::vector<double> subject, others;
    for (int y = kStep; y + kBlock < left.height; y += kStep)
        for (int x = kStep; x + kBlock < left.width; x += kStep) {
            const double u = (x + kBlock / 2.0) / left.width, v = (y + kBlock / 2.0) / left.height;
            const bool is_subject = std::abs(u - job.x) < kSubject && std::abs(v - job.y) < kSubject;
            const bool is_other = std::abs(u - job.x) > 0.3 || v < job.y - 0.3;
            if ((!is_subject && !is_other) || textureOf(left, x, y) < kTexture) continue;
            (is_subject ? subject : others)
                .push_back(std::abs(moveOf(left, right, x, y)) * 100.0 / left.width);
        }
    return {medianOf(subject), medianOf(others)};
}

struct Result {
    PicturePlan plan;
    Moves moves;
};

Result resultOf(const Job& job, const std::string& pictures) {
    app::InputOptions options;
    options.photo = job.photo;
    options.depth = job.depth;
    app::Input input = app::readInput(options, app::findDepth(options));
    const Size size = pictureSize({input.photo.width, input.photo.height}, kLongest, false);
    app::View view({}, {}, size);
    const app::PlannedInput planned =
        view.plan(std::move(input.photo), input.depth.plane,
                  app::pathAround({}, app::parseMotion(app::motions().front().name), 1.0, 1));
    view.upload(planned);
    const std::string name = job.photo.substr(job.photo.rfind('/') + 1);
    const auto drawn = [&](double x, const char* end) {
        view.draw({x, 0.0});
        const media::RgbImage rgb = media::toRgb(view.picture());
        if (!pictures.empty()) media::writePng(rgb, pictures + "/" + name + end);
        return grayOf(rgb);
    };
    const Gray left = drawn(-1.0, "-left.png"), right = drawn(1.0, "-right.png");
    return {planned.plan, movesBetween(left, right, job)};
}

/// A photo begins a job; what follows it without one of a photo's names is its depth map.
std::vector<Job> jobsOf(const std::vector<std::string>& words) {
    std::vector<Job> jobs;
    for (const std::string& word : words) {
        if (word.find("_depth") != std::string::npos && !jobs.empty()) {
            jobs.back().depth = word;
            continue;
        }
        Job job;
        const size_t at = word.rfind('@');
        job.photo = word.substr(0, at);
        if (at != std::string::npos) app::parsePair(word.substr(at + 1), ',', &job.x, &job.y);
        jobs.push_back(job);
    }
    return jobs;
}

void run(std::vector<std::string> words) {
    std::string pictures;
    const auto option = std::find(words.begin(), words.end(), "--pictures");
    if (option != words.end() && option + 1 != words.end()) {
        pictures = *(option + 1);
        words.erase(option, option + 2);
    }
    std::fprintf(stderr, "%-24s %6s %6s %6s   moves, %% of the width: %8s %8s\n", "", "frame", "swing",
                 "pivot", "subject", "others");
    double sum = 0.0;
    const std::vector<Job> jobs = jobsOf(words);
    for (const Job& job : jobs) {
        const Result result = [&] {
            const StandardOutputTo nowhere("");
            return resultOf(job, pictures);
        }();
        std::printf("%-24s %6.3f %6.2f %6.2f                         %8.2f %8.2f\n",
                    job.photo.substr(job.photo.rfind('/') + 1).c_str(), result.plan.fov_scale,
                    result.plan.swing, result.plan.rotate_z_trans, result.moves.subject, result.moves.others);
        sum += result.plan.fov_scale;
    }
    if (!jobs.empty()) std::printf("%-24s %6.3f\n", "mean", sum / static_cast<double>(jobs.size()));
}

}  // namespace
}  // namespace quorvane::bench

int main(int argc, char** argv) {
    try {
        quorvane::bench::run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_composition: %s\n", error.what());
        return 1;
    }
    return 0;
}
