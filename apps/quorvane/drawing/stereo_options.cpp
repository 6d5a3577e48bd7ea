#include "apps/quorvane/drawing/stereo_options.h"

#include <cstdio>
#include <filesystem>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"

namespace quorvane::app {
namespace {

// Full distance makes the most of one picture; in a clip it would leave the motion no way to the sides.
constexpr double kEyesOfStills = 1.0, kEyesOfClips = 0.3;

}  // namespace

AddedStereoOptions addStereoOptions(CommandLine* line, StereoOptions* options) {
    const Option& stereo =
        line->parsed(
                "--stereo", [options](const std::string& text) { options->layout = parseStereo(text); },
                "draw several views, see below; --size is that of one view")
            .called("LAYOUT");
    const Option& eyes =
        line->parsed(
                "--eyes",
                [options](const std::string& text) {
                    double part = 0.0;
                    if (!parseNumber(text, &part) || !(part >= 0.0 && part <= 1.0))
                        throw UsageError("--eyes " + text + ": a number from 0 to 1 is wanted");
                    options->eyes = part;
                },
                "how far the outermost views stand from the middle, 0 to 1 (default 1 in stills, 0.3 in "
                "clips); the motion goes less far to the sides where both would leave the square")
            .called("N");
    std::vector<std::pair<std::string, std::string>> rows;
    for (const StereoKindInfo& info : stereoKinds()) rows.emplace_back(info.word, info.meaning);
    line->table("Layouts of several views:", std::move(rows));
    return {stereo, eyes};
}

double eyesFor(const StereoOptions& options, bool still) {
    return options.eyes.value_or(still ? kEyesOfStills : kEyesOfClips);
}

std::optional<Stereo> stereoFor(const StereoOptions& options, const media::OutputFormat& format) {
    if (format.kind == media::OutputKind::kPair && !options.layout)
        return Stereo{StereoKind::kSideBySide, 1, 1, eyesFor(options, true)};
    if (!options.layout) return std::nullopt;
    Stereo stereo = *options.layout;
    const bool still = format.kind == media::OutputKind::kStill;
    const bool wiggles = stereo.kind == StereoKind::kWiggle;
    if (!still && format.kind != media::OutputKind::kClip && format.kind != media::OutputKind::kFolder)
        throw UsageError("--stereo: " + std::string(format.name) + " takes one view or has its own layout");
    if (still && wiggles)
        throw UsageError("--stereo wiggle: it moves, and " + std::string(format.name) + " is a still");
    // A wiggle shows what two stills do.
    stereo.eyes = eyesFor(options, still || wiggles);
    return stereo;
}

void suggestName(const std::string& path, const Stereo& stereo, Size view) {
    const std::string named = withSuffix(path, stereoSuffix(stereo, view));
    if (named != path)
        std::fprintf(stderr, "stereo: players tell the layout by the name: %s\n",
                     printable(std::filesystem::path(named).filename().string()).c_str());
}

Route stereoRoute(const Route& mono, const Stereo& stereo, Position middle, bool still) {
    const double eyes = showsDepth(stereo) ? 0.0 : stereo.eyes;
    const bool one_place = still || stereo.kind == StereoKind::kWiggle;
    const std::vector<Position> middles = one_place ? std::vector<Position>{middle} : mono.path;
    const double share = sideShare(middles, eyes);
    Route route;
    route.path = eyesOn(withShare(middles, share), stereo);
    if (still && showsDepth(stereo)) {
        // Who shows it moves it himself, and wants all of the photo.
        route.positions = middles;
    } else if (still) {
        route.path.insert(route.path.end(), mono.path.begin(), mono.path.end());
        route.positions = withShare(middles, share);
    } else if (one_place) {
        route.positions =
            wiggled(withShare(middles, share).front(), eyes, static_cast<int>(mono.positions.size()));
    } else {
        route.positions = withShare(mono.positions, share);
    }
    return route;
}

}  // namespace quorvane::app
