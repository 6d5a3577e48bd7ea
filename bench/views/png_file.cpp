#include "bench/views/png_file.h"

#include <png.h>

#include <stdexcept>

namespace quorvane::bench {
namespace {

template <typename Raster>
Raster read(const std::string& file, png_uint_32 format) {
    png_image header = {};
    header.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&header, file.c_str()) == 0)
        throw std::runtime_error(file + ": " + header.message);
    header.format = format;
    Raster raster(static_cast<int>(header.width), static_cast<int>(header.height));
    if (png_image_finish_read(&header, nullptr, raster.samples.data(), 0, nullptr) == 0)
        throw std::runtime_error(file + ": " + header.message);
    return raster;
}

template <typename Raster>
void write(const std::string& file, const Raster& raster, png_uint_32 format) {
    png_image header = {};
    header.version = PNG_IMAGE_VERSION;
    header.width = static_cast<png_uint_32>(raster.width);
    header.height = static_cast<png_uint_32>(raster.height);
    header.format = format;
    if (png_image_write_to_file(&header, file.c_str(), 0, raster.samples.data(), 0, nullptr) == 0)
        throw std::runtime_error(file + ": " + header.message);
}

}  // namespace

Picture readPng(const std::string& file) { return read<Picture>(file, PNG_FORMAT_RGB); }
DepthMap readGrayPng(const std::string& file) { return read<DepthMap>(file, PNG_FORMAT_GRAY); }
void writePng(const std::string& file, const Picture& picture) { write(file, picture, PNG_FORMAT_RGB); }
void writePng(const std::string& file, const DepthMap& plane) { write(file, plane, PNG_FORMAT_GRAY); }

}  // namespace quorvane::bench
