#include "apps/quorvane/drawing/picture_options.h"

#include <limits>
#include <utility>
#include <vector>

namespace quorvane::app {

AddedPictureOptions addPictureOptions(CommandLine* line, const std::string& usual, PictureOptions* options) {
    line->parsed(
            "--size", [options](const std::string& text) { options->size = parsePictureSize(text); },
            "picture size: WxH, the longer side alone, or 'photo' for the photo's own (default: the photo's "
            "aspect, at most " +
                usual + ")")
        .called("WxH");
    std::vector<std::pair<std::string, std::string>> rows;
    for (const NamedMotion& motion : motions()) rows.emplace_back(motion.name, motion.meaning);
    const Option& motion =
        line->parsed(
                "--motion", [options](const std::string& text) { options->motion = parseMotion(text); },
                "how the view moves: names from the list below, joined as in sway+zoom, or what each axis "
                "does, as in 'x=sin(1) y=0.5cos(2)'")
            .called("MOTION")
            .usually(options->motion.text);
    const Option& amount = line->number("--amount", &options->amount, 0.0, 1.0, "how far the view swings");
    line->table("Motions:", std::move(rows));
    return {motion, amount};
}

Size sizeOf(const PictureOptions& options, Size photo, int longest, bool even) {
    if (!options.size) return pictureSize(photo, longest, even);
    if (options.size->exact) return *options.size->exact;
    if (options.size->longest) return scaledPictureSize(photo, *options.size->longest, even);
    return pictureSize(photo, std::numeric_limits<int>::max(), even);
}

}  // namespace quorvane::app
