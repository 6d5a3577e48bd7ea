#ifndef QUORVANE_MEDIA_CLIP_OUTPUT_FORMAT_H
#define QUORVANE_MEDIA_CLIP_OUTPUT_FORMAT_H

#include <string>
#include <string_view>

namespace quorvane::media {

enum class OutputKind { kClip, kStill, kFolder, kPage };

/// What can be written. The extension of a path chooses; messages and help texts are made from this table, so
/// that a new format is one line here, and its encoder's words above it.
struct OutputFormat {
    std::string_view extension;  ///< lower case, with its dot; empty: a folder of numbered .png files
    std::string_view name;       ///< for messages, as in "NAME has even sides"
    OutputKind kind;
    bool even_sides;         ///< both sides of its frames are even
    bool any_order;          ///< frames may come in any order, and from several threads at once
    std::string_view words;  ///< what ffmpeg is told to make it, parted by blanks; empty: it makes it not
};

// BT.709 limited range, said so in the file: players otherwise guess by the picture's height.
inline constexpr std::string_view kH264Words =
    "-vf scale=out_color_matrix=bt709:out_range=tv,format=yuv420p -c:v libx264 -preset medium -crf 18"
    " -colorspace bt709 -color_primaries bt709 -color_trc iec61966-2-1 -color_range tv -movflags +faststart"
    " -f mp4";
inline constexpr std::string_view kWebpWords = "-c:v libwebp_anim -quality 85 -loop 0 -f webp";
inline constexpr std::string_view kGifWords =
    "-filter_complex split[a][b];[a]palettegen[p];[b][p]paletteuse -loop 0 -f gif";

inline constexpr OutputFormat kOutputFormats[] = {
    {".mp4", "an .mp4", OutputKind::kClip, true, false, kH264Words},
    {".webp", "a .webp", OutputKind::kClip, false, false, kWebpWords},
    {".gif", "a .gif", OutputKind::kClip, false, false, kGifWords},
    {".png", "a .png", OutputKind::kStill, false, false, {}},
    {".html", "an .html", OutputKind::kPage, false, false, {}},
    {"", "a folder", OutputKind::kFolder, false, true, {}},
};

/// What `path` asks for: by its extension in whatever case, and a folder when it ends in '/', is a folder
/// already or has no extension. Throws Error for another extension, with those that there are.
const OutputFormat& outputFormat(const std::string& path);

/// The extensions of one kind as a list, such as ".mp4, .webp or .gif" with " or " before the last.
std::string extensionsOf(OutputKind kind, std::string_view before_last);

}  // namespace quorvane::media

#endif
