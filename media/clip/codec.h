#ifndef QUORVANE_MEDIA_CLIP_CODEC_H
#define QUORVANE_MEDIA_CLIP_CODEC_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::media {

/// A way to compress pictures. Messages and help texts are made from the table below.
struct Codec {
    std::string_view name;  ///< as --codec takes it

    /// What ffmpeg is told, parted by blanks, with {quality} and {preset} where these go; empty: ffmpeg has
    /// no part in it.
    std::string_view words;

    // The codec's own number for quality 0 and for quality 100; what is between lies on the line between
    // them. Equal: every pixel is kept, and there is nothing to choose.
    double at_worst;
    double at_best;

    std::string_view presets;  ///< the encoder's own words, from fast to slow, parted by blanks; or none
    std::string_view usual_preset;

    int usual_quality;
    bool halves_colours;  ///< which are kept at half the size (4:2:0) and want even sides
    int least_side = 1;   ///< pixels
    int fineness = 1;     ///< its own number goes in steps of one over this

    constexpr bool isLossy() const { return at_worst != at_best; }

    /// Qualities that differ, without the worst: quality 100 / steps() * N is one for every whole N.
    constexpr int steps() const {
        return static_cast<int>((at_best > at_worst ? at_best - at_worst : at_worst - at_best) * fineness);
    }
};

// The lines of quality pass through where loss is hard to see at 80; docs/formats.md shows how like the
// picture each number leaves it. x264 is quick by default: `medium` takes twice as long for what is hard to
// see.
inline constexpr Codec kCodecs[] = {
    {"h264", "-c:v libx264 -preset {preset} -crf {quality}", 38, 13,
     "ultrafast superfast veryfast faster fast medium slow slower veryslow", "veryfast", 80, true, 1, 5},
    {"hevc", "-c:v libx265 -preset {preset} -crf {quality} -x265-params log-level=error -tag:v hvc1", 40, 15,
     "ultrafast superfast veryfast faster fast medium slow slower veryslow", "medium", 80, true, 1, 5},
    {"vp9",
     "-c:v libvpx-vp9 -b:v 0 -crf {quality} -deadline good -cpu-used {preset} -row-mt 1 -tile-columns 2", 63,
     15, "5 4 3 2 1 0", "4", 80, true},
    {"av1", "-c:v libsvtav1 -preset {preset} -crf {quality}", 63, 15, "12 11 10 9 8 7 6 5 4 3 2 1", "8", 80,
     true, 64},
    {"webp", "-c:v libwebp_anim -pix_fmt bgra -quality {quality} -compression_level {preset}", 0, 100,
     "0 1 2 3 4 5 6", "4", 85, false},
    // The palette is made for all of each picture: made for what moves alone, it has too few colours for
    // faces and skies. An ordered pattern stays where it is and compresses well. Its quality is the number
    // of colours.
    {"gif",
     "-filter_complex split[a][b];[a]palettegen=stats_mode=full:max_colors={quality}[p];"
     "[b][p]paletteuse=dither=bayer:bayer_scale=4:diff_mode=rectangle",
     16,
     256,
     {},
     {},
     100,
     false},
    {"apng", "-c:v apng -pred mixed -pix_fmt rgb24", 0, 0, {}, {}, 0, false},
    {"jpeg", {}, 1, 100, {}, {}, 90, false},
    {"png", {}, 0, 0, {}, {}, 0, false},
    // Pictures as they are, for other programs.
    {"yuv420", {}, 0, 0, {}, {}, 0, true},
    {"rgba", {}, 0, 0, {}, {}, 0, false},
    // Of libheif, whose encoder has its own line.
    {"heif", {}, 1, 90, {}, {}, 80, true, 16},
};

/// How pictures are to be compressed. What is not said is as usual.
struct EncoderSettings {
    const Codec* codec = nullptr;   ///< one of the format's; none: its first
    std::optional<double> quality;  ///< 0 to 100, a scale that all lossy codecs share
    std::string preset;             ///< one of the codec's; empty: the usual one
};

/// The words of `text`, which blanks part.
std::vector<std::string_view> wordsOf(std::string_view text);

/// "a, b or c", with `before_last` for " or ".
std::string listOf(const std::vector<std::string_view>& words, std::string_view before_last = " or ");

/// Quality 0..100 as the codec's own number, to the step.
double ownQuality(const Codec& codec, double quality);

/// Throws Error for a preset that the codec has not, and for a quality where it keeps every pixel.
void check(const Codec& codec, const EncoderSettings& settings);

/// ffmpeg's words for the codec, with quality and preset filled in.
std::string encoderWords(const Codec& codec, const EncoderSettings& settings);

}  // namespace quorvane::media

#endif
