#ifndef QUORVANE_MEDIA_EMBEDDING_HEIF_WRITING_H
#define QUORVANE_MEDIA_EMBEDDING_HEIF_WRITING_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "media/picture/image.h"

namespace quorvane::media {

// HEIF files with what libheif 1.15 writes none of: stereo pairs and their cameras, auxiliary pictures. It
// codes the pictures; the boxes are ISO/IEC 14496-12's and 23008-12's.

/// A box of four letters that has a version and flags.
std::string heifFullBox(const std::string& type, int version, uint32_t flags, const std::string& body);

/// A picture as HEVC codes it.
struct CodedPicture {
    std::vector<std::string> properties;  ///< boxes: how it is coded, its size, its colours
    std::string bytes;
};

/// Throw Error. Sides at least 16 pixels.
CodedPicture codedPicture(const RgbImage& picture, int quality);  ///< 1 to 100
CodedPicture codedPlane(const GrayImage& plane);                  ///< without loss

/// An item of a file. Its place in the list, from 1, is its ID.
struct HeifItemToWrite {
    std::string type;  ///< "hvc1", "Exif", "mime"
    std::string bytes;
    std::vector<std::string> properties;                  ///< boxes; "hvcC" and "clap" are essential
    std::string content_type;                             ///< of "mime"
    std::vector<std::pair<std::string, int>> references;  ///< of what kind, and to which ID
};

/// A file, the first item of which is its picture. `groups`: boxes of the entity groups.
std::string heifFile(const std::vector<HeifItemToWrite>& items, const std::string& groups);

}  // namespace quorvane::media

#endif
