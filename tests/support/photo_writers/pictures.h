#ifndef QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_PICTURES_H
#define QUORVANE_TESTS_SUPPORT_PHOTO_WRITERS_PICTURES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "media/picture/image.h"

namespace quorvane::test {

// Whole files.
std::string jpegFile(const media::RgbImage& image);
std::string jpegFile(const media::GrayImage& image);
std::string pngFile(const media::GrayImage& image);
std::string pngFile(const media::Image<uint16_t, 1>& image);

/// A colour picture of smooth shades and a few edges.
media::RgbImage somePhoto(int width, int height);

/// A plane that a turn or mirroring changes: a ramp with a bright corner, 8 bit.
media::GrayImage somePlane(int width, int height);

// Numbers as bytes.
std::string big(uint64_t value, int bytes);
std::string little(uint64_t value, int bytes);

/// A JPEG segment: marker, length, body of at most 65,533 bytes.
std::string segment(uint8_t marker, std::string_view body);

/// The JPEG with segments behind its SOI, or behind its JFIF segment where it has one.
std::string withSegments(const std::string& jpeg, const std::vector<std::string>& segments);

/// APP1 segments.
std::string exifSegment(int orientation);
std::string xmpSegment(std::string_view packet);

/// An extended packet in pieces of at most `piece` bytes.
std::vector<std::string> extendedXmpSegments(std::string_view guid, std::string_view packet,
                                             size_t piece = 60'000);

std::string base64(std::string_view bytes);

}  // namespace quorvane::test

#endif
