#include "apps/quorvane/drawing/fit_options.h"

#include <algorithm>
#include <utility>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "system/pending_output.h"

namespace quorvane::app {
namespace {

using media::OutputFormat;
using media::OutputKind;
using media::Place;

/// What the help says of a place: ".mp4, .jpg: 16 MB, 1280 pixels; .gif: ...".
std::string textOf(const std::vector<const Place*>& rows) {
    std::string text;
    for (size_t first = 0, end = 0; first < rows.size(); first = end) {
        const Place& row = *rows[first];
        std::vector<std::string_view> formats;
        for (; end < rows.size() && rows[end]->limit == row.limit && rows[end]->longest == row.longest; ++end)
            formats.push_back(rows[end]->format);
        text +=
            (first > 0 ? "; " : "") + media::listOf(formats, ", ") + ": " + textOfBytes(row.limit) + ", " +
            (row.side > 0 ? app::textOf(Size{row.side, row.side}) : std::to_string(row.longest) + " pixels");
    }
    return text;
}

}  // namespace

void addFitOptions(CommandLine* line, FitOptions* options) {
    options->options.push_back(
        &line->parsed(
                 "--fit", [options](const std::string& text) { options->limit = parseBytes("--fit", text); },
                 "the file takes at most so much (8MB, 500KB, 10MiB): the quality is lowered until it fits, "
                 "then the size, then the rate; what you give of these is kept")
             .called("SIZE"));
    const std::vector<std::string> names = media::placeNames();
    std::vector<std::pair<std::string, std::string>> rows;
    rows.reserve(names.size());
    for (const std::string& name : names) rows.emplace_back(name, textOf(media::rowsOf(name)));
    options->options.push_back(&line->word(
        "--for", names, [options, names](size_t i) { options->place = names[i]; },
        "what that place takes: its format, its size and its limit, see below"));
    line->table("Places, as of " + std::string(media::placesDate()) + " (the longer side at most):",
                std::move(rows));
}

const Place* settlePlace(const FitOptions& options, const std::string& path, EncodingOptions* encoding,
                         PictureOptions* picture) {
    if (options.place.empty()) return nullptr;
    const std::vector<const Place*> rows = media::rowsOf(options.place);
    const std::string asked = "--for " + options.place;
    const bool says_nothing =
        encoding->format.empty() && parseOutput(path, *encoding).kind == OutputKind::kFolder;
    if (says_nothing && path.back() != '/') {
        EncodingOptions usual = *encoding;
        usual.format = rows.front()->format;
        try {
            parseOutput(path, usual);
            *encoding = usual;
        } catch (const UsageError&) {
            // A folder of that name is there.
        }
    }
    const OutputFormat& format = parseOutput(path, *encoding);
    const auto row = std::find_if(rows.begin(), rows.end(), [&format](const Place* one) {
        return format.kind != OutputKind::kFolder && one->format == format.word;
    });
    if (row == rows.end()) {
        std::vector<std::string_view> takes;
        takes.reserve(rows.size());
        for (const Place* one : rows) takes.push_back(one->format);
        throw UsageError(path + ": " + asked + " makes a file of " + media::listOf(takes));
    }
    const Place& place = **row;
    if (!place.codec.empty()) {
        const media::Codec& chosen = media::codecFor(format, encoding->encoder);
        if (chosen.name != place.codec)
            throw UsageError("--codec " + std::string(chosen.name) + ": " + asked + " takes " +
                             std::string(place.codec) + " alone");
    }
    if (place.side > 0) {
        const Size size = {place.side, place.side};
        if (picture->size && picture->size->exact != size)
            throw UsageError("--size: " + asked + " takes " + app::textOf(size) + " alone");
        picture->size = PictureSize{size, {}};
    }
    return &place;
}

std::optional<int64_t> limitOf(const FitOptions& options, const Place* place, const std::string& path,
                               const OutputFormat& format) {
    if (!options.limit && place == nullptr) return {};
    if (path == kStandardOutput)
        throw UsageError("-: what goes to standard output cannot be made to fit; name a file");
    const bool is_compressed = format.kind == OutputKind::kClip && !format.words.empty();
    if (!is_compressed && format.kind != OutputKind::kStill)
        throw UsageError(path + ": " + std::string(format.name) +
                         " cannot be made to fit; a clip such as .mp4 or .webp can, and a still (" +
                         media::extensionsOf(OutputKind::kStill, " or ") + ")");
    if (place == nullptr) return options.limit;
    return std::min(place->limit, options.limit.value_or(place->limit));
}

}  // namespace quorvane::app
