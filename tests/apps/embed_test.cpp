// A depth map written into a photo's file, and read back.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "media/embedded/embedded.h"
#include "media/picture/picture_file.h"
#include "process.h"
#include "support/photo_writers/pictures.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using media::DepthMap;
using media::GrayImage;
using testing::Contains;
using testing::HasSubstr;

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
        const std::string command = "exiftool " + what + " '" + folder / "portrait.jpg" + "' 2>/dev/null";
        FILE* pipe = popen(command.c_str(), "r");
        std::string text;
        for (int c = 0; pipe != nullptr && (c = fgetc(pipe)) != EOF;) text.push_back(static_cast<char>(c));
        if (pipe != nullptr) pclose(pipe);
        return text;
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
}

TEST_F(Embed, HeicHoldsItAsAnAuxiliaryPicture) {
    const std::string file = embedded("portrait.heic", "photo.jpg", "depth.png");
    expectSame(extracted("portrait.heic"));
    const media::Contents contents = media::lookInside(file);
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(contents.depth->container, "Apple HEIC");
    EXPECT_TRUE(contents.depth->larger_is_nearer);
    const media::RgbImage shown = media::decodePhoto(file, "file");
    double difference = 0.0;
    for (size_t i = 0; i < photo.samples.size(); ++i)
        difference += std::abs(shown.samples[i] - photo.samples[i]);
    EXPECT_LT(difference / static_cast<double>(photo.samples.size()), 4.0);
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
