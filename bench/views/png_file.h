#ifndef QUORVANE_BENCH_VIEWS_PNG_FILE_H
#define QUORVANE_BENCH_VIEWS_PNG_FILE_H

#include <string>

#include "bench/views/picture.h"

namespace quorvane::bench {

/// Both throw std::runtime_error where the file cannot be read as a PNG.
Picture readPng(const std::string& file);
DepthMap readGrayPng(const std::string& file);

/// Throws std::runtime_error where the file cannot be written.
void writePng(const std::string& file, const Picture& picture);
void writePng(const std::string& file, const DepthMap& plane);

}  // namespace quorvane::bench

#endif
