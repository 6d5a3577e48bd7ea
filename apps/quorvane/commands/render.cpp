#include "apps/quorvane/commands/render.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/commands/output_guard.h"
#include "apps/quorvane/commands/profile_options.h"
#include "apps/quorvane/drawing/clip_drawing.h"
#include "apps/quorvane/drawing/encoding_options.h"
#include "apps/quorvane/drawing/fit_options.h"
#include "apps/quorvane/drawing/fitting.h"
#include "apps/quorvane/drawing/mesh.h"
#include "apps/quorvane/drawing/motion_timing.h"
#include "apps/quorvane/drawing/page.h"
#include "apps/quorvane/drawing/picture_options.h"
#include "apps/quorvane/drawing/stereo_options.h"
#include "apps/quorvane/drawing/stereo_photo.h"
#include "apps/quorvane/input/depth_source.h"
#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/progress.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "media/clip/share_page.h"
#include "media/decoder/decoder.h"
#include "system/cancel.h"
#include "system/error.h"
#include "system/pending_output.h"
#include "system/standard_streams.h"

namespace quorvane::app {
namespace {

using media::OutputKind;

constexpr int kNoLimit = 1 << 30;
constexpr int kLargestFrame = 16384;  // pixels a side

// A .gif is large for what it shows.
constexpr int kLongestGifSide = 480;
constexpr FrameCount kUsualGif = {80, 20};
constexpr int64_t kSurprisingGif = 20'000'000;  // bytes

/// Whether it shows one moment.
bool standsStill(OutputKind kind) { return kind == OutputKind::kStill || kind == OutputKind::kPair; }

struct RenderOptions {
    InputOptions input;
    ViewOptions view;
    Talk talk;
    std::string out;
    EncodingOptions encoding;
    FitOptions fit;
    const media::Place* place = nullptr;  ///< from `fit`
    std::optional<int64_t> limit;         ///< bytes of the file, from `fit`
    PictureOptions picture;
    ClipTiming timing;
    FrameCount count;  ///< from `timing`
    Position at;
    StereoOptions stereo;
    bool force = false;
    bool stats = false;
    std::string title;  ///< of a page, as `alt`; empty: a text that fits all
    std::string alt;
    std::vector<const Option*> of_pages;   ///< the options that say nothing of other pictures
    std::vector<const Option*> of_frames;  ///< those that say nothing of a page
    std::vector<const Option*> of_stereo;  ///< those that say nothing where one view is drawn
    std::vector<const Option*>
        of_movement;  ///< those that say nothing of a mesh, as do of_frames and of_stereo
    std::vector<const Option*> of_motion;  ///< those that frame a still too, unless its frame is given
};

/// What a wiggle has where nothing else is asked for: 8 frames a second, as many seconds of them as other
/// clips have in a file that players show once, and two at any rate in one that repeats itself.
FrameCount usualWiggle(const media::OutputFormat& format, const ClipTiming& timing) {
    constexpr int kRate = 8, kSeconds = 4;
    if (format.shown_once) return {kRate * kSeconds, kRate};
    return {2, timing.fps.value_or(kRate)};
}

/// What another clip has where nothing else is asked for.
FrameCount usualCount(const media::OutputFormat& format, const media::Place* place) {
    if (place != nullptr && place->fps > 0)
        return {static_cast<int>(std::lround(place->seconds * place->fps)), place->fps};
    return format.word == "gif" ? kUsualGif : FrameCount();
}

bool isWiggle(const RenderOptions& options) {
    return options.stereo.layout && options.stereo.layout->kind == StereoKind::kWiggle;
}

/// Counts the frames, and gives the motion its timing.
void settle(const media::OutputFormat& format, RenderOptions* options) {
    const MotionTiming& timing = options->timing.motion;
    Motion& motion = options->picture.motion;
    const bool wiggles = isWiggle(*options);
    options->count = wiggles ? countFrames(options->timing, 0.0, usualWiggle(format, options->timing))
                             : countFrames(options->timing, ownSeconds(motion, timing),
                                           usualCount(format, options->place));
    const bool moves = format.kind == OutputKind::kClip || format.kind == OutputKind::kFolder;
    if (moves && !wiggles) motion = timed(motion, timing, options->count);
}

/// Refuses what can be refused before the images are read, and settles the rest. Returns what is to be
/// written.
const media::OutputFormat& check(RenderOptions* asked) {
    const RenderOptions& options = *asked;
    refuseTwoWays(options.view);
    if (std::error_code ignored; std::filesystem::is_directory(options.input.photo, ignored))
        throw UsageError(options.input.photo + ": a folder; quorvane batch renders the photos in it");
    refuseStandardOutput({options.view.timings});
    if (options.out == kStandardOutput && isatty(STDOUT_FILENO) == 1)
        throw UsageError(
            "-o -: standard output is a terminal; lead it to a program or a file, as in | ffplay -");
    asked->place = settlePlace(options.fit, options.out, &asked->encoding, &asked->picture);
    const media::OutputFormat& format = parseOutput(options.out, options.encoding);
    asked->limit = limitOf(options.fit, options.place, options.out, format);
    settle(format, asked);
    asked->view.moves = format.kind == OutputKind::kClip;
    const auto stereo = stereoFor(options.stereo, format);
    if (stereo && stereo->kind == StereoKind::kWiggle && options.count.frames % 2 == 1)
        throw UsageError("--frames " + std::to_string(options.count.frames) +
                         ": a wiggle shows two views in turn, so it has an even number of frames");
    if (hasEvenSides(format) && options.picture.size && options.picture.size->exact) {
        const Size size = *options.picture.size->exact, even = pictureSize(size, kNoLimit, true);
        if (even != size)
            throw UsageError("--size " + textOf(size) + ": " + std::string(format.name) +
                             " has even sides, such as " + textOf(even));
    }
    if (format.kind == OutputKind::kPage && options.picture.motion.names.empty())
        throw UsageError("motion " + options.picture.motion.text +
                         ": a page moves by names, such as eight or sway+zoom");
    return format;
}

/// Prints a note that names those of `idle` that were given.
void noteGiven(const std::vector<const Option*>& idle, const RenderOptions& options, const char* what,
               const std::string& why) {
    std::string names;
    for (const Option* option : idle) {
        const bool right = option->name() == "--frames" && options.count.frames == 1;
        if (option->given() && !right) names += (names.empty() ? "" : ", ") + option->name();
    }
    if (!names.empty()) std::fprintf(stderr, "%s: %s: of no effect; %s\n", what, names.c_str(), why.c_str());
}

/// Prints a note that names the options which change nothing in what is written.
void noteIdleOptions(const RenderOptions& options, OutputKind kind) {
    std::vector<const Option*> idle = options.timing.options;
    if (kind == OutputKind::kPage) {
        for (const auto* more : {&options.of_frames, &options.of_stereo, &options.view.of_drawing,
                                 &options.encoding.of_pictures})
            idle.insert(idle.end(), more->begin(), more->end());
        return noteGiven(idle, options, "page", "it draws itself while it is watched");
    }
    noteGiven(options.of_pages, options, "picture",
              "a page (" + media::extensionsOf(OutputKind::kPage, " or ") + ") has texts");
    if (kind == OutputKind::kMesh) {
        for (const auto* more : {&options.of_frames, &options.of_stereo, &options.of_movement})
            idle.insert(idle.end(), more->begin(), more->end());
        return noteGiven(idle, options, "mesh", "other programs choose the view and move it");
    }
    if (!options.stereo.layout && kind != OutputKind::kPair)
        noteGiven(options.of_stereo, options, "picture", "one view is drawn");
    if (isWiggle(options)) noteGiven(options.of_motion, options, "wiggle", "it goes from eye to eye");
    if (!standsStill(kind)) return;
    if (frameGiven(options.view)) idle.insert(idle.end(), options.of_motion.begin(), options.of_motion.end());
    noteGiven(idle, options, "still",
              "a clip (" + media::extensionsOf(OutputKind::kClip, " or ") + ") or a folder/ has frames");
}

/// Throws Error where `inputs` would be overwritten.
void keep(const std::vector<std::string>& inputs, const RenderOptions& options,
          const media::OutputFormat& format) {
    refuseInputAsOutput(inputs, {options.out, options.view.timings});
    if (format.kind == OutputKind::kFolder) refuseInputAsFrame(inputs, options.out);
}

/// Pixels of the longer side, where no other are asked for.
int usualLongest(const RenderOptions& options, const media::OutputFormat& format) {
    if (options.place != nullptr) return options.place->longest;
    if (format.kind == OutputKind::kPage || format.kind == OutputKind::kMesh) return kLongestPageSide;
    return format.word == "gif" ? kLongestGifSide : kLongestSide;
}

/// Of one view.
Size chooseSize(const RenderOptions& options, Size photo, const media::OutputFormat& format) {
    const int usual = usualLongest(options, format);
    const bool even = hasEvenSides(format);
    if (!options.stereo.layout) return sizeOf(options.picture, photo, usual, even);
    const Stereo& stereo = *options.stereo.layout;
    const Size view = sizeOf(options.picture, photo, usualLongestView(stereo, photo, usual), even);
    return joinableSize(stereo, view, even);
}

/// For frames of that size.
media::ClipSettings clipSettings(const RenderOptions& options, Size size) {
    return {size, options.count.fps, options.force, options.encoding.encoder, -1, options.timing.motion.once};
}

/// The codec's own number.
int qualityFor(const media::OutputFormat& format, const EncodingOptions& options) {
    const media::Codec& codec = codecFor(format, options.encoder);
    return static_cast<int>(ownQuality(codec, options.encoder.quality.value_or(codec.usual_quality)));
}

std::unique_ptr<media::ClipWriter> openOutput(const RenderOptions& options, const media::OutputFormat& format,
                                              Size size, int standard_output) {
    media::ClipSettings settings = clipSettings(options, size);
    settings.standard_output = standard_output;
    return media::openClip(options.out, format, settings);
}

std::vector<Position> positionsFor(const RenderOptions& options, const media::OutputFormat& format) {
    if (standsStill(format.kind)) return {options.at};
    return loopAround(options.at, options.picture.motion, options.picture.amount, options.count.frames);
}

/// Where the picture is seen from: a still is framed as the motion's frames are, so that it matches them and
/// other stills.
std::vector<Position> pathFor(const RenderOptions& options, const media::OutputFormat& format) {
    const bool is_still = standsStill(format.kind);
    std::vector<Position> path = pathAround(is_still ? Position() : options.at, options.picture.motion,
                                            options.picture.amount, is_still ? 1 : options.count.frames);
    if (is_still) path.push_back(options.at);
    return path;
}

Route routeFor(const RenderOptions& options, const media::OutputFormat& format,
               const std::optional<Stereo>& stereo) {
    const Route mono = {positionsFor(options, format), pathFor(options, format)};
    return stereo ? stereoRoute(mono, *stereo, options.at, standsStill(format.kind)) : mono;
}

/// The page that moves by itself as the motion goes while nobody moves it.
media::SharePage pageOf(const RenderOptions& options, Size size, Input input) {
    constexpr const char* kAnyPhoto = "A photo in depth";
    PagePicture picture =
        pagePicture(options.view, options.talk, size, options.picture.amount, std::move(input));
    media::SharePage page;
    page.photo = std::move(picture.photo);
    page.keeps_size = options.picture.size.has_value();
    page.depth = std::move(picture.depth);
    page.alt = options.alt.empty() ? kAnyPhoto : options.alt;
    page.title = options.title.empty() ? page.alt : options.title;
    page.motion = "pointer tilt keys";
    for (const std::string& name : options.picture.motion.names)
        if (name != "still") page.motion += " " + name;
    page.settings = std::move(picture.settings);
    return page;
}

/// A view that is ready to draw from all places of the route.
View readyView(const RenderOptions& options, const std::optional<Stereo>& stereo, Size size,
               const Route& route, DepthSource source, Input input, StageTimes* times) {
    View view = times->measure(Stage::kSetUp, [&] { return View(options.view, options.talk, size); });
    const PlannedInput planned = times->measure(Stage::kFit, [&] {
        const auto whole = [&] { return readPhoto(options.input, source); };
        return view.plan({std::move(input.photo), input.photo_size, whole}, input.depth.plane, route.path);
    });
    times->measure(Stage::kUpload, [&] {
        view.upload(planned);
        if (stereo && showsDepth(*stereo)) view.keepDepth(planned, input.depth.plane);
    });
    return view;
}

struct Drawn {
    int frames;
    int writers;  ///< threads
};

/// Draws all frames, their views of `size`, and gives them to `writer`, which has finished then.
Drawn drawClip(const RenderOptions& options, const media::OutputFormat& format, Size size, DepthSource source,
               Input input, media::ClipWriter* writer, StandardOutputTo* timings, StageTimes* times) {
    const std::optional<Stereo> stereo = stereoFor(options.stereo, format);
    const Route route = routeFor(options, format, stereo);
    View view = readyView(options, stereo, size, route, std::move(source), std::move(input), times);
    const int frames = static_cast<int>(route.positions.size());
    const int views = stereo ? static_cast<int>(viewsAround(*stereo, {}).size()) : 1;
    const Writers writers = planWriters(format, frames, size, view.supersample(), views);
    Progress progress(frames, options.talk.quiet);
    // Timing lines and dumps are of pictures that are drawn.
    const bool all = !options.view.timings.empty() || dumpsFrames();
    drawFrames(route.positions, stereo, size, writers, all ? Repeats::kDrawn : Repeats::kKept, &view, writer,
               times, [&progress](int made) { progress.step(made); });
    timings->require();
    times->measure(Stage::kEncode, [&] { writer->finish(); });
    return {frames, writers.threads};
}

/// The size of a picture, which has several views where it is stereo. Throws UsageError where it is too
/// large.
Size frameSize(const std::optional<Stereo>& stereo, Size view) {
    const Size size = stereo ? joinedSize(*stereo, view) : view;
    if (size.width > kLargestFrame || size.height > kLargestFrame)
        throw UsageError("--stereo: views of " + textOf(view) + " make a picture of " + textOf(size) +
                         ", whose sides are at most " + std::to_string(kLargestFrame) +
                         "; --size makes them smaller");
    return size;
}

/// As drawClip, as often as it takes for a file that fits.
Drawn drawFitting(const RenderOptions& asked, const RenderOptions& options, const media::OutputFormat& format,
                  Size size, const DepthSource& source, const Input& input, StandardOutputTo* timings,
                  StageTimes* times) {
    const std::optional<Stereo> stereo = stereoFor(options.stereo, format);
    const bool even = hasEvenSides(format);
    const auto size_at = [&](int longest) {
        const Size smaller = scaledPictureSize(size, longest, even);
        return stereo ? joinableSize(*stereo, smaller, even) : smaller;
    };
    Drawn drawn = {0, 1};
    const auto draw = [&](Size now, int fps) {
        RenderOptions again = options;
        again.picture.motion = asked.picture.motion;
        if (fps != options.count.fps) {
            again.timing.seconds = static_cast<double>(options.count.frames) / options.count.fps;
            again.timing.fps = fps;
        }
        settle(format, &again);
        // What there is to say of the picture has been said.
        if (drawn.frames > 0) again.talk = {0, true};
        std::unique_ptr<media::KeptClip> clip =
            media::keepClip(options.out, format, clipSettings(again, frameSize(stereo, now)));
        const Drawn more = drawClip(again, format, now, source, input, clip.get(), timings, times);
        drawn = {drawn.frames + more.frames, more.writers};
        return clip;
    };
    drawToFit(
        {options.out, format, options.encoding.encoder, *options.limit, size, options.count.fps, size_at,
         options.encoding.encoder.quality.has_value(), options.picture.size.has_value(),
         options.timing.fps || options.timing.frames || isWiggle(options), options.fit.limit.has_value()},
        options.talk, draw);
    return drawn;
}

/// Says so where a .gif has become larger than most people expect.
void noteLargeGif(const RenderOptions& options) {
    std::error_code unknown;
    const auto bytes = static_cast<int64_t>(std::filesystem::file_size(options.out, unknown));
    if (!unknown && bytes > kSurprisingGif)
        std::fprintf(stderr, "gif: %s; --fit 8MB makes it fit, and an .mp4 or .webp shows more in less\n",
                     textOfBytes(bytes).c_str());
}

/// Tells somebody at a terminal, who may have meant a clip, what hundreds of pictures are about to become.
void noteNewFolder(const RenderOptions& options) {
    std::error_code ignored;
    if (isatty(STDERR_FILENO) == 0 || options.out.back() == '/' ||
        std::filesystem::exists(options.out, ignored))
        return;
    std::fprintf(stderr, "frames: %s becomes a folder of %d pictures; a clip has a name such as %s.mp4\n",
                 printable(options.out).c_str(), options.count.frames, printable(options.out).c_str());
}

Rendered render(const RenderOptions& asked) {
    RenderOptions options = asked;
    const media::OutputFormat& format = check(&options);
    const std::optional<Stereo> stereo = stereoFor(options.stereo, format);
    refuseSameOutput(options.out, options.view.timings, "picture and timings");
    keep({options.input.photo, options.input.depth, options.input.pair.right}, options, format);
    const bool into_folder = format.kind == OutputKind::kFolder;
    if (options.out != kStandardOutput)
        requirePlace(options.out, into_folder, options.force, "the numbered frames");
    if (into_folder && !options.talk.quiet) noteNewFolder(options);

    StageTimes times;
    DepthSource source = times.measure(Stage::kDecode, [&] { return findDepth(options.input); });
    keep({source.depth}, options, format);
    StandardOutputTo timings(options.view.timings);
    const auto enough = [&](Size photo) {
        // A page is given all that it may show.
        return format.kind == OutputKind::kPage || format.kind == OutputKind::kMesh
                   ? photo
                   : enoughPhoto(options.view, chooseSize(options, photo, format), photo,
                                 closestZoom(pathFor(options, format)));
    };
    Input input =
        times.measure(Stage::kDecode, [&] { return readInput(options.input, options.talk, source, enough); });
    throwIfCancelled();
    Rendered rendered = {source.origin, source.depth, input.findings};

    const Size size = chooseSize(options, input.photo_size, format);
    // Some files are made whole, others picture by picture.
    const auto write_whole = [&](const auto& make_bytes) {
        PendingOutput output(options.out, timings.descriptor());
        output.fill(make_bytes());
        throwIfCancelled();
        output.commit();
        if (!options.talk.quiet) noteIdleOptions(options, format.kind);
        return rendered;
    };
    if (format.kind == OutputKind::kPage)
        return write_whole([&] { return media::sharePage(pageOf(options, size, std::move(input))); });
    if (format.kind == OutputKind::kMesh)
        return write_whole([&] {
            const PagePicture picture =
                pagePicture(options.view, options.talk, size, options.picture.amount, std::move(input));
            return media::glbFile(
                photoMesh(picture, options.view.orientation, qualityFor(format, options.encoding)));
        });
    if (format.kind == OutputKind::kPair)
        return write_whole([&] {
            const Route route = routeFor(options, format, stereo);
            View view = readyView(options, stereo, size, route, std::move(source), std::move(input), &times);
            return stereoPhoto(&view, *stereo, route.positions.front(), size, &times, format,
                               qualityFor(format, options.encoding));
        });
    Drawn drawn = {};
    if (options.limit) {
        drawn = drawFitting(asked, options, format, size, source, input, &timings, &times);
    } else {
        const std::unique_ptr<media::ClipWriter> writer = times.measure(Stage::kSetUp, [&] {
            return openOutput(options, format, frameSize(stereo, size), timings.descriptor());
        });
        drawn = drawClip(options, format, size, std::move(source), std::move(input), writer.get(), &timings,
                         &times);
    }
    timings.commit();
    if (!options.talk.quiet) {
        noteIdleOptions(options, format.kind);
        if (options.out != kStandardOutput) {
            if (stereo && format.kind != OutputKind::kFolder) suggestName(options.out, *stereo, size);
            if (format.word == "gif" && !options.limit) noteLargeGif(options);
        }
    }
    if (options.stats) std::fputs(times.table(drawn.frames, drawn.writers).c_str(), stderr);
    return rendered;
}

/// The photo's own; square where it cannot be read, of which more is said when it is rendered.
Size sizeInFile(const std::string& photo) {
    try {
        const media::PictureHeader header =
            media::decoder::readPictureHeader(media::readPictureFile(photo), photo);
        return {header.width, header.height};
    } catch (const Error&) {
        return {1, 1};
    }
}

OutputEnding endingOf(const RenderOptions& options) {
    OutputEnding ending;
    std::string_view word = options.encoding.format;
    if (word.empty() && !options.fit.place.empty()) word = media::rowsOf(options.fit.place).front()->format;
    const media::OutputFormat* format = std::begin(media::kOutputFormats);
    for (const media::OutputFormat& known : media::kOutputFormats)
        if (known.word == word && !known.extension.empty()) format = &known;
    ending.extension = format->extension;
    if (options.stereo.layout) {
        const bool has_aspect = options.stereo.layout->kind == StereoKind::kQuilt;
        const Size photo = has_aspect ? sizeInFile(options.input.photo) : Size{1, 1};
        ending.suffix = stereoSuffix(*options.stereo.layout, chooseSize(options, photo, *format));
    }
    return ending;
}

void addMotionOptions(CommandLine* line, RenderOptions* options) {
    addClipTiming(line, &options->timing);
    const AddedPictureOptions added =
        addPictureOptions(line, "1920, in a page 2048, in a .gif 480", &options->picture);
    options->of_movement = {&added.motion, &added.motion_file};
    options->of_motion = {&added.motion, &added.motion_file, &added.amount};
    options->of_frames.push_back(
        &line->parsed(
                 "--at", [options](const std::string& text) { options->at = parsePosition(text); },
                 "the still's view position, or the middle of the motion: -1 from the left or below to 1 "
                 "from "
                 "the right or above")
             .called("X,Y")
             .usually("0,0"));
    const AddedStereoOptions stereo = addStereoOptions(line, &options->stereo);
    options->of_stereo = {&stereo.eyes};
}

/// What may be the same for many photos, but for where the depth comes from.
void addPictureAndViewOptions(CommandLine* line, RenderOptions* options) {
    addEncodingOptions(line, &options->encoding);
    addFitOptions(line, &options->fit);
    addMotionOptions(line, options);
    options->of_pages.push_back(
        &line->text("--alt", &options->alt, "in a page: what the photo shows, for people who do not see it")
             .called("TEXT"));
    options->of_pages.push_back(
        &line->text("--title", &options->title, "a page's title (default: as --alt)").called("TEXT"));
    line->flag("--force", &options->force, "replace the numbered frames in a folder that is not empty");
    addViewOptions(line, &options->view);
    addProfileOption(line, &options->view);
}

}  // namespace

RenderLine addRenderLine(CommandLine* line) {
    const auto options = std::make_shared<RenderOptions>();
    addInputOptions(line, &options->input);
    line->text("-o,--out", &options->out,
               media::extensionsOf(OutputKind::kClip, ", ") + ": a looping clip; " +
                   media::extensionsOf(OutputKind::kStill, ", ") + ": a still; " +
                   media::extensionsOf(OutputKind::kPair, ", ") + ": a stereo photo; " +
                   media::extensionsOf(OutputKind::kMesh, ", ") + ": a mesh for other programs; " +
                   media::extensionsOf(OutputKind::kPage, ", ") +
                   ": a page to share, which moves as it is watched; else a folder; - is standard output, "
                   "with --format")
        .called("PATH")
        .required();
    addPictureAndViewOptions(line, options.get());
    options->of_frames.push_back(&line->flag(
        "--stats", &options->stats,
        "say at the end what each stage took; with several frames, encoding runs while the next ones are "
        "drawn, and for a clip it is the wait for ffmpeg"));
    addTalkOptions(line, &options->talk);
    addTimingsOption(line, &options->view);
    addSaveProfileOption(line, options->view);
    return {[options] {
                RenderOptions asked = *options;
                check(&asked);
            },
            [options] { return render(*options); }, [options] { return endingOf(*options); }};
}

std::shared_ptr<void> addRenderOptions(CommandLine* line) {
    const auto options = std::make_shared<RenderOptions>();
    addDepthOptions(line, &options->input, nullptr);
    addPictureAndViewOptions(line, options.get());
    return options;
}

Command renderCommand() {
    return {
        "render",
        "make a clip, a still, numbered frames or a page to share",
        {{"a clip from a phone's photo with depth inside", "quorvane render portrait.jpg -o sway.mp4"},
         {"from a photo and a depth map", "quorvane render photo.jpg depth.png -o sway.mp4"},
         {"from a photo and your own depth estimator",
          "quorvane render photo.jpg --depth-cmd 'estimate {in} {out}' -o sway.mp4"},
         {"from any photo and an ONNX network that you have",
          "quorvane render photo.jpg --depth-model model.onnx -o sway.mp4"},
         {"a small GIF of another motion",
          "quorvane render photo.jpg depth.png -o a.gif --size 480x360 --motion circle"},
         {"a softer clip of six seconds that also comes closer",
          "quorvane render photo.jpg -o a.mp4 --motion sway+zoom --ease --seconds 6"},
         {"a page to share: one file that moves with mouse, touch and tilt",
          "quorvane render portrait.jpg -o share.html --alt 'a cat on a sofa'"},
         {"one still, seen from the left", "quorvane render photo.jpg depth.png -o left.png --at -1,0"},
         {"both eyes' views side by side", "quorvane render photo.jpg depth.png -o a_SBS.png --stereo sbs"},
         {"numbered frames that stay in place where the photo shows its top left",
          "quorvane render photo.jpg depth.png -o frames/ --pivot 0.1,0.1"}},
        [](CommandLine* line) -> std::function<void()> {
            line->surplus("quorvane batch renders many photos");
            return addRenderLine(line).render;
        }};
}

}  // namespace quorvane::app
