#include "apps/quorvane/drawing/picture_options.h"

#include <limits>
#include <utility>
#include <vector>

#include "apps/quorvane/drawing/motion_file.h"

namespace quorvane::app {

AddedPictureOptions addPictureOptions(CommandLine* line, const std::string& usual, PictureOptions* options) {
    line->parsed(
            "--size", [options](const std::string& text) { options->size = parsePictureSize(text); },
            "picture size: WxH, the longer side alone, or 'photo' for the photo's own (default: the photo's "
            "aspect, at most " +
                usual + ")")
        .called("WxH")
        .soughtAs({"--width", "--height", "--resolution", "--scale", "-s"})
        .offers({"photo"});
    std::vector<std::pair<std::string, std::string>> rows;
    std::vector<std::string> names;
    for (const NamedMotion& motion : motions()) {
        rows.emplace_back(motion.name, motion.meaning);
        names.emplace_back(motion.name);
    }
    Option& motion =
        line->parsed(
                "--motion", [options](const std::string& text) { options->motion = parseMotion(text); },
                "how the view moves: names from the list below, joined as in sway+zoom; what each axis does, "
                "as in 'x=sin(1) y=0.5cos(2)'; or points to rest at, as in '-1,0 1,0'")
            .called("MOTION")
            .offers(names)
            .usually(options->motion.text);
    const Option& motion_file = line->parsed(
                                        "--motion-file",
                                        [options](const std::string& path) {
                                            options->motion = motionThrough(readMoments(path), path);
                                        },
                                        "the motion of a file instead, of lines such as "
                                        "{\"t\":0.5,\"x\":0.2,\"y\":-0.1}: t in seconds, "
                                        "x and y -1 to 1, zoom 0.5 to 4")
                                    .called("FILE")
                                    .excludes(motion);
    const Option& amount = line->number("--amount", &options->amount, 0.0, 1.0, "how far the view swings");
    line->table("Motions:", std::move(rows));
    return {motion, motion_file, amount};
}

Size sizeOf(const PictureOptions& options, Size photo, int longest, bool even) {
    if (!options.size) return pictureSize(photo, longest, even);
    if (options.size->exact) return *options.size->exact;
    if (options.size->longest) return scaledPictureSize(photo, *options.size->longest, even);
    return pictureSize(photo, std::numeric_limits<int>::max(), even);
}

}  // namespace quorvane::app
