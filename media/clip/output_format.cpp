#include "media/clip/output_format.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "system/error.h"
#include "system/pending_output.h"

namespace quorvane::media {
namespace {

namespace fs = std::filesystem;

std::string lowerExtension(const std::string& path) {
    std::string extension = fs::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

bool endsIn(const OutputFormat& format, const std::string& extension) {
    return format.extension == extension || (!extension.empty() && format.also == extension);
}

template <typename Is>
const OutputFormat* firstThat(Is is) {
    const OutputFormat* format = std::find_if(std::begin(kOutputFormats), std::end(kOutputFormats), is);
    return format == std::end(kOutputFormats) ? nullptr : format;
}

/// The words of --format, each once.
std::vector<std::string_view> words(bool in_folders) {
    std::vector<std::string_view> list;
    for (const OutputFormat& format : kOutputFormats)
        if ((format.kind == OutputKind::kFolder) == in_folders) list.push_back(format.word);
    return list;
}

}  // namespace

const OutputFormat& outputFormat(const std::string& path, std::string_view word) {
    std::error_code ignored;
    const bool is_folder = (!path.empty() && path.back() == '/') || fs::is_directory(path, ignored);
    const bool is_stream = path == kStandardOutput;
    const std::string extension = is_folder || is_stream ? "" : lowerExtension(path);

    const auto fits = [&](const OutputFormat& format) {
        return !is_stream && endsIn(format, extension) && (word.empty() || format.word == word);
    };
    if (const OutputFormat* format = firstThat(fits)) return *format;

    const OutputFormat* other = firstThat(
        [&](const OutputFormat& format) { return !extension.empty() && endsIn(format, extension); });
    const OutputFormat* wanted = firstThat([&](const OutputFormat& format) {
        return format.word == word && format.kind != OutputKind::kFolder;
    });
    if (is_folder) throw Error(path + ": --format of a folder is " + listOf(words(true)));
    if (other != nullptr && wanted != nullptr)
        throw Error(path + ": --format " + std::string(word) + " is written to " + std::string(wanted->name) +
                    " file");
    if (wanted != nullptr) return *wanted;
    if (is_stream)
        throw Error("-: what goes to standard output is said by --format: " + listOf(words(false)));
    throw Error(path + ": write " + extensionsOf(OutputKind::kClip, " or ") + " (clips), " +
                extensionsOf(OutputKind::kStill, " or ") + " (a still), " +
                extensionsOf(OutputKind::kPair, " or ") + " (a stereo photo), " +
                extensionsOf(OutputKind::kMesh, " or ") + " (a mesh), " +
                extensionsOf(OutputKind::kPage, " or ") + " (a page to share) or a folder");
}

std::vector<std::string> formatWords() {
    const std::vector<std::string_view> list = words(false);
    return {list.begin(), list.end()};
}

const Codec& codecFor(const OutputFormat& format, const EncoderSettings& settings) {
    const std::vector<std::string_view> names = wordsOf(format.codecs);
    const auto called = [](std::string_view name) {
        return std::find_if(std::begin(kCodecs), std::end(kCodecs),
                            [name](const Codec& codec) { return codec.name == name; });
    };
    if (names.empty()) throw Error(std::string(format.name) + " is no picture that a codec compresses");
    const Codec* codec = settings.codec != nullptr ? settings.codec : called(names.front());
    if (std::find(names.begin(), names.end(), codec->name) == names.end())
        throw Error("--codec " + std::string(codec->name) + ": " + std::string(format.name) + " takes " +
                    listOf(names));
    check(*codec, settings);
    return *codec;
}

bool hasEvenSides(const OutputFormat& format) {
    // Of a format's codecs none differs from the others in this.
    return format.kind != OutputKind::kPage && codecFor(format, {}).halves_colours;
}

std::string extensionsOf(OutputKind kind, std::string_view before_last) {
    std::vector<std::string_view> list;
    for (const OutputFormat& format : kOutputFormats)
        if (format.kind == kind) list.push_back(format.extension);
    return listOf(list, before_last);
}

}  // namespace quorvane::media
