#ifndef QUORVANE_MEDIA_CLIP_OUTPUT_FORMAT_H
#define QUORVANE_MEDIA_CLIP_OUTPUT_FORMAT_H

#include <string>
#include <string_view>
#include <vector>

#include "media/clip/codec.h"

namespace quorvane::media {

/// Those behind kFolder are not made of frames.
enum class OutputKind {
    kClip,
    kStill,
    kFolder,  ///< whose pictures may come in any order, and from several threads at once
    kPage,
    kPair,  ///< a stereo photo
    kMesh,  ///< for other programs
};

/// What can be written. The extension of a path chooses, or the word that --format takes; messages and help
/// texts are made from this table, so that a new format is one line here, and what compresses it a line in
/// the table of codecs.
struct OutputFormat {
    std::string_view word;       ///< as --format takes it
    std::string_view extension;  ///< lower case, with its dot; empty: a folder of numbered pictures
    std::string_view also;       ///< another extension that means the same
    std::string_view name;       ///< for messages, as in "NAME has even sides"
    OutputKind kind;
    bool shown_once;          ///< players repeat it only where somebody asks them to
    std::string_view codecs;  ///< what may compress it, parted by blanks, the usual one first
    std::string_view words;   ///< what ffmpeg is told to pack it into
    std::string_view once{};  ///< what it is told besides for a clip that players shall not repeat
};

inline constexpr OutputFormat kOutputFormats[] = {
    {"mp4", ".mp4", {}, "an .mp4", OutputKind::kClip, true, "h264 hevc av1", "-movflags +faststart -f mp4"},
    {"webm", ".webm", {}, "a .webm", OutputKind::kClip, true, "vp9 av1", "-f webm"},
    {"avif", ".avif", {}, "an .avif", OutputKind::kClip, false, "av1", "-f avif"},
    {"webp", ".webp", {}, "a .webp", OutputKind::kClip, false, "webp", "-loop 0 -f webp", "-loop 1"},
    {"gif", ".gif", {}, "a .gif", OutputKind::kClip, false, "gif", "-loop 0 -f gif", "-loop -1"},
    {"apng", ".apng", {}, "an .apng", OutputKind::kClip, false, "apng", "-plays 0 -f apng", "-plays 1"},
    {"y4m", ".y4m", {}, "a .y4m", OutputKind::kClip, false, "yuv420", {}},
    {"rgba", ".rgba", {}, "an .rgba", OutputKind::kClip, false, "rgba", {}},
    {"png", ".png", {}, "a .png", OutputKind::kStill, false, "png", {}},
    {"jpg", ".jpg", ".jpeg", "a .jpg", OutputKind::kStill, false, "jpeg", {}},
    {"heic", ".heic", {}, "a .heic", OutputKind::kPair, false, "heif", {}},
    {"mpo", ".mpo", {}, "an .mpo", OutputKind::kPair, false, "jpeg", {}},
    {"glb", ".glb", {}, "a .glb", OutputKind::kMesh, false, "jpeg", {}},
    {"html", ".html", {}, "an .html", OutputKind::kPage, false, {}, {}},
    {"png", {}, {}, "a folder", OutputKind::kFolder, false, "png", {}},
    {"jpg", {}, {}, "a folder", OutputKind::kFolder, false, "jpeg", {}},
};

/// What `path` asks for: by its extension in whatever case, and a folder where it ends in '/', is a folder
/// already or has no extension. A `word`, as --format takes it, says what is in the folder, and what goes to
/// standard output or into a file whose extension says nothing. Throws Error, with what would do, where they
/// disagree or say nothing.
const OutputFormat& outputFormat(const std::string& path, std::string_view word = {});

/// What --format takes.
std::vector<std::string> formatWords();

/// What compresses a file of that format. Throws Error where the settings name another codec, or ask for
/// what the codec has not.
const Codec& codecFor(const OutputFormat& format, const EncoderSettings& settings);

/// Whether both sides of a picture of that format are even.
bool hasEvenSides(const OutputFormat& format);

/// The extensions of one kind as a list, such as ".mp4, .webp or .gif" with " or " before the last.
std::string extensionsOf(OutputKind kind, std::string_view before_last);

}  // namespace quorvane::media

#endif
