#include "stored_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "media/picture/picture_file.h"

namespace quorvane::test {
namespace {

media::RgbaImage imageOf(int width, int height, const std::vector<uint8_t>& rgba) {
    media::RgbaImage image(width, height);
    image.samples = rgba;
    return image;
}

}  // namespace

void writeEvidence(const std::string& name, int width, int height, const std::vector<uint8_t>& actual,
                   const std::vector<uint8_t>& wanted) {
    const std::string folder = QUORVANE_PICTURE_FOLDER;
    std::filesystem::create_directories(folder);
    std::vector<uint8_t> difference(actual.size(), 255);
    for (size_t i = 0; i < actual.size(); ++i)
        if (i % 4 != 3)
            difference[i] = static_cast<uint8_t>(std::min(255, 4 * std::abs(actual[i] - wanted[i])));
    for (const auto& [what, samples] :
         {std::pair{"wanted", &wanted}, {"actual", &actual}, {"difference", &difference}}) {
        const std::string path = folder + "/" + name + "-" + what + ".png";
        media::writePng(imageOf(width, height, *samples), path);
        std::printf("look at %s\n", path.c_str());
    }
}

void expectStoredPicture(const std::string& name, int width, int height, const std::vector<uint8_t>& rgba,
                         double most_mean, double most_beyond) {
    const std::string path = std::string(QUORVANE_STORED_PICTURES) + "/" + name + ".png";
    if (std::getenv("QUORVANE_ACCEPT_PICTURES") != nullptr) {
        media::writePng(imageOf(width, height, rgba), path);
        std::printf("accepted %s\n", path.c_str());
        return;
    }
    const media::RgbImage stored = media::readPhoto(path);
    ASSERT_EQ(stored.width, width);
    ASSERT_EQ(stored.height, height);
    std::vector<uint8_t> wanted(rgba.size(), 255);
    double sum = 0;
    size_t beyond = 0;
    const size_t pixels = rgba.size() / 4;
    for (size_t i = 0; i < pixels; ++i) {
        int worst = 0;
        for (size_t c = 0; c < 3; ++c) {
            wanted[4 * i + c] = stored.samples[3 * i + c];
            const int difference = std::abs(rgba[4 * i + c] - wanted[4 * i + c]);
            sum += difference;
            worst = std::max(worst, difference);
        }
        beyond += worst > 8;
    }
    const double mean = sum / static_cast<double>(3 * pixels);
    const double share = static_cast<double>(beyond) / static_cast<double>(pixels);
    EXPECT_LE(mean, most_mean);
    EXPECT_LE(share, most_beyond);
    if (mean > most_mean || share > most_beyond) {
        writeEvidence(name, width, height, rgba, wanted);
        std::printf("if the new picture is right: QUORVANE_ACCEPT_PICTURES=1 scripts/test picture\n");
    }
}

}  // namespace quorvane::test
