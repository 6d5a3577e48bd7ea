// Writes what the fuzz targets start from: make_seeds FOLDER makes a folder of inputs for each target.

#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vips/vips8>

#include "media/error.h"
#include "media/picture_file.h"
#include "media/sample_scene.h"
#include "media/vips.h"

namespace {

using namespace quorvane::media;
using vips::VImage;

/// Numbers the texts.
void writeTexts(const std::string& folder, std::initializer_list<std::string> texts) {
    std::filesystem::create_directories(folder);
    int number = 0;
    for (const std::string& text : texts)
        std::ofstream(folder + "/" + std::to_string(++number), std::ios::binary) << text;
}

/// The picture in every format that can be written here and holds its kind of samples.
void writePictures(const VImage& picture, const std::string& stem) {
    const bool deep = picture.format() == VIPS_FORMAT_USHORT;
    for (const char* extension : {".png", ".jpg", ".webp", ".tif", ".heic", ".avif"}) {
        if (deep && extension != std::string(".png") && extension != std::string(".tif")) continue;
        try {
            picture.write_to_file((stem + extension).c_str());
        } catch (const vips::VError&) {
            std::fprintf(stderr, "make_seeds: no %s: %s\n", (stem + extension).c_str(), vipsReason().c_str());
        }
    }
}

/// Ways of writing a file that take other paths through its reader.
void writeVariants(const VImage& picture, const std::string& stem) {
    const auto option = [](const char* name, int value) { return VImage::option()->set(name, value); };
    picture.pngsave((stem + "-interlaced.png").c_str(), option("interlace", 1));
    picture.pngsave((stem + "-palette.png").c_str(), option("palette", 1));
    picture.jpegsave((stem + "-progressive.jpg").c_str(), option("interlace", 1));
    picture.webpsave((stem + "-lossless.webp").c_str(), option("lossless", 1));
    picture.tiffsave((stem + "-tiled.tif").c_str(),
                     option("tile", 1)->set("tile_width", 16)->set("tile_height", 16));
    for (const auto& [name, compression] : {std::pair{"-lzw.tif", VIPS_FOREIGN_TIFF_COMPRESSION_LZW},
                                            {"-deflate.tif", VIPS_FOREIGN_TIFF_COMPRESSION_DEFLATE},
                                            {"-jpeg.tif", VIPS_FOREIGN_TIFF_COMPRESSION_JPEG}})
        picture.tiffsave((stem + name).c_str(), option("compression", compression));

    VImage turned = picture.copy();
    turned.set("orientation", 6);
    turned.tiffsave((stem + "-turned.tif").c_str());
    turned.jpegsave((stem + "-turned.jpg").c_str());
    picture.icc_export(VImage::option()->set("output_profile", "srgb"))
        .pngsave((stem + "-profile.png").c_str());

    VImage pages = picture.join(picture, VIPS_DIRECTION_VERTICAL).copy();
    pages.set("page-height", picture.height());
    pages.webpsave((stem + "-animated.webp").c_str());
    pages.tiffsave((stem + "-pages.tif").c_str());
}

VImage asDeep(const VImage& picture) {
    return (picture * 257.0)
        .cast(VIPS_FORMAT_USHORT)
        .copy(VImage::option()->set(
            "interpretation", picture.bands() == 1 ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_RGB16));
}

void makeSeeds(const std::string& root) {
    writeTexts(root + "/properties",
               {"# tuned\nquorvane.para1=40\n\nquorvane.para12 = 0.81\r\n", "key=a=b\nnonsense\n=none\nlast",
                "long=" + std::string(92, 'x') + "\n"});
    writeTexts(root + "/settings",
               {"fov_scale=0.81", "rotate_x_boundary=-12", "guided_filter_rx=2", "guided_filter_eps=1e-6",
                "border_deadzone=64", "1280x720", "16384x1", "0.5,-0.2", "-1,1", "fov=1", "fov_scale=1e999"});
    // Bytes that say nothing but choose among small and large sides.
    writeTexts(root + "/fit", {std::string(48, '\0'), std::string(48, '\xff'), std::string(48, '\x55'),
                               std::string(20, '\1') + std::string(28, '\xfe')});

    const SampleScene scene = makeSampleScene(64, 64);
    const VImage photo = toVips(scene.photo), depth = toVips(scene.depth);
    for (const char* target : {"photo", "depth"}) {
        const std::string folder = root + "/" + target + "/";
        std::filesystem::create_directories(folder);
        writePictures(photo, folder + "rgb");
        writePictures(asDeep(photo), folder + "rgb16");
        writePictures(depth, folder + "gray");
        writePictures(asDeep(depth), folder + "gray16");
        writePictures(photo.bandjoin(depth), folder + "rgba");
        writeVariants(photo, folder + "rgb");
        writeVariants(depth.bandjoin(depth).bandjoin(depth).copy(
                          VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB)),
                      folder + "grey");
        photo.bandjoin(depth)
            .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_CMYK))
            .jpegsave((folder + "cmyk.jpg").c_str());
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: make_seeds FOLDER\n", stderr);
        return 2;
    }
    try {
        makeSeeds(argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_seeds: %s\n", error.what());
        return 1;
    }
    return 0;
}
