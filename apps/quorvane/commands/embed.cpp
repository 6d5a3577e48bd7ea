#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <utility>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/input/depth_source.h"
#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/decoder/decoder.h"
#include "media/embedding/photo_with_depth_file.h"
#include "media/picture/picture_file.h"
#include "media/picture/resample.h"
#include "media/picture/turn.h"
#include "system/cancel.h"
#include "system/pending_output.h"

namespace quorvane::app {
namespace {

constexpr int kQuality = 92;  // of a photo that has to be coded anew

struct EmbedOptions {
    InputOptions input;
    Talk talk;
    std::string out;
    std::optional<double> near, far;  ///< metres
};

/// Whether the photo becomes a HEIC file; else a JPEG.
bool isHeic(const std::string& out) {
    std::string extension = std::filesystem::path(out).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == ".heic") return true;
    if (extension == ".jpg" || extension == ".jpeg") return false;
    throw UsageError("-o " + out + ": a photo with depth inside is a .jpg or a .heic file");
}

std::optional<media::DepthRange> rangeOf(const EmbedOptions& options) {
    if (!options.near && !options.far) return std::nullopt;
    if (!options.near || !options.far || *options.near >= *options.far)
        throw UsageError("--near and --far go together, and near is less than far");
    return media::DepthRange{*options.near, *options.far};
}

/// The turn that makes another one undone.
media::Turn undoing(media::Turn turn) {
    media::Turn other = 0;
    while (media::followedBy(turn, other) != 0) ++other;
    return other;
}

/// The photo's bytes as they are where it is a JPEG, with the depth map turned as they lie; else coded anew.
std::string jpegFile(const DepthSource& source, const EmbedOptions& options, const Input& input,
                     const std::optional<media::DepthRange>& range) {
    const media::DepthMap& depth = input.depth;
    if (source.contents.file_kind != "JPEG")
        return media::jpegWithDepth(media::jpegBytes(input.photo, kQuality), depth.plane, depth.bits, range);
    const std::string jpeg = media::decoder::bareJpeg(source.file, options.input.photo);
    const media::Turn upright = media::turnOfExif(source.contents.orientation);
    return media::jpegWithDepth(jpeg, media::turned(depth.plane, undoing(upright)), depth.bits, range);
}

void embed(const EmbedOptions& options) {
    const bool heic = isHeic(options.out);
    const std::optional<media::DepthRange> range = rangeOf(options);
    if (heic && range) throw UsageError("--near, --far: a .heic says nothing of distances; .jpg does");
    refuseStandardOutput({options.out});
    refuseInputAsOutput({options.input.photo, options.input.depth, options.input.pair.right}, {options.out});
    PendingOutput output(options.out);

    const DepthSource source = findDepth(options.input);
    refuseInputAsOutput({source.depth}, {options.out});
    const Input input = readInput(options.input, options.talk, source);
    throwIfCancelled();
    if (heic) {
        const Size size = {input.depth.plane.width, input.depth.plane.height};
        output.fill(media::heicWithDepth(input.photo, media::toBytes(input.depth.plane, size), kQuality));
    } else {
        output.fill(jpegFile(source, options, input, range));
    }
    throwIfCancelled();
    output.commit();
}

std::function<void()> prepare(CommandLine* line) {
    const auto options = std::make_shared<EmbedOptions>();
    addInputOptions(line, &options->input);
    line->text(
            "-o,--out", &options->out,
            "a .jpg with the depth map as Dynamic Depth and as GDepth: the photo's own bytes where it is a "
            "JPEG, but for XMP and what is appended; or a .heic with the depth map as an auxiliary picture "
            "of "
            "8 bits, coded anew")
        .called("FILE")
        .required();
    const auto distance = [&](const char* name, std::optional<double>* to, const char* help) {
        line->parsed(
                name,
                [name, to](const std::string& text) {
                    double metres = 0.0;
                    if (!parseNumber(text, &metres) || !(metres > 0.0 && metres <= 1e6))
                        throw UsageError(std::string(name) + " " + text +
                                         ": metres above 0 are wanted, 1000000 at most");
                    *to = metres;
                },
                help)
            .called("METRES");
    };
    distance("--near", &options->near, "how far away the nearest level is; goes with --far, in a .jpg");
    distance("--far", &options->far, "how far away the farthest level is");
    addTalkOptions(line, &options->talk);
    return [options] { embed(*options); };
}

}  // namespace

Command embedCommand() {
    return {"embed",
            "write a photo with its depth map inside, as phones do",
            {{"a portrait photo from a photo and its depth map",
              "quorvane embed photo.jpg depth.png -o portrait.jpg"},
             {"as HEIC", "quorvane embed photo.jpg depth.png -o portrait.heic"},
             {"what one phone has stored, for others", "quorvane embed portrait.heic -o portrait.jpg"}},
            prepare};
}

}  // namespace quorvane::app
