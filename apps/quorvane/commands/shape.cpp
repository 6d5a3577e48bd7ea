#include <cstdio>
#include <memory>
#include <utility>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/commands/profile_options.h"
#include "apps/quorvane/drawing/page.h"
#include "media/clip/share_page.h"
#include "media/picture/picture_file.h"
#include "system/cancel.h"
#include "system/pending_output.h"

namespace quorvane::app {
namespace {

struct ShapeOptions {
    InputOptions input;
    ViewOptions view;
    Talk talk;
    std::string out;  ///< the shaped depth map
};

void shape(const ShapeOptions& options) {
    refuseTwoWays(options.view);
    requirePng(options.out, "-o " + options.out + ": the shaped depth map is a .png file");
    refuseInputAsOutput({options.input.photo, options.input.depth, options.input.pair.right}, {options.out});
    PendingOutput output(options.out);

    const DepthSource source = findDepth(options.input);
    refuseInputAsOutput({source.depth}, {options.out});
    Input input = readInput(options.input, options.talk, source);
    throwIfCancelled();
    const Size size = pictureSize({input.photo.width, input.photo.height}, kLongestPageSide, false);
    const PagePicture picture = pagePicture(options.view, options.talk, size, 1.0, std::move(input));
    output.fill(media::pngBytes(picture.depth));
    throwIfCancelled();
    output.commit();
    std::printf("%s\n", media::elementAttributes(picture.settings).c_str());
}

std::function<void()> prepare(CommandLine* line) {
    const auto options = std::make_shared<ShapeOptions>();
    addInputOptions(line, &options->input);
    line->text("-o,--out", &options->out, "the shaped depth map, a .png file").called("FILE").required();
    addTalkOptions(line, &options->talk);
    addViewOptions(line, &options->view);
    addProfileOption(line, &options->view);
    addSaveProfileOption(line, options->view);
    return [options] { shape(*options); };
}

}  // namespace

Command shapeCommand() {
    return {"shape",
            "prepare a depth map for the web element, and print the attributes that go with it",
            {{"for <parallax-photo depth=\"shaped.png\">, from a photo and its depth map",
              "quorvane shape photo.jpg depth.png -o shaped.png"},
             {"with the depth inside a phone's photo", "quorvane shape portrait.jpg -o shaped.png"}},
            prepare};
}

}  // namespace quorvane::app
