// A depth map written into a photo's file, and read back.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "media/embedded/embedded.h"
#include "media/picture/picture_file.h"
#include "process.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/stereo.h"
#include "support/processes.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using media::DepthMap;
using media::GrayImage;
using testing::Contains;
using testing::HasSubstr;

double meanDifference(const media::RgbImage& a, const media::RgbImage& b) {
    EXPECT_EQ(a.samples.size(), b.samples.size());
    double sum = 0.0;
    for (size_t i = 0; i < std::min(a.samples.size(), b.samples.size()); ++i)
        sum += std::abs(a.samples[i] - b.samples[i]);
    return sum / static_cast<double>(a.samples.size());
}

class Embed : public testing::Test {
  protected:
    Embed() {
        // Larger is nearer; every level but the last few is there.
        for (int y = 0; y < 96; ++y)
            for (int x = 0; x < 128; ++x)
                depth.at(x, y) = static_cast<uint8_t>(x + (x > 90 && y < 30 ? 100 : y / 4));
        writeBytes(folder / "depth.png", pngFile(depth));
        writeBytes(folder / "photo.jpg", jpegFile(photo));
    }

    std::string embedded(const std::string& name, const std::string& photo_file,
                         const std::string& depth_file, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments = {"embed", folder / photo_file, folder / depth_file,
                                              "-o",    folder / name,       "--no-doctor"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return bytesOf(folder / name);
    }

    /// The depth inside a file as `extract` gives it.
    DepthMap extracted(const std::string& name) const {
        const Outcome outcome = quorvane({"extract", folder / name, "-o", folder / "out.png"});
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return media::readDepthMap(folder / "out.png");
    }

    void expectSame(const DepthMap& found) const {
        ASSERT_EQ(found.plane.width, depth.width);
        ASSERT_EQ(found.plane.height, depth.height);
        for (size_t i = 0; i < depth.samples.size(); ++i)
            ASSERT_EQ(found.plane.samples[i], static_cast<float>(depth.samples[i])) << i;
    }

    const TemporaryFolder folder;
    const media::RgbImage photo = somePhoto(256, 192);
    GrayImage depth{128, 96};
};

TEST_F(Embed, ReadsBackTheSamePlaneInBothForms) {
    const std::string file = embedded("portrait.jpg", "photo.jpg", "depth.png");
    expectSame(extracted("portrait.jpg"));
    const media::Contents contents = media::lookInside(file);
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(contents.depth->container, "Dynamic Depth 1.0");
    EXPECT_FALSE(contents.depth->larger_is_nearer) << "both forms store 0 for near";
    EXPECT_THAT(contents.remarks, testing::IsEmpty());
    std::vector<std::string> places;
    for (const media::InnerImage& image : contents.images)
        if (image.role == media::ImageRole::kDepth) places.push_back(image.where);
    EXPECT_THAT(places, Contains("GDepth:Data"));
    EXPECT_EQ(places.size(), 2u);
    // The photo is coded as it was.
    EXPECT_EQ(media::decodePhoto(file, "file").samples,
              media::decodePhoto(bytesOf(folder / "photo.jpg"), "photo").samples);
    EXPECT_THAT(file, HasSubstr(bytesOf(folder / "photo.jpg").substr(20)));
}

TEST_F(Embed, ExiftoolFindsThePlaneOfFarAndNear) {
    embedded("portrait.jpg", "photo.jpg", "depth.png", {"--near", "0.5", "--far", "20"});
    const auto said = [&](const std::string& what) {
        return outputOf("exiftool " + what + " '" + folder / "portrait.jpg" + "' 2>/dev/null");
    };
    if (said("-s3 -FileType").empty()) GTEST_SKIP() << "NO EXIFTOOL HERE, ITS READING WAS NOT TESTED";
    EXPECT_EQ(said("-s3 -Warning -Error"), "");
    EXPECT_EQ(said("-s3 -XMP-GDepth:Format -XMP-GDepth:Near -XMP-GDepth:Far -XMP-GDepth:Units"),
              "RangeInverse\n0.5\n20\nm\n");
    const media::DepthMap stored = media::decodeDepthMap(said("-b -XMP-GDepth:DepthImage"), "GDepth");
    ASSERT_EQ(stored.plane.samples.size(), depth.samples.size());
    for (size_t i = 0; i < depth.samples.size(); ++i)
        ASSERT_EQ(stored.plane.samples[i], 255.0f - static_cast<float>(depth.samples[i]));
}

TEST_F(Embed, KeepsSixteenBits) {
    media::Image<uint16_t, 1> deep(64, 48);
    for (size_t i = 0; i < deep.samples.size(); ++i) deep.samples[i] = static_cast<uint16_t>(i * 21);
    writeBytes(folder / "deep.png", pngFile(deep));
    embedded("portrait.jpg", "photo.jpg", "deep.png");
    // What `extract` spreads over the range is not asked: the plane as the file has it.
    const DepthMap found = media::decodeDepthMap(
        std::get<media::DepthPicture>(media::lookInside(bytesOf(folder / "portrait.jpg")).depth->plane).bytes,
        "plane");
    EXPECT_EQ(found.bits, 16);
    for (size_t i = 0; i < deep.samples.size(); ++i)
        ASSERT_NEAR(static_cast<double>(found.plane.samples[i]) * 257.0, 65535.0 - deep.samples[i], 0.02);
}

TEST_F(Embed, JfifStaysFirst) {
    const std::string jfif = segment(0xe0, std::string("JFIF\0\1\2\0\0\1\0\1\0\0", 14));
    writeBytes(folder / "jfif.jpg", withSegments(jpegFile(photo), {jfif}));
    EXPECT_EQ(embedded("portrait.jpg", "jfif.jpg", "depth.png").substr(2, jfif.size()), jfif);
}

// XMP's first form has 64 KB a piece.
TEST_F(Embed, LargePlanesAreStoredInPieces) {
    media::Image<uint16_t, 1> noise(200, 150);
    unsigned state = 1;
    for (uint16_t& sample : noise.samples)
        sample = static_cast<uint16_t>((state = state * 1103515245 + 12345) >> 16);
    writeBytes(folder / "noise.png", pngFile(noise));
    const std::string file = embedded("portrait.jpg", "photo.jpg", "noise.png");
    const media::Contents contents = media::lookInside(file);
    EXPECT_THAT(contents.remarks, testing::IsEmpty());
    // One form has the plane whole, behind the photo, and the other in XMP.
    const std::string plane = std::get<media::DepthPicture>(contents.depth->plane).bytes;
    EXPECT_EQ(file.substr(file.size() - plane.size()), plane);
    EXPECT_GT(plane.size(), 59000u);
    std::vector<uint64_t> sizes;
    for (const media::InnerImage& image : contents.images)
        if (image.role == media::ImageRole::kDepth) sizes.push_back(image.bytes);
    EXPECT_THAT(sizes, testing::ElementsAre(plane.size(), plane.size()));
    if (std::system("exiftool -ver > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "NO EXIFTOOL HERE, ITS READING WAS NOT TESTED";
    EXPECT_EQ(outputOf("exiftool -b -XMP-GDepth:DepthImage '" + folder / "portrait.jpg" + "' 2>/dev/null"),
              plane);
}

TEST_F(Embed, DepthLiesAsThePhotoIsStored) {
    for (const int orientation : {2, 3, 5, 6, 8}) {
        const bool lies = orientation >= 5;
        const media::RgbImage stored = lies ? somePhoto(192, 256) : photo;
        writeBytes(folder / "turned.jpg", withSegments(jpegFile(stored), {exifSegment(orientation)}));
        embedded("portrait.jpg", "turned.jpg", "depth.png");
        expectSame(extracted("portrait.jpg"));
        const media::Contents contents = media::lookInside(bytesOf(folder / "portrait.jpg"));
        EXPECT_EQ(contents.orientation, orientation) << "Exif is kept";
        const DepthMap plane =
            media::decodeDepthMap(std::get<media::DepthPicture>(contents.depth->plane).bytes, "plane");
        EXPECT_EQ(plane.plane.width > plane.plane.height, !lies) << orientation;
    }
}

TEST_F(Embed, ReplacesWhatWasThereBefore) {
    embedded("first.jpg", "photo.jpg", "depth.png");
    GrayImage other = depth;
    for (uint8_t& level : other.samples) level = static_cast<uint8_t>(level / 2 + 60);
    writeBytes(folder / "other.png", pngFile(other));
    const std::string file = embedded("second.jpg", "first.jpg", "other.png");
    const media::Contents contents = media::lookInside(file);
    EXPECT_THAT(contents.remarks, testing::IsEmpty());
    EXPECT_EQ(
        std::count_if(contents.images.begin(), contents.images.end(),
                      [](const media::InnerImage& image) { return image.role == media::ImageRole::kDepth; }),
        2);
    EXPECT_EQ(extracted("second.jpg").plane.at(0, 0), 60.0f);
    const auto pieces = [](const std::string& bytes) {
        int count = 0;
        for (size_t at = 0; (at = bytes.find("http://ns.adobe.com/xmp/extension/", at)) != std::string::npos;
             ++at)
            ++count;
        return count;
    };
    EXPECT_EQ(pieces(file), pieces(bytesOf(folder / "first.jpg")));

    // A second view, and the index that says where it is, stay behind.
    writeBytes(folder / "pair.mpo", mpoFile(jpegFile(photo), jpegFile(photo)));
    EXPECT_THAT(bytesOf(folder / "pair.mpo"), HasSubstr(std::string("MPF\0", 4)));
    EXPECT_THAT(embedded("single.jpg", "pair.mpo", "depth.png"),
                testing::Not(HasSubstr(std::string("MPF\0", 4))));
}

TEST_F(Embed, HeicHoldsItAsAnAuxiliaryPicture) {
    const std::string file = embedded("portrait.heic", "photo.jpg", "depth.png");
    expectSame(extracted("portrait.heic"));
    const media::Contents contents = media::lookInside(file);
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(contents.depth->container, "Apple HEIC");
    EXPECT_TRUE(contents.depth->larger_is_nearer);
    EXPECT_LT(meanDifference(media::decodePhoto(file, "file"), photo), 4.0);
}

// HEVC codes whole blocks of two by two.
TEST_F(Embed, HeicHasOddSidesToo) {
    GrayImage odd(97, 61);
    for (size_t i = 0; i < odd.samples.size(); ++i) odd.samples[i] = static_cast<uint8_t>(i * i % 251);
    const media::RgbImage odd_photo = somePhoto(255, 193);
    writeBytes(folder / "odd.png", pngFile(odd));
    writeBytes(folder / "odd.jpg", jpegFile(odd_photo));
    const std::string file = embedded("portrait.heic", "odd.jpg", "odd.png");
    const DepthMap found = extracted("portrait.heic");
    ASSERT_EQ(found.plane.width, odd.width);
    ASSERT_EQ(found.plane.height, odd.height);
    for (size_t i = 0; i < odd.samples.size(); ++i)
        ASSERT_EQ(found.plane.samples[i], static_cast<float>(odd.samples[i])) << i;
    const media::RgbImage shown = media::decodePhoto(file, "file");
    ASSERT_EQ(shown.width, 255);
    ASSERT_EQ(shown.height, 193);
    EXPECT_LT(meanDifference(shown, odd_photo), 4.0);
    // Readers that do not know how to cut a picture refuse it: of each of both, that and its coding are
    // essential.
    size_t at = file.find("ipma") + 12;
    for (int item = 0; item < 2; ++item) {
        int essential = 0;
        const int count = file[at + 2];
        for (int i = 0; i < count; ++i)
            essential += (file[at + 3 + static_cast<size_t>(i)] & 0x80) != 0 ? 1 : 0;
        EXPECT_EQ(essential, 2) << item;
        at += 3 + static_cast<size_t>(count);
    }
}

// Readers show an item that is not hidden as a picture of its own.
TEST_F(Embed, HeicShowsThePhotoAlone) {
    const std::string file = embedded("portrait.heic", "photo.jpg", "depth.png");
    std::vector<int> hidden;
    for (size_t at = 0; (at = file.find("infe", at)) != std::string::npos; at += 4)
        hidden.push_back(file[at + 7]);
    EXPECT_THAT(hidden, testing::ElementsAre(0, 1));
}

TEST_F(Embed, WhatCannotBeIsRefusedAndNothingIsWritten) {
    const auto refused = [&](const std::vector<std::string>& more, int code, const char* said) {
        std::vector<std::string> arguments = {"embed", folder / "photo.jpg", folder / "depth.png"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const std::vector<std::string> before = folder.names();
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, code) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(said));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_EQ(folder.names(), before);
    };
    refused({"-o", folder / "a.png"}, 2, ".jpg or a .heic");
    refused({"-o", folder / "a.jpg", "--near", "3"}, 2, "go together");
    refused({"-o", folder / "a.jpg", "--near", "3", "--far", "2"}, 2, "less than far");
    refused({"-o", folder / "a.heic", "--near", "1", "--far", "2"}, 2, "distances");
    refused({"-o", folder / "photo.jpg"}, 1, "is an input");
}

}  // namespace
}  // namespace quorvane::test
