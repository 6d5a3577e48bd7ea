// Which end of depth maps is near: what the depth doctor says of pairs with a known answer, as they are and
// changed in ways that do not change the scene. `bench_polarity FOLDER...`: each folder has a truth.tsv, a
// line for a pair: photo, depth map, near or far (what the larger levels are), anything, and the level of
// holes or -.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "media/depth/depth_doctor.h"
#include "media/picture/image.h"
#include "media/picture/picture_file.h"

namespace {

using namespace quorvane;
using media::DepthMap;
using media::RgbImage;

struct Pair {
    std::string name, depth_name;
    RgbImage photo;
    DepthMap depth;
    bool larger_is_nearer = true;
    bool zero_is_hole = false;
};

/// A part of a picture, in shares of its sides.
struct Part {
    const char* name;
    double left, top, size;
};
constexpr Part kParts[] = {{"whole", 0, 0, 1},         {"top left", 0, 0, .8},       {"top right", .2, 0, .8},
                           {"bottom left", 0, .2, .8}, {"bottom right", .2, .2, .8}, {"middle", .1, .1, .8},
                           {"low", .15, .3, .7},       {"small", .2, .2, .6}};

template <typename Sample, int kChannels>
media::Image<Sample, kChannels> cut(const media::Image<Sample, kChannels>& image, const Part& part) {
    const auto of = [](int length, double share) { return static_cast<int>(length * share); };
    media::Image<Sample, kChannels> out(std::max(1, of(image.width, part.size)),
                                        std::max(1, of(image.height, part.size)));
    for (int y = 0; y < out.height; ++y)
        std::copy_n(&image.at(of(image.width, part.left), of(image.height, part.top) + y),
                    out.width * kChannels, out.row(y));
    return out;
}

/// Every second sample of every second row.
template <typename Sample>
media::Image<Sample, 1> halved(const media::Image<Sample, 1>& image) {
    media::Image<Sample, 1> out(std::max(1, image.width / 2), std::max(1, image.height / 2));
    for (int y = 0; y < out.height; ++y)
        for (int x = 0; x < out.width; ++x) out.at(x, y) = image.at(2 * x, 2 * y);
    return out;
}

/// Whether a level stands for a depth.
bool isDepth(const Pair& pair, float level) { return !pair.zero_is_hole || level != 0.0f; }

std::pair<float, float> rangeOf(const Pair& pair) {
    float lowest = 255.0f, highest = 0.0f;
    for (const float level : pair.depth.plane.samples) {
        if (!isDepth(pair, level)) continue;
        lowest = std::min(lowest, level);
        highest = std::max(highest, level);
    }
    return {lowest, highest};
}

Pair inverted(Pair pair) {
    const auto [lowest, highest] = rangeOf(pair);
    for (float& level : pair.depth.plane.samples)
        if (isDepth(pair, level)) level = lowest + highest - level;
    pair.larger_is_nearer = !pair.larger_is_nearer;
    return pair;
}

/// As a program that knows 8 bit only writes it; holes stay 0.
Pair ofEightBits(Pair pair) {
    const auto [lowest, highest] = rangeOf(pair);
    for (float& level : pair.depth.plane.samples)
        level =
            isDepth(pair, level) ? std::round((level - lowest) / (highest - lowest) * 225.0f) + 30.0f : 0.0f;
    pair.depth.bits = 8;
    return pair;
}

Pair cut(const Pair& pair, const Part& part) {
    Pair out = pair;
    out.photo = cut(pair.photo, part);
    out.depth.plane = cut(pair.depth.plane, part);
    if (!pair.depth.known.samples.empty()) out.depth.known = cut(pair.depth.known, part);
    return out;
}

Pair halved(Pair pair) {
    pair.depth.plane = halved(pair.depth.plane);
    if (!pair.depth.known.samples.empty()) pair.depth.known = halved(pair.depth.known);
    return pair;
}

struct Tally {
    int right = 0, doubtful = 0, wrong_named = 0, wrong_unnamed = 0;
    int all() const { return right + wrong_named + wrong_unnamed; }
    void add(const Tally& other) {
        right += other.right;
        doubtful += other.doubtful;
        wrong_named += other.wrong_named;
        wrong_unnamed += other.wrong_unnamed;
    }
};

/// How sure the doctor is of the truth, in per cent, and the same in the tally.
int judge(const Pair& pair, Tally* tally) {
    DepthMap depth = pair.depth;
    media::DepthKnowledge known;
    known.name = pair.depth_name;
    media::Polarity polarity;
    media::examine(pair.photo, known, &depth, &polarity);
    const bool right = polarity.larger_is_nearer == pair.larger_is_nearer;
    if (right) ++tally->right;
    if (right && polarity.doubtful) ++tally->doubtful;
    if (!right) ++(polarity.doubtful ? tally->wrong_named : tally->wrong_unnamed);
    return static_cast<int>(std::lround(100.0 * (right ? polarity.confidence : 1.0 - polarity.confidence)));
}

std::vector<Pair> pairsIn(const std::string& folder) {
    std::ifstream truth(folder + "/truth.tsv");
    if (!truth) throw std::runtime_error(folder + "/truth.tsv: cannot be read");
    std::vector<Pair> pairs;
    for (std::string line; std::getline(truth, line);) {
        std::istringstream fields(line);
        std::string photo, depth, larger, kind, hole;
        for (std::string* field : {&photo, &depth, &larger, &kind, &hole}) std::getline(fields, *field, '\t');
        if (larger != "near" && larger != "far") continue;
        Pair pair;
        pair.name = photo;
        pair.depth_name = depth;
        pair.larger_is_nearer = larger == "near";
        pair.zero_is_hole = hole == "0";
        try {
            pair.photo = media::readPhoto(folder + "/" + photo);
            pair.depth = media::readDepthMap(folder + "/" + depth);
        } catch (const std::exception& error) {
            std::printf("%-20s left out: %s\n", photo.c_str(), error.what());
            continue;
        }
        pairs.push_back(std::move(pair));
    }
    return pairs;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc < 2) {
        std::fprintf(stderr, "bench_polarity FOLDER...: folders with pairs and their truth.tsv\n");
        return 2;
    }
    std::printf(
        "per cent for the truth; as it is: whole, 5 cuts, lower part, small, half size, 8 bit | inverted\n");
    Tally all;
    for (int i = 1; i < argc; ++i)
        for (const Pair& pair : pairsIn(argv[i])) {
            Tally tally;
            std::string line;
            for (const Pair& way : {pair, inverted(pair)}) {
                if (!line.empty()) line += " |";
                std::vector<Pair> variants;
                for (const Part& part : kParts) variants.push_back(cut(way, part));
                variants.push_back(halved(way));
                variants.push_back(ofEightBits(way));
                for (const Pair& variant : variants) {
                    char text[8];
                    std::snprintf(text, sizeof text, "%4d", judge(variant, &tally));
                    line += text;
                }
            }
            std::printf("%-20s %-4s%s  %s\n", pair.name.c_str(), pair.larger_is_nearer ? "near" : "far",
                        line.c_str(),
                        tally.wrong_unnamed > 0 ? "WRONG AND UNNAMED"
                        : tally.wrong_named > 0 ? "wrong, named"
                                                : "");
            std::fflush(stdout);
            all.add(tally);
        }
    std::printf(
        "%d trials: %d right (%.1f %%), of which %d named as doubtful; %d wrong and named; %d wrong and "
        "unnamed\n",
        all.all(), all.right, 100.0 * all.right / std::max(1, all.all()), all.doubtful, all.wrong_named,
        all.wrong_unnamed);
    return all.wrong_unnamed > 0 || all.right * 10 < all.all() * 9 ? 1 : 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
