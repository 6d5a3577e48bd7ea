#include "apps/quorvane/input/pair_source.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "media/decoder/decoder.h"
#include "media/depth/anaglyph.h"
#include "media/depth/stereo_depth.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

struct Layout {
    const char* name;
    media::PairLayout layout;
};

constexpr Layout kLayouts[] = {{"sbs", {false, false, false}},
                               {"cross", {false, false, true}},
                               {"half-sbs", {false, true, false}},
                               {"tb", {true, false, false}},
                               {"half-tb", {true, true, false}}};

// As viewers and converters name such pictures.
constexpr Layout kEndings[] = {{"_half_sbs", {false, true, false}},    {"_hsbs", {false, true, false}},
                               {"_sbs", {false, false, false}},        {"_lr", {false, false, false}},
                               {"_left_right", {false, false, false}}, {"_rl", {false, false, true}},
                               {"_right_left", {false, false, true}},  {"_half_tb", {true, true, false}},
                               {"_htb", {true, true, false}},          {"_half_ou", {true, true, false}},
                               {"_hou", {true, true, false}},          {"_tb", {true, false, false}},
                               {"_ou", {true, false, false}}};

}  // namespace

void addPairOptions(CommandLine* line, PairOptions* options, const std::vector<const Option*>& others) {
    Option& right =
        line->text("--right", &options->right,
                   "the right eye's view, where PHOTO is the left eye's; the depth is made from both")
            .called("FILE");
    std::vector<std::string> layouts;
    for (const Layout& layout : kLayouts) layouts.emplace_back(layout.name);
    Option& pair = line->word(
                           "--pair", layouts, [options](size_t i) { options->layout = kLayouts[i].layout; },
                           "PHOTO holds both eyes' views: side by side, left first (sbs) or right first "
                           "(cross), one above "
                           "the other, left first (tb), or each squeezed to half (half-sbs, half-tb)")
                       .called("LAYOUT");
    pair.excludes(right);
    for (const Option* other : others) {
        right.excludes(*other);
        pair.excludes(*other);
    }
}

std::optional<media::PairLayout> layoutInName(const std::string& path) {
    const std::filesystem::path name(path);
    const auto lower = [](std::string text) {
        std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
            return c == '-' || c == '.' ? '_' : static_cast<char>(std::tolower(c));
        });
        return text;
    };
    const std::string stem = lower(name.stem().string()), extension = lower(name.extension().string());
    for (const Layout& ending : kEndings) {
        const std::string end = ending.name;
        if (stem.size() > end.size() && stem.compare(stem.size() - end.size(), end.size(), end) == 0)
            return ending.layout;
    }
    if (extension == "_jps" || extension == "_pns") return media::PairLayout{false, false, true};
    return std::nullopt;
}

std::optional<media::StereoPair> findPair(const PairOptions& options, const std::string& photo,
                                          const media::Contents& contents) {
    if (!options.right.empty()) {
        media::StereoPair pair;
        pair.left.where = photo;
        pair.right.where = options.right;
        pair.right.bytes = media::readPictureFile(options.right);
        return pair;
    }
    if (options.layout) return media::pairOfHalves(*options.layout);
    if (contents.pair) return contents.pair;
    if (const auto layout = layoutInName(photo)) return media::pairOfHalves(*layout);
    return std::nullopt;
}

PhotoOfPair readPair(const std::string& file, const media::StereoPair& pair, const std::string& name) {
    media::StereoViews views = media::decoder::decodeViews(file, pair, name);
    PhotoOfPair read;
    try {
        read.depth = media::depthOfPair(views, name, &read.remarks);
    } catch (const Error&) {
        if (pair.layout && media::isAnaglyph(views.left)) throw Error(name + ": " + anaglyphLine());
        throw;
    }
    read.photo = std::move(views.left);
    return read;
}

std::string anaglyphLine() {
    return "an anaglyph, two views in one picture's colours; they cannot be parted, a stereo pair is wanted";
}

}  // namespace quorvane::app
