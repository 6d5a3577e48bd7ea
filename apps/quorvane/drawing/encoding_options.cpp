#include "apps/quorvane/drawing/encoding_options.h"

#include <iterator>
#include <utility>

#include "apps/quorvane/terminal/numbers.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

/// A codec in the help: the formats that take it, its usual quality and its presets.
std::pair<std::string, std::string> rowOf(const media::Codec& codec) {
    std::vector<std::string_view> extensions;
    for (const media::OutputFormat& format : media::kOutputFormats)
        for (const std::string_view name : media::wordsOf(format.codecs))
            if (name == codec.name && !format.extension.empty()) extensions.push_back(format.extension);
    std::string text = media::listOf(extensions, ", ");
    text += codec.isLossy() ? "; quality " + std::to_string(codec.usual_quality) : "; keeps every pixel";
    const std::vector<std::string_view> presets = media::wordsOf(codec.presets);
    if (!presets.empty())
        text += "; presets " + std::string(presets.front()) + " to " + std::string(presets.back()) +
                ", usually " + std::string(codec.usual_preset);
    return {std::string(codec.name), text};
}

}  // namespace

void addEncodingOptions(CommandLine* line, EncodingOptions* options) {
    const std::vector<std::string> formats = media::formatWords();
    line->word(
        "--format", formats, [options, formats](size_t i) { options->format = formats[i]; },
        "what is written, where the path's extension does not say it; in a folder png (default) or jpg");
    std::vector<std::string> codecs;
    std::vector<std::pair<std::string, std::string>> rows;
    for (const media::Codec& codec : media::kCodecs) {
        codecs.emplace_back(codec.name);
        rows.push_back(rowOf(codec));
    }
    options->of_pictures.push_back(&line->word(
        "--codec", codecs, [options](size_t i) { options->encoder.codec = &media::kCodecs[i]; },
        "what compresses it, see below (default: the format's first)"));
    options->of_pictures.push_back(
        &line->parsed(
                 "--quality",
                 [options](const std::string& text) {
                     options->encoder.quality = parseWhole("--quality", text, 0, 100);
                 },
                 "0 (small) to 100 (true), for every codec that loses something (default: see below)")
             .called("N")
             .soughtAs({"--crf", "--bitrate"}));
    options->of_pictures.push_back(
        &line->text("--encoder-preset", &options->encoder.preset,
                    "how long the encoder looks for a small file, in its own words, see below")
             .called("WORD")
             .soughtAs({"--preset"}));
    line->table("Codecs:", std::move(rows));
}

const media::OutputFormat& parseOutput(const std::string& path, const EncodingOptions& options) {
    try {
        const media::OutputFormat& format = media::outputFormat(path, options.format);
        if (format.kind != media::OutputKind::kPage) media::codecFor(format, options.encoder);
        return format;
    } catch (const Error& error) {
        throw UsageError(error.what());
    }
}

}  // namespace quorvane::app
