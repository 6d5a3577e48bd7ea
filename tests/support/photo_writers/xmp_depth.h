#ifndef QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_XMP_DEPTH_H
#define QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_XMP_DEPTH_H

#include <string>

#include "media/picture/image.h"

namespace quorvane::test {

// JPEG files that say in XMP where their depth is. The plane is kept as pngFile(depth), so it comes back
// exactly; inner pictures are whole files, left out where empty.

/// What a file says of its depth, as text, so that it may be wrong. Empty ones are left out.
struct DepthTerms {
    std::string format = "RangeInverse";
    std::string near = "0.5", far = "8", units = "m";
};

/// How the same XMP can be written.
struct XmpManner {
    bool elements = false;      ///< properties are elements; else attributes
    std::string prefix_suffix;  ///< behind each prefix of a namespace
};

struct GDepthOptions {
    DepthTerms terms;
    XmpManner manner;
    int orientation = 0;  ///< Exif's code; 0: no Exif
    std::string mime = "image/png";
    std::string original, confidence;
    bool extended = true;   ///< the data in extended XMP; else in the packet, which takes 64 KB
    size_t piece = 60'000;  ///< bytes in each piece of the extended XMP
    std::string data;       ///< in place of the plane's base 64
};
std::string gdepthFile(const media::RgbImage& photo, const media::GrayImage& depth,
                       const GDepthOptions& options = GDepthOptions());

struct XdmOptions {
    DepthTerms terms;
    XmpManner manner;
    int orientation = 0;
    std::string original;
    bool appended = false;          ///< the plane lies behind the photo; else its base 64 in extended XMP
    bool google_directory = false;  ///< of the appended items; else in XDM's own namespace
};
std::string xdmFile(const media::RgbImage& photo, const media::GrayImage& depth,
                    const XdmOptions& options = XdmOptions());

/// For the files that are listed in a directory and lie behind the photo: original, gain map, matte, depth,
/// confidence, video.
struct AppendedOptions {
    DepthTerms terms;
    XmpManner manner;
    int orientation = 0;
    std::string original, gain_map, matte, confidence, video;
    int padding = 0;  ///< behind the photo
    std::string depth_mime = "image/png";

    // What a broken file has.
    std::string depth_length;     ///< as the directory gives it; empty: the true one
    std::string original_length;  ///< the same
    bool reversed = false;        ///< the items lie in the reverse of the directory's order
    std::string gap;              ///< between the photo and the first item, unknown to the directory
    std::string behind;           ///< behind the last item, unknown to the directory
};
std::string dynamicDepthFile(const media::RgbImage& photo, const media::GrayImage& depth,
                             const AppendedOptions& options = AppendedOptions());

/// The terms stand in GDepth's namespace.
std::string gcontainerFile(const media::RgbImage& photo, const media::GrayImage& depth,
                           const AppendedOptions& options = AppendedOptions());

/// One file with both directories; what lies behind the photo is as `dynamic_depth` says, and so are the
/// terms, which stand in Dynamic Depth's namespace only.
std::string twoDirectoriesFile(const media::RgbImage& photo, const media::GrayImage& depth,
                               const AppendedOptions& dynamic_depth, const AppendedOptions& gcontainer);

}  // namespace quorvane::test

#endif
