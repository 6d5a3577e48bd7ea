#ifndef QUORVANE_TESTS_STORED_PICTURE_H
#define QUORVANE_TESTS_STORED_PICTURE_H

#include <cstdint>
#include <string>
#include <vector>

namespace quorvane::test {

/// Compares an RGBA picture with tests/picture/stored/NAME.png: the mean difference over all samples, and the
/// share of pixels with a difference of more than 8 levels, must not be above the limits. On failure the
/// actual picture and the difference are written, and the message says where and how to accept the new one.
void expectStoredPicture(const std::string& name, int width, int height, const std::vector<uint8_t>& rgba,
                         double most_mean, double most_beyond);

/// Writes NAME-wanted.png, NAME-actual.png and NAME-difference.png (4 times as strong) into the build's
/// folder pictures/ and prints their paths.
void writeEvidence(const std::string& name, int width, int height, const std::vector<uint8_t>& actual,
                   const std::vector<uint8_t>& wanted);

}  // namespace quorvane::test

#endif
