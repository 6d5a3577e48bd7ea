#ifndef QUORVANE_MEDIA_EMBEDDED_EMBEDDED_H
#define QUORVANE_MEDIA_EMBEDDED_EMBEDDED_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvane::media {

// Besides the photo itself a phone's photo file may hold its depth, the photo before its background was
// blurred, and more. Nothing here decodes a picture or needs libvips.

/// How depth samples relate to distance. Which end is near is given apart from it.
enum class DepthKind {
    kDisparity,     ///< linear in 1 / distance; near and far may be unknown
    kInverseRange,  ///< linear in 1 / distance, from 1 / near to 1 / far
    kLinearRange,   ///< linear in distance, from near to far
    kUnknown,
};

enum class ImageRole {
    kPhoto,     ///< what a viewer shows
    kView,      ///< a view of a stereo pair, which viewers do not show
    kOriginal,  ///< the photo before its background was blurred
    kDepth,
    kConfidence,
    kGainMap,
    kMatte,
    kVideo,
    kOther,
};

/// A picture, plane or film that the file holds.
struct InnerImage {
    ImageRole role = ImageRole::kOther;
    std::string where;  ///< such as "JPEG at byte 812345", "GDepth:Data", "HEIF item 51"
    std::string mime;   ///< empty for bare samples
    uint64_t bytes = 0;
};

/// A depth plane that is a picture file of its own: JPEG, PNG, WebP, TIFF, HEIC or AVIF.
struct DepthPicture {
    std::string bytes;
};

/// A depth plane of bare samples, rows from the top.
struct DepthSamples {
    std::string bytes;  ///< width * height samples; of 16 bit each has its lower byte first
    int width = 0;
    int height = 0;
    int bits = 8;  ///< 8 or 16
};

/// A depth plane that is an auxiliary picture of a HEIC or AVIF file and cannot be read without that file.
struct DepthHeifItem {
    std::string_view file;  ///< the whole file; whoever holds this keeps its bytes
    uint32_t id = 0;
};

struct EmbeddedDepth {
    std::string container;  ///< as knownContainers() names it
    std::string where;      ///< as in its InnerImage
    std::variant<DepthPicture, DepthSamples, DepthHeifItem> plane;

    DepthKind kind = DepthKind::kUnknown;
    bool larger_is_nearer = true;     ///< of the samples as stored
    std::string polarity_reason;      ///< how this is known, such as "GDepth stores 0 for near"
    std::optional<double> near, far;  ///< distances, both positive
    std::string units;                ///< of near and far: "m", "mm", "diopters" ...; empty: unknown

    /// Exif's orientation, 1 to 8, of the plane as it is stored.
    int orientation = 1;
    bool orientation_known = true;  ///< else a guess
};

/// The bytes that hold the plane; for a HEIF item those of the whole file.
std::string_view planeBytes(const EmbeddedDepth& depth);

/// Whether the samples are linear in distance and come with the range that makes 1 / distance of them.
bool givesDistances(const EmbeddedDepth& depth);

/// How near a sample on the scale of 0 to 255 is, from 0 for far to 255 for near. Linear in 1 / distance
/// where the depth gives distances; else as linear as the samples are.
double nearness(const EmbeddedDepth& depth, double level);

/// A second photo in the file, which viewers do not show.
struct EmbeddedPhoto {
    std::string where;
    std::string bytes;    ///< a whole picture file
    int orientation = 1;  ///< Exif's, 1 to 8, for a picture file that gives none itself
};

/// How the two views of a stereo pair share one picture.
struct PairLayout {
    bool one_above_other = false;  ///< else side by side
    bool squeezed = false;         ///< each shrunk to half of its width, or height, to fit in
    bool right_first = false;      ///< the right eye's view is the left, or upper, one
};

/// One view of a stereo pair.
struct StereoView {
    std::string where;  ///< such as "JPEG at byte 812345", "HEIF item 52", "left half"
    /// A whole picture file; empty: the file's own picture, or its `heif_item`, or a half of it.
    std::string bytes;
    uint32_t heif_item = 0;  ///< of a HEIC or AVIF file; 0: none
    int orientation = 1;     ///< Exif's, 1 to 8, for a picture file that gives none itself
};

/// Two views of one scene, side by side.
struct StereoPair {
    std::string container;  ///< as knownContainers() names it
    StereoView left, right;
    std::optional<PairLayout> layout;  ///< where both are halves of the file's own picture
};

/// What a file was found to hold.
struct Contents {
    std::string file_kind;  ///< "JPEG", "HEIC", "PNG" ...; "" for what is no picture
    int orientation = 1;    ///< Exif's code of the photo
    std::vector<InnerImage> images;
    std::optional<EmbeddedDepth> depth;
    std::optional<EmbeddedPhoto> original;
    std::optional<StereoPair> pair;
    /// One line for each thing that was found but could not be used, with the reason.
    std::vector<std::string> remarks;
};

/// A pair whose views are the halves of a picture, with a name for each half.
StereoPair pairOfHalves(PairLayout layout);

/// Looks into the bytes of a picture file. Any bytes will do: damage becomes a remark. If several containers
/// hold a depth, the first of knownContainers() wins; likewise for a stereo pair. It allocates at most six
/// times the size of `file` and 50 MB, and what it returns takes at most three times that size. A
/// DepthHeifItem refers to `file`; all else is copied out of it.
Contents lookInside(std::string_view file);

/// The names of the containers that are looked for, in order of preference. Apple's HEIC is one of them only
/// if this was built with libheif.
std::vector<std::string> knownContainers();

}  // namespace quorvane::media

#endif
