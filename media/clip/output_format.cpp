#include "media/clip/output_format.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "system/error.h"

namespace quorvane::media {
namespace {

namespace fs = std::filesystem;

std::string lowerExtension(const std::string& path) {
    std::string extension = fs::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

}  // namespace

const OutputFormat& outputFormat(const std::string& path) {
    std::error_code ignored;
    const bool folder = (!path.empty() && path.back() == '/') || fs::is_directory(path, ignored);
    const std::string extension = folder ? "" : lowerExtension(path);
    const OutputFormat* format =
        std::find_if(std::begin(kOutputFormats), std::end(kOutputFormats),
                     [&extension](const OutputFormat& known) { return known.extension == extension; });
    if (format != std::end(kOutputFormats)) return *format;
    throw Error(path + ": write " + extensionsOf(OutputKind::kClip, " or ") + " (clips), " +
                extensionsOf(OutputKind::kStill, " or ") + " (a still), " +
                extensionsOf(OutputKind::kPage, " or ") + " (a page to share) or a folder");
}

std::string extensionsOf(OutputKind kind, std::string_view before_last) {
    std::string list;
    std::string_view last;
    for (const OutputFormat& format : kOutputFormats) {
        if (format.kind != kind) continue;
        if (!last.empty()) list += (list.empty() ? "" : ", ") + std::string(last);
        last = format.extension;
    }
    return list.empty() ? std::string(last) : list + std::string(before_last) + std::string(last);
}

}  // namespace quorvane::media
