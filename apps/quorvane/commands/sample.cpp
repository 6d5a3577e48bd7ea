#include <unistd.h>

#include <memory>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "system/cancel.h"
#include "system/pending_output.h"

namespace quorvane::app {
namespace {

constexpr int kSmallest = 64;
constexpr int kLargest = 8192;

struct SampleOptions {
    std::string photo;  ///< the file to write
    std::string depth;  ///< the file to write
    Size size = {1600, 1200};
};

Size parseSampleSize(const std::string& text) {
    const PictureSize asked = parsePictureSize(text);
    if (!asked.exact && !asked.longest)
        throw UsageError("--size " + text + ": the sample has no photo; WxH or the longer side is wanted");
    // 4:3, as the default.
    const Size size = asked.exact ? *asked.exact : Size{*asked.longest, (*asked.longest * 3 + 2) / 4};
    if (size.width < kSmallest || size.height < kSmallest || size.width > kLargest || size.height > kLargest)
        throw UsageError("--size " + text + ": the sample's sides are 64 to 8192 pixels");
    return size;
}

void sample(const SampleOptions& options) {
    for (const std::string& path : {options.photo, options.depth})
        requirePng(path, path + ": the sample's two files are .png");
    refuseSameOutput(options.photo, options.depth, "photo and depth map");

    // Asked before any work is done.
    for (const std::string& path : {options.photo, options.depth}) const PendingOutput place(path);

    const media::SampleScene scene = [&options] {
        const EndingAtOnce painting(STDERR_FILENO);
        return media::makeSampleScene(options.size.width, options.size.height);
    }();
    media::writePng(scene.photo, options.photo);
    throwIfCancelled();
    media::writePng(scene.depth, options.depth);
}

std::function<void()> prepare(CommandLine* line) {
    const auto options = std::make_shared<SampleOptions>();
    line->text("PHOTO", &options->photo, "a .png file to write").required();
    line->text("DEPTH", &options->depth, "a .png file to write").required();
    line->parsed(
            "--size", [options](const std::string& text) { options->size = parseSampleSize(text); },
            "WxH, or the longer side; sides from 64 to 8192 (default 1600x1200)")
        .called("WxH");
    return [options] { sample(*options); };
}

}  // namespace

Command sampleCommand() {
    return {"sample",
            "write a made-up photo and its exact depth map",
            {{"a made-up photo and its exact depth map, to try things with",
              "quorvane sample photo.png depth.png"},
             {"a small one", "quorvane sample photo.png depth.png --size 320x240"}},
            prepare};
}

}  // namespace quorvane::app
