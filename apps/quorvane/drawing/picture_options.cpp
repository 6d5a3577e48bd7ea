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
    std::vector<std::string> names;
    std::vector<std::pair<std::string, std::string>> rows;
    for (const Motion& motion : motions()) {
        names.emplace_back(motion.name);
        rows.emplace_back(motion.name, motion.meaning);
    }
    const Option& motion = line->word(
        "--motion", names, [options](size_t i) { options->motion = &motions()[i]; },
        "how the view moves, see below (default " + names.front() + ")");
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
