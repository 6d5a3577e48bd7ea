// Writes what the fuzz targets start from: make_seeds FOLDER makes a folder of inputs for each target.

#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vips/vips8>

#include "media/depth/photo_with_depth.h"
#include "media/picture/picture_file.h"
#include "media/picture/vips.h"
#include "media/scene/sample_scene.h"
#include "support/photo_writers/apple_heic.h"
#include "support/photo_writers/apple_jpeg.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/stereo.h"
#include "support/photo_writers/trailers.h"
#include "support/photo_writers/xmp_depth.h"
#include "system/error.h"

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
            std::fprintf(stderr, "make_seeds: no %s: %s\n", (stem + extension).c_str(),
                         vipsReason("no encoder").c_str());
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

/// Files with a depth inside, of every container, some of them broken.
void writeContainers(const std::string& root) {
    using namespace quorvane::test;
    const RgbImage photo = somePhoto(32, 24);
    const GrayImage plane = somePlane(16, 12);
    const std::string jpeg = jpegFile(photo), png = pngFile(plane);

    GDepthOptions inline_data, with_original, linear;
    inline_data.extended = false;
    inline_data.manner.elements = true;
    with_original.original = with_original.confidence = jpeg;
    with_original.piece = 300;
    with_original.orientation = 6;
    linear.terms.format = "RangeLinear";
    linear.manner.prefix_suffix = "x";
    writeTexts(root + "/xmp", {"<?xpacket begin=\"\xef\xbb\xbf\"?><x:a xmlns:x=\"u\" xmlns=\"v\" "
                               "x:b=\"&lt;&#x41;\" c='d'><!-- e -->"
                               "<f>g&amp;<![CDATA[<h>]]></f><i/></x:a><?xpacket end=\"w\"?>"});
    writeTexts(root + "/barejpeg", {gdepthFile(photo, plane), jpeg, withSegments(jpeg, {exifSegment(6)})});
    writeTexts(root + "/gdepth", {gdepthFile(photo, plane), gdepthFile(photo, plane, inline_data),
                                  gdepthFile(photo, plane, with_original), gdepthFile(photo, plane, linear)});

    XdmOptions appended, elements;
    appended.appended = true;
    appended.original = jpeg;
    elements.manner.elements = true;
    elements.google_directory = elements.appended = true;
    writeTexts(root + "/xdm",
               {xdmFile(photo, plane), xdmFile(photo, plane, appended), xdmFile(photo, plane, elements)});

    AppendedOptions all, broken;
    all.original = all.gain_map = all.confidence = jpeg;
    all.matte = png;
    all.video = std::string(
                    "\0\0\0\x18"
                    "ftypmp42",
                    12) +
                std::string(12, '\0');
    all.padding = 7;
    all.orientation = 8;
    broken.gap = "gap";
    broken.behind = "behind";
    broken.depth_length = "99999999999";
    broken.manner.elements = true;
    writeTexts(root + "/dynamicdepth", {dynamicDepthFile(photo, plane), dynamicDepthFile(photo, plane, all),
                                        dynamicDepthFile(photo, plane, broken)});
    writeTexts(root + "/gcontainer",
               {gcontainerFile(photo, plane), gcontainerFile(photo, plane, all),
                gcontainerFile(photo, plane, broken), twoDirectoriesFile(photo, plane, all, broken)});

    AppleJpegOptions metres, others;
    metres.native_format = "hdep";
    metres.attributes = true;
    others.matte_first = others.gain_map_first = true;
    others.big_endian = false;
    others.offset_error = 3;
    writeTexts(root + "/applejpeg", {appleJpegFile(photo, plane), appleJpegFile(photo, plane, metres),
                                     appleJpegFile(photo, plane, others)});

    const RgbImage large_photo = somePhoto(128, 128);
    const GrayImage large_plane = somePlane(128, 128);
    AppleHeicOptions turned, avif;
    turned.photo_turns = turned.depth_turns = 1;
    turned.matte = turned.gain_map = true;
    turned.range = AppleHeicOptions::Range{1, 0.5, 2.5, {}, {}};
    avif.avif = true;
    writeTexts(root + "/appleheic",
               {appleHeicFile(large_photo, large_plane), appleHeicFile(large_photo, large_plane, turned),
                appleHeicFile(large_photo, large_plane, avif)});

    for (const int version : {1, 3, 4, 5, 6}) {
        SamsungOptions options;
        options.version = version;
        if (version % 2 == 1) options.unblurred = jpeg;
        options.reversed = version == 3;
        std::filesystem::create_directories(root + "/samsungtrailer");
        std::ofstream(root + "/samsungtrailer/" + std::to_string(version), std::ios::binary)
            << samsungFile(jpeg, plane, options);
    }

    HuaweiOptions huawei_turned;
    huawei_turned.orientation = 0x13;
    huawei_turned.unblurred = jpeg;
    writeTexts(root + "/huaweitrailer", {huaweiFile(jpeg, plane), huaweiFile(jpeg, plane, huawei_turned)});

    // The last byte chooses the half.
    const GrayImage beside = somePlane(32, 24);
    writeTexts(root + "/sidebyside", {sideBySideFile(photo, beside, DepthHalf::kRight) + '\0',
                                      sideBySideFile(photo, beside, DepthHalf::kLeft, 1) + '\1',
                                      sideBySideFile(photo, beside, DepthHalf::kBelow, 1) + '\2',
                                      sideBySideFile(photo, beside, DepthHalf::kAbove) + '\3'});
}

/// Files with a stereo pair inside, of every container, some of them broken.
void writePairs(const std::string& root) {
    using namespace quorvane::test;
    const std::string left = jpegFile(somePhoto(32, 24)), right = jpegFile(somePhoto(16, 12));
    MpoOptions several, misplaced;
    several.preview = several.third = right;
    several.big_endian = false;
    misplaced.offset_error = 3;
    writeTexts(root + "/mpo",
               {mpoFile(left, right), mpoFile(left, right, several), mpoFile(left, right, misplaced)});

    LifOptions disparity, compact;
    disparity.disparity = pngFile(somePlane(16, 12));
    disparity.jpeg_is_right = true;
    compact.spaces = false;
    writeTexts(root + "/lif", {lifFile(left, right), lifFile(left, right, disparity),
                               lifFile(left, right, compact), lifXmpFile(left, right)});
    writeTexts(root + "/vrphoto", {vrPhotoFile(left, right), vrPhotoFile(left, right, false)});
    writeTexts(root + "/jps", {jpsFile(left, 4), jpsFile(left, 0), jpsFile(left, 6), jpsFile(left, 5, 3),
                               jpsFile(left, 4, 4), jpsFile(left, 4, 2, 0)});

    const RgbImage large_left = somePhoto(128, 128), large_right = somePhoto(128, 128);
    // No AVIF: its decoder takes gigabytes at a word of the file, which only the worker's limit ends.
    StereoHeicOptions other, missing;
    other.photo_is_right = true;
    missing.second_view = 77;
    writeTexts(root + "/stereoheic",
               {stereoHeicFile(large_left, large_right), stereoHeicFile(large_left, large_right, other),
                stereoHeicFile(large_left, large_right, missing)});
}

/// The networks of the tests, and what lies beside one of them.
void copyNetworks(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(NETWORKS)) {
        const std::filesystem::path extension = entry.path().extension();
        if (extension == ".onnx" || extension == ".json")
            std::filesystem::copy_file(entry.path(), folder / entry.path().filename(),
                                       std::filesystem::copy_options::overwrite_existing);
    }
}

void makeSeeds(const std::string& root) {
    copyNetworks(root + "/onnx");
    writeContainers(root);
    writePairs(root);
    writeTexts(root + "/properties",
               {"# tuned\nquorvane.para1=40\n\nquorvane.para12 = 0.81\r\n", "key=a=b\nnonsense\n=none\nlast",
                "long=" + std::string(92, 'x') + "\n"});
    writeTexts(root + "/settings",
               {"fov_scale=0.81", "rotate_x_boundary=-12", "guided_filter_rx=2", "guided_filter_eps=1e-6",
                "border_deadzone=64", "1280x720", "16384x1", "0.5,-0.2", "-1,1", "fov=1", "fov_scale=1e999"});
    writeTexts(root + "/profile",
               {R"({"quorvane_profile": 1, "parameters": {"fov_scale": 0.81, "guided_filter_eps": 1e-06},)"
                R"( "options": {"frame": "auto", "pivot": "0.5,0.4", "size": 1280, "no-doctor": true}})",
                R"({"quorvane_profile": 2})", R"({"quorvane_profile": 1, "\n": [1e999, null, "\u00e4"]})"});
    writeTexts(root + "/motion",
               {"sway+zoom", "x=0.8sin(-1)-0.1sin(3,0.25) y=-cos(2) zoom=1.5", "-1,0 1,0.5 0,0,2",
                "{\"t\":1e3,\"x\":0,\"y\":-1}\n\n{\"t\":1000.5,\"x\":1,\"y\":0.5,\"zoom\":2}\n",
                "{\"t\":0,\"x\":-1,\"y\":0}\r\n{\"t\":1,\"x\":1,\"y\":0}\r\n{\"t\":2,\"x\":-1,\"y\":0}"});
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
