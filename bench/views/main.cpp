// bench_views: how close drawn views come to true ones, and how much silhouettes wobble while the view moves.
//   bench_views [--pictures FOLDER] [STEREO_FOLDER [NAME:SCALE...]]
// Draws our own exact scene and, where a folder of stereo pairs is given or QUORVANE_SHARED_PHOTOS names a
// folder that holds them in stereo/, predicts each right photo from the left one and its depth.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bench/drawing.h"
#include "bench/views/exact_scene.h"
#include "bench/views/measures.h"
#include "bench/views/png_file.h"
#include "bench/views/shifted_views.h"
#include "bench/views/stereo_pair.h"
#include "composition/edges.h"
#include "quorvane/host/OffscreenContext.h"
#include "sizes/sizes.h"

namespace quorvane::bench {
namespace {

/// A way to prepare depth maps.
struct Way {
    const char* name;
    bool clean;
    GridBudget budget;
};

constexpr std::array<Way, 4> kWays = {{{"soft, coarse grid", false, kCoarseGrid},
                                       {"clean, live grid", true, kAutoGridLive},
                                       {"clean, auto grid", true, kAutoGrid},
                                       {"clean, fine grid", true, kFineGrid}}};

/// As phones make maps: with edges several samples wide.
DepthMap softened(const DepthMap& depth) {
    constexpr double kSigma = 2.0;
    Plane plane(depth.width, depth.height);
    std::copy(depth.samples.begin(), depth.samples.end(), plane.samples.begin());
    plane = blurred(plane, kSigma);
    DepthMap soft(depth.width, depth.height);
    std::transform(plane.samples.begin(), plane.samples.end(), soft.samples.begin(),
                   [](float level) { return static_cast<uint8_t>(std::lround(level)); });
    return soft;
}

DepthMap prepared(const DepthMap& depth, const Way& way) {
    const Size size = {depth.width, depth.height};
    const Fit fit = fitSizes(size, size, 16384, way.budget);
    if (!way.clean) return depth;  // it has four samples a cell as it is
    DepthMap map(fit.depth.width, fit.depth.height);
    map.samples = cleanEdges(depth.samples.data(), size, fit.grid);
    return map;
}

struct Errors {
    Error all, hidden, band, seen;

    void add(const Picture& drawn, const Picture& truth, const Mask& judged, const Mask& hidden_part,
             const Mask& band_part) {
        Mask seen_part = judged;
        for (size_t i = 0; i < seen_part.samples.size(); ++i)
            if (hidden_part.samples[i] != 0) seen_part.samples[i] = 0;
        addError(drawn, truth, judged, &all);
        addError(drawn, truth, hidden_part, &hidden);
        addError(drawn, truth, band_part, &band);
        addError(drawn, truth, seen_part, &seen);
    }
};

struct Figures {
    double all = 0.0, hidden = 0.0, band = 0.0, seen = 0.0, similarity = 0.0, wobble = 0.0;

    void addShare(const Figures& other, double share) {
        all += share * other.all;
        hidden += share * other.hidden;
        band += share * other.band;
        seen += share * other.seen;
        similarity += share * other.similarity;
        wobble += share * other.wobble;
    }
};

class Report {
  public:
    explicit Report(FILE* out) : m_out(out) {}
    void title(const std::string& text, bool moves) const {
        std::fprintf(m_out, "\n%-46s    all hidden   band   seen   SSIM%s\n", text.c_str(),
                     moves ? "  wobble" : "");
    }
    void line(const std::string& name, const Figures& figures, bool moves) const {
        std::fprintf(m_out, "%-46s %6.2f %6.2f %6.2f %6.2f %6.3f", name.c_str(), figures.all, figures.hidden,
                     figures.band, figures.seen, figures.similarity);
        if (moves) std::fprintf(m_out, " %7.2f", figures.wobble);
        std::fprintf(m_out, "\n");
        std::fflush(m_out);
    }

  private:
    FILE* m_out;
};

/// By how much what is wrong near silhouettes changes from one picture to the next, in levels.
class Wobble {
  public:
    void add(const Picture& drawn, const ExactView& truth) {
        std::vector<int> errors(drawn.samples.size());
        for (size_t i = 0; i < errors.size(); ++i)
            errors[i] = int{drawn.samples[i]} - int{truth.picture.samples[i]};
        if (m_last_band != nullptr)
            for (size_t i = 0; i < errors.size(); ++i) {
                if (truth.band.samples[i / 3] == 0 || m_last_band->samples[i / 3] == 0) continue;
                m_sum += std::abs(errors[i] - m_last_errors[i]);
                m_count += 1.0;
            }
        m_last_errors = std::move(errors);
        m_last_band = &truth.band;
    }
    double mean() const { return m_count > 0.0 ? m_sum / m_count : 0.0; }

  private:
    std::vector<int> m_last_errors;
    const Mask* m_last_band = nullptr;
    double m_sum = 0.0, m_count = 0.0;
};

void measureScene(const Report& report, const std::string& pictures) {
    constexpr int kViews = 11;
    const Picture photo = ExactScene::photo();
    const DepthMap exact_depth = ExactScene::depth();
    const auto position = [](int view) { return 2.0 * view / (kViews - 1) - 1.0; };
    for (const Sweep sweep : {Sweep::kHorizontal, Sweep::kVertical}) {
        const char* direction = sweep == Sweep::kHorizontal ? "horizontal" : "vertical";
        std::vector<ExactView> truths;
        truths.reserve(kViews);
        for (int i = 0; i < kViews; ++i) truths.push_back(ExactScene::view(sweep, position(i)));
        if (!pictures.empty())
            writePng(pictures + "/scene " + direction + ", true.png", truths.back().picture);
        for (const bool soft : {false, true}) {
            report.title(std::string("exact scene, ") + direction + (soft ? ", softened map" : ""), true);
            const DepthMap depth = soft ? softened(exact_depth) : exact_depth;
            for (const Way& way : kWays) {
                ShiftedViews views(photo, prepared(depth, way), !way.clean);
                Errors errors;
                Wobble wobble;
                Figures figures;
                for (int i = 0; i < kViews; ++i) {
                    const ExactView& truth = truths[static_cast<size_t>(i)];
                    const double strength = ExactScene::strength(position(i));
                    const bool across = sweep == Sweep::kHorizontal;
                    const Picture drawn =
                        views.draw(across ? strength : 0.0, across ? 0.0 : strength, truth.left, truth.top);
                    errors.add(drawn, truth.picture, truth.judged, truth.hidden, truth.band);
                    wobble.add(drawn, truth);
                    if (i % (kViews - 1) == 0)
                        figures.similarity += similarity(drawn, truth.picture, truth.judged) / 2.0;
                    if (i == kViews - 1 && !pictures.empty())
                        writePng(pictures + "/scene " + direction + (soft ? ", softened, " : ", ") +
                                     way.name + ".png",
                                 drawn);
                }
                figures.addShare({errors.all.decibels(), errors.hidden.decibels(), errors.band.decibels(),
                                  errors.seen.decibels(), 0.0, wobble.mean()},
                                 1.0);
                report.line(way.name, figures, true);
            }
        }
    }
}

Figures measurePair(const StereoPair& pair, const DepthMap& depth, const Way& way,
                    const std::string& picture_file) {
    ShiftedViews views(pair.left, prepared(depth, way), !way.clean);
    const Picture drawn = views.draw(-pair.strength, 0.0, -pair.back, 0);
    if (!picture_file.empty()) writePng(picture_file, drawn);
    Errors errors;
    errors.add(drawn, pair.right, pair.judged, pair.hidden, pair.band);
    return {errors.all.decibels(),
            errors.hidden.decibels(),
            errors.band.decibels(),
            errors.seen.decibels(),
            similarity(drawn, pair.right, pair.judged),
            0.0};
}

struct PairName {
    std::string name;
    int scale;
};

void measurePairs(const Report& report, const std::string& folder, const std::vector<PairName>& names,
                  const std::string& pictures) {
    for (const bool soft : {false, true}) {
        std::array<Figures, kWays.size()> means;
        const std::string kind = soft ? ", softened map" : "";
        for (const PairName& name : names) {
            const StereoPair pair = readStereoPair(folder, name.name, name.scale);
            report.title(name.name + kind, false);
            if (!pictures.empty()) writePng(pictures + "/" + name.name + ", true.png", pair.right);
            const DepthMap depth = soft ? softened(pair.depth) : pair.depth;
            for (size_t i = 0; i < kWays.size(); ++i) {
                const std::string file =
                    pictures.empty() ? "" : pictures + "/" + name.name + kind + ", " + kWays[i].name + ".png";
                const Figures figures = measurePair(pair, depth, kWays[i], file);
                means[i].addShare(figures, 1.0 / static_cast<double>(names.size()));
                report.line(kWays[i].name, figures, false);
            }
        }
        report.title("mean of " + std::to_string(names.size()) + " stereo pairs" + kind, false);
        for (size_t i = 0; i < kWays.size(); ++i) report.line(kWays[i].name, means[i], false);
    }
}

void run(const std::vector<std::string>& arguments, FILE* out) {
    std::string pictures, folder;
    std::vector<PairName> names;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const size_t colon = arguments[i].rfind(':');
        if (arguments[i] == "--pictures" && i + 1 < arguments.size())
            pictures = arguments[++i];
        else if (folder.empty())
            folder = arguments[i];
        else if (colon != std::string::npos)
            names.push_back({arguments[i].substr(0, colon), std::stoi(arguments[i].substr(colon + 1))});
        else
            throw std::runtime_error(arguments[i] + ": pairs are given as NAME:SCALE");
    }
    if (const char* shared = std::getenv("QUORVANE_SHARED_PHOTOS"); folder.empty() && shared != nullptr)
        folder = std::string(shared) + "/stereo";
    if (names.empty()) names = {{"books", 3}, {"cones", 4}, {"dolls", 3}, {"teddy", 4}};
    if (!pictures.empty()) std::filesystem::create_directories(pictures);

    std::unique_ptr<OffscreenContext> context;
    const Status status = OffscreenContext::create(&context);
    if (!status) throw std::runtime_error(status.message());
    const Report report(out);
    std::fprintf(out, "Peak signal-to-noise ratios in dB, wobble in levels of 255.\n");
    measureScene(report, pictures);
    if (!folder.empty()) measurePairs(report, folder, names, pictures);
}

}  // namespace
}  // namespace quorvane::bench

int main(int argc, char** argv) {
    FILE* const out = quorvane::bench::figuresOutput();
    if (out == nullptr) return 1;
    try {
        quorvane::bench::run({argv + 1, argv + argc}, out);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_views: %s\n", error.what());
        return 1;
    }
    std::fclose(out);
    return 0;
}
