// Portrait photos of several phones for the test of the demo page, and the depth map that each should give,
// upright and with its near end white: portraits FOLDER

#include <algorithm>
#include <fstream>
#include <string>

#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "support/photo_writers/apple_jpeg.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/trailers.h"
#include "support/photo_writers/turned.h"
#include "support/photo_writers/xmp_depth.h"

namespace {

using namespace quorvane;

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kOrientation = 6;

/// The same depth from 0 to 255, as the page spreads it.
media::GrayImage spread(media::GrayImage depth) {
    const auto [low, high] = std::minmax_element(depth.samples.begin(), depth.samples.end());
    const int far = *low, range = *high - far;
    for (uint8_t& level : depth.samples) level = static_cast<uint8_t>((level - far) * 255 / range);
    return depth;
}

/// What a format has that stores 0 for near.
media::GrayImage inverted(media::GrayImage depth) {
    std::transform(depth.samples.begin(), depth.samples.end(), depth.samples.begin(),
                   [](uint8_t level) { return static_cast<uint8_t>(255 - level); });
    return depth;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::string folder = std::string(argv[1]) + "/portrait-";
    media::SampleScene scene = media::makeSampleScene(kWidth, kHeight);
    scene.depth = spread(scene.depth);
    const auto write = [&](const char* name, const std::string& file, const media::GrayImage& depth) {
        std::ofstream(folder + name + ".jpg", std::ios::binary) << file;
        media::writePng(depth, folder + name + "-depth.png");
    };

    test::GDepthOptions gdepth;
    gdepth.orientation = kOrientation;
    write("gdepth", test::gdepthFile(scene.photo, inverted(scene.depth), gdepth),
          test::turned(scene.depth, kOrientation));
    test::AppendedOptions appended;
    appended.gain_map = test::jpegFile(test::somePlane(32, 24));
    write("dynamic", test::dynamicDepthFile(scene.photo, inverted(scene.depth), appended), scene.depth);
    test::AppleJpegOptions apple;
    apple.matte_first = true;
    write("apple", test::appleJpegFile(scene.photo, scene.depth, apple), scene.depth);
    test::HuaweiOptions huawei;
    write("huawei", test::huaweiFile(test::jpegFile(scene.photo), scene.depth, huawei), scene.depth);
}
