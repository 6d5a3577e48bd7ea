#include "apps/quorvane/input/depth_source.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

#include "apps/quorvane/input/depth_command.h"
#include "apps/quorvane/input/neighbour.h"
#include "apps/quorvane/terminal/ended_by_signals.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/decoder/decoder.h"
#include "media/depth/anaglyph.h"
#include "media/depth/depth_model.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

/// The first remarks in brackets, shortened: what a file says of itself may be long. Empty without any.
std::string inShort(const std::vector<std::string>& remarks) {
    if (remarks.empty()) return "";
    constexpr size_t kMost = 3;
    constexpr size_t kLongest = 160;
    std::string text;
    for (size_t i = 0; i < std::min(kMost, remarks.size()); ++i)
        text += (i == 0 ? " (" : "; ") +
                (remarks[i].size() > kLongest ? remarks[i].substr(0, kLongest) + "..." : remarks[i]);
    if (remarks.size() > kMost) text += "; and " + std::to_string(remarks.size() - kMost) + " more faults";
    return text + ")";
}

// Several pixels for each cell that the doctor compares edges in.
constexpr int kPreviewSide = 1024;

template <typename Picture>
Size sizeOf(const Picture& image) {
    return {image.width, image.height};
}

/// What is enough of the photo, for the doctor too.
std::optional<Size> enoughOf(const std::string& file, const media::Contents& contents,
                             const std::string& name, const EnoughPhoto& enough) {
    if (!enough) return {};
    try {
        const media::PictureHeader header =
            media::decoder::readPictureHeader(contents.original ? contents.original->bytes : file, name);
        const Size least = enough({header.width, header.height});
        Size all = {std::max(least.width, kPreviewSide), std::max(least.height, kPreviewSide)};
        // Whether it lies as its header says is known only to what holds it.
        if (contents.original) {
            const Size turned = enough({header.height, header.width});
            all = {std::max(all.width, turned.width), std::max(all.height, turned.height)};
        }
        return all;
    } catch (const Error&) {
        // Whoever decodes it says what is wrong with it.
        return {};
    }
}

/// The photo of a file, the unblurred one where `contents` are given.
void decodePhotoInto(Input* input, const std::string& file, const media::Contents& contents,
                     const std::string& name, PhotoDetail detail, const EnoughPhoto& enough) {
    std::string remark;
    const auto take = [input](media::ShrunkPhoto photo) {
        input->photo = std::move(photo.shrunk);
        input->photo_size = {photo.header.width, photo.header.height};
    };
    if (detail == PhotoDetail::kPreview) {
        take(media::decoder::previewPhoto(file, contents, name, kPreviewSide, &remark));
    } else if (const std::optional<Size> least = enoughOf(file, contents, name, enough)) {
        take(media::decoder::decodePhotoAtLeast(file, contents, name, *least, &remark));
    } else {
        input->photo = media::decoder::decodePhoto(file, contents, name, &remark);
        input->photo_size = sizeOf(input->photo);
    }
    if (!remark.empty()) input->remarks.push_back(remark);
}

/// Both images as they are in their files; without the depth of an estimator.
Input decodeBoth(const InputOptions& options, const DepthSource& source, PhotoDetail detail,
                 const EnoughPhoto& enough) {
    const std::string& name = options.photo;
    Input input;
    switch (source.origin) {
        case DepthOrigin::kSideBySide: {
            media::SplitPicture split =
                media::decoder::decodeSideBySide(source.file, *options.depth_half, name);
            input.photo = std::move(split.photo);
            input.photo_size = sizeOf(input.photo);
            input.depth = std::move(split.depth);
            break;
        }
        case DepthOrigin::kInside: {
            decodePhotoInto(&input, source.file, source.contents, name, detail, enough);
            std::string remark;
            input.depth = media::decoder::decodeDepth(*source.contents.depth, name, &remark);
            if (!remark.empty()) input.remarks.push_back(remark);
            break;
        }
        case DepthOrigin::kCommand:
        case DepthOrigin::kModel:
            decodePhotoInto(&input, source.file, {}, name, PhotoDetail::kFull, {});
            break;
        case DepthOrigin::kGiven:
        case DepthOrigin::kNeighbour:
            decodePhotoInto(&input, source.file, {}, name, detail, enough);
            input.depth = media::decoder::decodeDepthMap(media::readPictureFile(source.depth), source.depth);
            break;
        case DepthOrigin::kPair: {
            PhotoOfPair read = readPair(source.file, *source.pair, name);
            input.photo = std::move(read.photo);
            input.photo_size = sizeOf(input.photo);
            input.depth = std::move(read.depth);
            input.remarks = std::move(read.remarks);
            break;
        }
        case DepthOrigin::kNone: break;
    }
    return input;
}

}  // namespace

DepthSource findDepth(const InputOptions& options) {
    if (options.depth_model.size > 0 && options.depth_model.file.empty())
        throw UsageError("--depth-size: goes with --depth-model");
    DepthSource source;
    endedBySignals([&] {
        source.file = media::readPictureFile(options.photo);
        source.contents = media::decoder::lookInside(source.file, options.photo);
        source.pair = findPair(options.pair, options.photo, source.contents);
    });
    if (!options.depth.empty()) {
        source.origin = DepthOrigin::kGiven;
        source.depth = options.depth;
    } else if (!options.depth_command.empty()) {
        source.origin = DepthOrigin::kCommand;
    } else if (!options.depth_model.file.empty()) {
        source.origin = DepthOrigin::kModel;
        source.depth = options.depth_model.file;
    } else if (options.depth_half) {
        source.origin = DepthOrigin::kSideBySide;
    } else if (options.pair.given()) {
        source.origin = DepthOrigin::kPair;
    } else if (source.contents.depth) {
        source.origin = DepthOrigin::kInside;
    } else {
        source.depth = findNeighbour(options.photo);
        if (!source.depth.empty())
            source.origin = DepthOrigin::kNeighbour;
        else if (source.pair)
            source.origin = DepthOrigin::kPair;
    }
    return source;
}

std::string textOf(const media::Finding& finding) {
    std::string turns;
    for (const media::Turn turn : finding.turns)
        turns += (turns.empty() ? "; --rotate-depth " : " or ") + std::string(media::kTurnWords[turn].name);
    std::string text = finding.text + turns + (turns.empty() ? "" : " turns it");
    if (finding.inverting)
        text += *finding.inverting ? "; --invert-depth=yes inverts it" : "; --invert-depth=no leaves it";
    return text + (finding.filling ? "; --holes fill fills it" : "");
}

std::string noDepthInside(const media::Contents& contents) {
    return "no depth found inside" + inShort(contents.remarks);
}

std::string noDepthAnywhere(const media::Contents& contents, const std::string& photo) {
    return noDepthInside(contents) + ", nor next to it as " + neighbourNames(photo) +
           "; give a portrait photo as the phone stored it (messengers and editors strip the depth), "
           "a depth map as DEPTH, a second view (--right, --pair), or what estimates it (--depth-model, "
           "--depth-cmd)";
}

namespace {

/// The photo's depth by the network that the options name. Throws Error, and Cancelled after a signal.
media::ModelEstimate estimateDepth(const ModelOptions& options, const media::RgbImage& photo) {
    return media::DepthModel(options.file, options.size).estimate(photo);
}

}  // namespace

Input readInput(const InputOptions& options, const DepthSource& source, PhotoDetail detail,
                const EnoughPhoto& enough) {
    const std::string& name = options.photo;
    if (source.origin == DepthOrigin::kNone) {
        // A damaged photo is told as such first.
        endedBySignals([&] {
            if (media::isAnaglyph(media::decoder::decodePhoto(source.file, source.contents, name, nullptr)))
                throw Error(name + ": " + anaglyphLine());
        });
        throw Error(name + ": " + noDepthAnywhere(source.contents, name));
    }
    Input input = endedBySignals([&] { return decodeBoth(options, source, detail, enough); });
    if (source.origin == DepthOrigin::kCommand)
        input.depth = estimateDepth(options.depth_command, input.photo);
    double polarity_confidence = 1.0;
    if (source.origin == DepthOrigin::kModel) {
        media::ModelEstimate estimate = estimateDepth(options.depth_model, input.photo);
        input.depth = std::move(estimate.depth);
        input.belief = std::move(estimate.belief);
        polarity_confidence = estimate.polarity_confidence;
    }
    endedBySignals([&] {
        if (options.depth_turn) {
            input.depth.plane = media::turned(input.depth.plane, *options.depth_turn);
            input.depth.known = media::turned(input.depth.known, *options.depth_turn);
        }
        const bool inside = source.origin == DepthOrigin::kInside;
        media::DepthKnowledge known;
        const bool made_here = source.origin == DepthOrigin::kModel || source.origin == DepthOrigin::kPair;
        // Halves of one picture lie as they are, and so does what is made of the photo here.
        known.orientation = (inside && source.contents.depth->orientation_known) || made_here ||
                            source.origin == DepthOrigin::kSideBySide || options.depth_turn;
        if (options.invert_depth) known.larger_is_nearer = !*options.invert_depth;
        if ((inside || made_here) && !options.invert_depth) known.larger_is_nearer = true;
        known.holes = options.holes;
        // What is made here has an answer everywhere: what stands apart is a sky.
        if (made_here && known.holes == media::Holes::kAuto) known.holes = media::Holes::kKeep;
        known.name = source.depth;
        if (options.doctor) {
            input.findings = media::examine(input.photo, known, &input.depth, &input.polarity);
            media::spreadLevels(&input.depth);
            if (polarity_confidence < 0.5 && !options.invert_depth) {
                input.polarity.confidence = polarity_confidence;
                input.polarity.doubtful = true;
                input.findings.push_back({media::FindingKind::kPolarity,
                                          polarity_confidence,
                                          false,
                                          "not certain which end is near: the photo speaks for the network's "
                                          "larger values being the farther ones",
                                          {},
                                          true});
            }
        } else if (options.invert_depth.value_or(false)) {
            for (float& sample : input.depth.plane.samples) sample = 255.0f - sample;
            input.polarity.larger_is_nearer = false;
            input.polarity.inverted = true;
        }
        // What the container says has been done while it was decoded.
        if (inside && !source.contents.depth->larger_is_nearer) {
            input.polarity.larger_is_nearer = !input.polarity.larger_is_nearer;
            input.polarity.inverted = !input.polarity.inverted;
        }
    });
    return input;
}

Input readInput(const InputOptions& options, const Talk& talk, const DepthSource& source,
                const EnoughPhoto& enough) {
    if (source.origin == DepthOrigin::kNeighbour && !talk.quiet)
        std::fprintf(stderr, "depth: %s, found next to the photo\n", printable(source.depth).c_str());
    Input input = readInput(options, source, PhotoDetail::kFull, enough);
    if (!talk.quiet) {
        for (const std::string& remark : input.remarks)
            std::fprintf(stderr, "%s: %s\n", source.origin == DepthOrigin::kPair ? "pair" : "inside",
                         printable(remark).c_str());
        for (const media::Finding& finding : input.findings)
            std::fprintf(stderr, "depth: %s\n", printable(textOf(finding)).c_str());
    }
    if (talk.verbosity == 0) return input;

    const bool inside = source.origin == DepthOrigin::kInside;
    const media::Contents& contents = source.contents;
    std::string from = source.depth;
    if (inside) from = contents.depth->where + " (" + contents.depth->container + ")";
    if (source.origin == DepthOrigin::kCommand) from = options.depth_command[0];
    if (source.origin == DepthOrigin::kSideBySide) from = "a half of the photo";
    if (source.origin == DepthOrigin::kPair)
        from = source.pair->left.where + " and " + source.pair->right.where;
    std::fprintf(stderr, "photo    %s%s: %d x %d\n", printable(options.photo).c_str(),
                 inside && contents.original
                     ? printable(", the unblurred one, " + contents.original->where).c_str()
                     : "",
                 input.photo_size.width, input.photo_size.height);
    std::fprintf(stderr, "depth    %s: %d x %d, %d bit%s%s\n", printable(from).c_str(),
                 input.depth.plane.width, input.depth.plane.height, input.depth.bits,
                 options.doctor ? ", spread over its range" : "",
                 input.polarity.inverted ? ", inverted" : "");
    if (!input.belief.empty()) std::fprintf(stderr, "model    %s\n", printable(input.belief).c_str());
    return input;
}

media::RgbImage readPhoto(const InputOptions& options, const DepthSource& source) {
    const bool inside = source.origin == DepthOrigin::kInside;
    return endedBySignals([&] {
        return media::decoder::decodePhoto(source.file, inside ? source.contents : media::Contents(),
                                           options.photo, nullptr);
    });
}

}  // namespace quorvane::app
