#ifndef QUORVANE_MEDIA_EMBEDDED_EMBEDDED_H
#define QUORVANE_MEDIA_EMBEDDED_EMBEDDED_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::media {

// What phones keep in a photo's file beside the photo: the depth, the photo before its background was
// blurred, and more. Nothing here decodes a picture or needs libvips.

/// What a depth sample measures. It says how samples lie to the distance; which end is near stands apart.
enum class DepthKind {
    kDisparity,     ///< linear in 1 / distance; near and far may be unknown
    kInverseRange,  ///< linear in 1 / distance, from 1 / near to 1 / far
    kLinearRange,   ///< linear in distance, from near to far
    kUnknown,
};

enum class ImageRole {
    kPhoto,     ///< what a viewer shows
    kOriginal,  ///< the photo before its background was blurred
    kDepth,
    kConfidence,
    kGainMap,
    kMatte,
    kThumbnail,
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

/// How the bytes of a depth plane are to be read.
enum class DepthCoding {
    kPicture,   ///< a whole JPEG, PNG, WebP or TIFF file
    kGray8,     ///< width * height bytes, rows from the top
    kGray16,    ///< the same of 16 bits, the lower byte first
    kHeifItem,  ///< `bytes` is the whole HEIC file, `heif_item` its auxiliary picture
};

struct EmbeddedDepth {
    std::string container;  ///< as knownContainers() names it
    std::string where;      ///< as in its InnerImage
    std::string bytes;
    DepthCoding coding = DepthCoding::kPicture;
    int width = 0;  ///< of bare samples; pictures know their own
    int height = 0;
    uint32_t heif_item = 0;

    DepthKind kind = DepthKind::kUnknown;
    bool larger_is_nearer = true;     ///< of the samples as stored
    std::string polarity_reason;      ///< why, such as "GDepth stores 0 for near"
    std::optional<double> near, far;  ///< distances, both positive
    std::string units;                ///< of near and far: "m", "mm", "diopters" ...; empty: unknown

    /// Exif's code (1 to 8) that turns the plane as it is stored upright.
    int orientation = 1;
    bool orientation_known = true;  ///< else a guess
};

/// A photo kept beside the one that viewers show.
struct EmbeddedPhoto {
    std::string where;
    std::string bytes;  ///< a whole picture file
    int orientation =
        0;  ///< Exif's code that turns it upright where its own file has none; 0: it says itself
};

/// What a file was found to hold.
struct Contents {
    std::string file_kind;  ///< "JPEG", "HEIC", "PNG" ...; "" for what is no picture
    int orientation = 1;    ///< Exif's code of the photo
    std::vector<InnerImage> images;
    std::optional<EmbeddedDepth> depth;
    std::optional<EmbeddedPhoto> original;
    /// One line for each container that was there and could not be used, and why.
    std::vector<std::string> remarks;
};

/// Looks into the bytes of a picture file. Whatever they are, it returns: what is damaged becomes a remark.
/// Where several containers hold a depth, the first of knownContainers() wins. Beside `file`, at most six
/// times its size and 50 MB are taken, and what is kept of it at most three times.
Contents lookInside(std::string_view file);

/// The names of the containers that are looked for, in the order of preference; Apple's HEIC only where
/// libheif was there when this was built.
std::vector<std::string> knownContainers();

}  // namespace quorvane::media

#endif
