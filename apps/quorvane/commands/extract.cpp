#include <cstdio>
#include <memory>
#include <optional>
#include <utility>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/input/depth_source.h"
#include "apps/quorvane/terminal/ended_by_signals.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/decoder/decoder.h"
#include "media/embedded/bytes.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/pending_output.h"

namespace quorvane::app {
namespace {

struct ExtractOptions {
    std::string file;
    std::string depth;  ///< the file to write
    std::string photo;  ///< the file to write, or empty
    ModelOptions model;
    PairOptions pair;
    bool raw = false;
};

/// The plane's bytes as the file holds them; says what they are where they do not say it themselves.
std::string rawBytes(const media::EmbeddedDepth& depth, const std::string& name) {
    if (std::holds_alternative<media::DepthHeifItem>(depth.plane))
        throw Error(name +
                    ": its depth is no file of its own but a part of the HEIC file; without "
                    "--raw it is written as PNG");
    if (const auto* samples = std::get_if<media::DepthSamples>(&depth.plane))
        std::fprintf(stderr, "raw depth: %d x %d samples of %s, rows from the top\n", samples->width,
                     samples->height, samples->bits == 8 ? "8 bit" : "16 bit, lower byte first");
    return std::string(media::planeBytes(depth));
}

/// The unblurred photo's file, or the part of `file` that viewers show.
std::string photoBytes(const std::string& file, const media::Contents& contents) {
    if (contents.original) return contents.original->bytes;
    for (const media::InnerImage& image : contents.images)
        if (image.role == media::ImageRole::kPhoto) return file.substr(0, image.bytes);
    return file;
}

/// Whether the left view of a pair is a picture file of its own, or the photo's.
bool isFile(const media::StereoPair& pair) { return !pair.layout && pair.left.heif_item == 0; }

/// The same two outputs from a pair.
void extractFromPair(const ExtractOptions& options, const DepthSource& source) {
    const media::StereoPair& pair = *source.pair;
    if (options.raw)
        throw UsageError(
            "--raw: a stereo pair's depth is made from its views; without --raw it is written as .png");
    if (!options.photo.empty() && !isFile(pair) && !media::endsWith(options.photo, ".png"))
        throw UsageError("--photo " + options.photo +
                         ": the left view is a part of the photo's file; it is written as .png");
    const PhotoOfPair read = endedBySignals([&] { return readPair(source.file, pair, options.file); });
    for (const std::string& remark : read.remarks)
        std::fprintf(stderr, "pair: %s\n", printable(remark).c_str());
    PendingOutput depth_file(options.depth);
    depth_file.fill(media::grayPng(read.depth.plane, read.depth.bits));
    throwIfCancelled();
    if (!options.photo.empty()) {
        if (isFile(pair)) {
            PendingOutput photo_file(options.photo);
            photo_file.fill(pair.left.bytes.empty() ? photoBytes(source.file, source.contents)
                                                    : pair.left.bytes);
            photo_file.commit();
        } else {
            media::writePng(read.photo, options.photo);
        }
    }
    depth_file.commit();
}

void extract(const ExtractOptions& options) {
    refuseStandardOutput({options.depth, options.photo});
    if (!options.raw)
        requirePng(options.depth,
                   "-o " + options.depth + ": the depth is written as .png (or as it is, with --raw)");
    refuseSameOutput(options.depth, options.photo, "photo and depth map");
    refuseInputAsOutput({options.file, options.model.file, options.pair.right},
                        {options.depth, options.photo});
    // Asked before any work is done.
    for (const std::string& path : {options.depth, options.photo})
        if (!path.empty()) const PendingOutput place(path);

    InputOptions input;
    input.photo = options.file;
    input.depth_model = options.model;
    input.pair = options.pair;
    const DepthSource source = findDepth(input);
    const bool estimated = source.origin == DepthOrigin::kModel;
    if (source.pair && !estimated && (options.pair.given() || !source.contents.depth))
        return extractFromPair(options, source);
    const std::string& file = source.file;
    // A network sees the photo that the file shows.
    const media::Contents contents = estimated ? media::Contents() : source.contents;
    std::string bytes;
    if (estimated) {
        bytes = media::grayPng(readInput(input, Talk(), source).depth.plane, 16);
    } else if (!contents.depth) {
        throw Error(
            options.file + ": " + noDepthInside(contents) +
            "; give a portrait photo as the phone stored it (messengers and editors strip the depth), a "
            "second view (--right, --pair), or what estimates it (--depth-model)");
    } else if (const media::EmbeddedDepth& depth = *contents.depth; options.raw) {
        bytes = rawBytes(depth, options.file);
    } else {
        media::DepthMap map =
            endedBySignals([&] { return media::decoder::decodeDepth(depth, options.file, nullptr); });
        // A distance of 8 bit becomes more steps of 1 / distance than 8 bit hold.
        const bool deep = map.bits > 8 || depth.kind == media::DepthKind::kLinearRange;
        if (deep) media::spread(&map.plane);
        bytes = media::grayPng(map.plane, deep ? 16 : 8);
    }

    // Both are filled before either is moved to its place.
    PendingOutput depth_file(options.depth);
    depth_file.fill(bytes);
    std::optional<PendingOutput> photo_file;
    if (!options.photo.empty()) {
        photo_file.emplace(options.photo);
        photo_file->fill(photoBytes(file, contents));
    }
    throwIfCancelled();
    depth_file.commit();
    if (photo_file) photo_file->commit();
}

std::function<void()> prepare(CommandLine* line) {
    const auto options = std::make_shared<ExtractOptions>();
    line->text("PHOTO", &options->file, "a photo with depth or two views inside, or any with --depth-model")
        .required();
    line->text("-o,--out", &options->depth,
               "a gray .png: upright, larger = nearer; of 16 bit where the photo's file has more than 8 or "
               "measures distances, which are spread over the range they use, and where two views give the "
               "depth")
        .called("FILE")
        .required();
    line->text(
            "--photo", &options->photo,
            "also write the unblurred photo inside to FILE, its bytes as they are; where there is none, the "
            "photo itself: of a JPEG without what is appended to it, else the whole file; of two views the "
            "left "
            "one, as .png where it is a part of the file")
        .called("FILE");
    const Option& model = addModelOptions(line, &options->model);
    addPairOptions(line, &options->pair, {&model});
    line->flag(
            "--raw", &options->raw,
            "write the depth's bytes as they are in the photo's file: a picture file, or bare samples, with "
            "their size said on standard error")
        .excludes(model);
    return [options] { extract(*options); };
}

}  // namespace

Command extractCommand() {
    return {"extract",
            "write the depth inside a photo, or an estimate of it, to a file of its own",
            {{"the depth inside a phone's photo, as a file", "quorvane extract portrait.jpg -o depth.png"},
             {"and the photo without the phone's blur",
              "quorvane extract portrait.jpg -o depth.png --photo unblurred.jpg"},
             {"the depth that two views give", "quorvane extract left.jpg --right right.jpg -o depth.png"},
             {"the depth of any photo, by a network of your own",
              "quorvane extract photo.jpg --depth-model model.onnx -o depth.png"}},
            prepare};
}

}  // namespace quorvane::app
