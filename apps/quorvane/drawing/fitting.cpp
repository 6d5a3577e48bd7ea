#include "apps/quorvane/drawing/fitting.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <utility>
#include <vector>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/text.h"
#include "media/clip/size_search.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

using media::Codec;
using media::SizeChoice;
using media::SizeChoices;

/// On the codecs' common scale. Not far below it a smaller picture, scaled up again, is nearer to the
/// original (SSIM of the brightness; H.264 and WebP, two photos).
constexpr int kLeastQuality = 25;

/// More is not seen.
constexpr int kBestQuality = 95;

/// Pixels of the longer side.
constexpr int kSmallestSide = 240;

/// Of either side, from one size to the next where the quality is searched at each.
constexpr double kSizeStep = 0.85;

/// Frames a second: what is left of a motion at the last is still one.
constexpr int kRates[] = {24, 20, 15, 12};

/// Of a codec with a palette, once size and rate are at their floor.
constexpr int kPaletteQualities[] = {60, 40, 20};

/// A file grows less than its pixels and frames do.
constexpr double kGrowth = 0.85;

/// Bytes double with so much quality.
constexpr double kQualityDoubling = 24.0;

/// One way to draw and compress, as far as the search does not change it level by level.
struct Variant {
    int longest;  ///< pixels of the longer side
    int fps;
    std::optional<double> quality;
};

enum class Level { kQuality, kSide, kNothing };

int longerSide(Size size) { return std::max(size.width, size.height); }

class Fitting {
  public:
    Fitting(const FitTask& task, const Talk& talk, const DrawKept& draw)
        : m_task(task), m_talk(talk), m_draw(draw), m_codec(media::codecFor(task.format, task.encoder)) {
        plan();
    }

    void run() {
        const media::SizeOutcome outcome =
            media::searchSize(m_choices, m_task.limit, [this](SizeChoice choice) { return encode(choice); });
        clearProgress();
        if (!outcome.choice)
            throw Error(m_task.path + ": does not fit into " + textOfBytes(m_task.limit) +
                        "; the smallest that can be made is " + textOfBytes(outcome.smallest_bytes) + ": " +
                        textOf(outcome.smallest) + keptWords());
        m_best->commit();
        if (!m_talk.quiet)
            std::fprintf(stderr, "fit: %s of %s: %s\n", textOfBytes(m_best_bytes).c_str(),
                         textOfBytes(m_task.limit).c_str(), textOf(*outcome.choice).c_str());
    }

  private:
    /// Lists what may be given up, in its order.
    void plan() {
        const bool has_palette = m_codec.name == "gif";
        const bool has_quality = m_codec.isLossy() && !m_task.keeps_quality;
        m_level = has_quality && !has_palette ? Level::kQuality
                  : !m_task.keeps_size        ? Level::kSide
                                              : Level::kNothing;

        std::vector<int> sides = {longerSide(m_task.size)};
        if (m_level == Level::kQuality && !m_task.keeps_size)
            while (sides.back() > kSmallestSide)
                sides.push_back(std::max(kSmallestSide, static_cast<int>(sides.back() * kSizeStep)));
        for (const int side : sides) m_variants.push_back({side, m_task.fps, {}});
        if (m_task.format.kind == media::OutputKind::kClip && !m_task.keeps_rate)
            for (const int fps : kRates)
                if (fps < m_task.fps) m_variants.push_back({sides.back(), fps, {}});
        if (has_quality && has_palette)
            for (const int quality : kPaletteQualities)
                m_variants.push_back({sides.back(), m_variants.back().fps, quality});

        for (const Variant& variant : m_variants)
            m_choices.variant_costs.push_back(
                std::pow(static_cast<double>(variant.longest) * variant.longest * variant.fps, kGrowth) *
                std::exp2((variant.quality.value_or(100.0) - 100.0) / (2.0 * kQualityDoubling)));
        switch (m_level) {
            case Level::kQuality:
                m_choices.floor = levelOf(kLeastQuality);
                m_choices.best = std::max(m_choices.floor,
                                          levelOf(m_task.fills_limit ? kBestQuality : m_codec.usual_quality));
                m_choices.level_cost = [this](int level) {
                    return std::exp2(qualityOf(level) / kQualityDoubling);
                };
                break;
            case Level::kSide:
                m_choices.best = sides.front();
                m_choices.floor = std::min(kSmallestSide, sides.front());
                m_choices.level_cost = [](int level) {
                    return std::pow(static_cast<double>(level) * level, kGrowth);
                };
                break;
            case Level::kNothing: m_choices.level_cost = [](int) { return 1.0; }; break;
        }
    }

    double qualityOf(int level) const { return 100.0 * level / m_codec.steps(); }
    int levelOf(int quality) const {
        return static_cast<int>(std::lround(quality * m_codec.steps() / 100.0));
    }

    Size sizeOf(SizeChoice choice) const {
        const int side = m_level == Level::kSide ? choice.level : m_variants[choice.variant].longest;
        return side == longerSide(m_task.size) ? m_task.size : m_task.size_at(side);
    }

    media::EncoderSettings encoderOf(SizeChoice choice) const {
        media::EncoderSettings encoder = m_task.encoder;
        const Variant& variant = m_variants[choice.variant];
        if (m_level == Level::kQuality) encoder.quality = qualityOf(choice.level);
        if (variant.quality) encoder.quality = variant.quality;
        return encoder;
    }

    int64_t encode(SizeChoice choice) {
        const Size size = sizeOf(choice);
        const int fps = m_variants[choice.variant].fps;
        if (m_frames == nullptr || size != m_drawn_size || fps != m_drawn_fps) {
            clearProgress();
            m_frames.reset();  // before others take as much room
            m_frames = m_draw(size, fps);
            m_drawn_size = size;
            m_drawn_fps = fps;
        }
        showProgress(choice);
        auto file = std::make_unique<PendingOutput>(m_task.path);
        m_frames->encode(file.get(), encoderOf(choice));
        const int64_t bytes = file->size();
        // What is tried after one that fits is better than that.
        if (bytes <= m_task.limit) {
            m_best = std::move(file);
            m_best_bytes = bytes;
        }
        ++m_tried;
        return bytes;
    }

    /// What was chosen, such as "1280x960, 30 frames a second, quality 61".
    std::string textOf(SizeChoice choice) const {
        std::string text = app::textOf(sizeOf(choice));
        if (m_task.format.kind == media::OutputKind::kClip)
            text += formatted(", %d frames a second", m_variants[choice.variant].fps);
        if (const auto quality = encoderOf(choice).quality; quality || m_codec.isLossy())
            text += formatted(", quality %.0f", quality.value_or(m_codec.usual_quality));
        return text;
    }

    std::string keptWords() const {
        std::vector<std::string_view> kept;
        if (m_task.keeps_size) kept.emplace_back("size");
        if (m_task.keeps_rate && m_task.format.kind == media::OutputKind::kClip) kept.emplace_back("rate");
        if (m_task.keeps_quality && m_codec.isLossy()) kept.emplace_back("quality");
        return kept.empty() ? "" : " (" + media::listOf(kept, " and ") + " as asked for)";
    }

    void showProgress(SizeChoice choice) {
        if (m_talk.quiet || isatty(STDERR_FILENO) == 0) return;
        std::fprintf(stderr, "\r[try %d] %s \033[K", m_tried + 1, textOf(choice).c_str());
        std::fflush(stderr);
        m_progress_shown = true;
    }

    void clearProgress() {
        if (m_progress_shown) std::fputs("\r\033[K", stderr);
        m_progress_shown = false;
    }

    const FitTask& m_task;
    const Talk& m_talk;
    const DrawKept& m_draw;
    const Codec& m_codec;

    Level m_level = Level::kNothing;
    std::vector<Variant> m_variants;  ///< in the order in which they are liked
    SizeChoices m_choices;

    std::unique_ptr<media::KeptClip> m_frames;
    Size m_drawn_size;
    int m_drawn_fps = 0;

    std::unique_ptr<PendingOutput> m_best;
    int64_t m_best_bytes = 0;
    int m_tried = 0;
    bool m_progress_shown = false;
};

}  // namespace

void drawToFit(const FitTask& task, const Talk& talk, const DrawKept& draw) {
    Fitting(task, talk, draw).run();
}

}  // namespace quorvane::app
