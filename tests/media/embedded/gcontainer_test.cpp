#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/embedded/embedded.h"
#include "media/embedded/jpeg.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/xmp_depth.h"

namespace quorvane::media {
namespace {

using test::AppendedOptions;
using test::gcontainerFile;
using test::jpegFile;
using test::pngFile;
using test::somePhoto;
using test::somePlane;
using test::twoDirectoriesFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const RgbImage kPhoto = somePhoto(160, 120);
const GrayImage kPlane = somePlane(80, 60);

std::string fileOf(const AppendedOptions& options) { return gcontainerFile(kPhoto, kPlane, options); }

TEST(GContainer, GivesThePlaneAndGDepthsTerms) {
    AppendedOptions options;
    options.orientation = 3;
    const std::string file = fileOf(options);
    const Contents contents = lookInside(file);
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    const EmbeddedDepth& depth = *contents.depth;
    EXPECT_EQ(depth.container, "GContainer");
    EXPECT_EQ(depth.where, "PNG at byte " + std::to_string(file.size() - pngFile(kPlane).size()));
    EXPECT_EQ(planeBytes(depth), pngFile(kPlane));
    EXPECT_EQ(depth.kind, DepthKind::kInverseRange);
    EXPECT_FALSE(depth.larger_is_nearer);
    EXPECT_EQ(depth.polarity_reason, "GContainer stores 0 for near");
    EXPECT_EQ(depth.near, 0.5);
    EXPECT_EQ(depth.far, 8.0);
    EXPECT_EQ(depth.units, "m");
    EXPECT_EQ(depth.orientation, 3);
}

TEST(GContainer, TermsMayBeMissing) {
    AppendedOptions options;
    options.terms = {"", "", "", ""};
    const Contents contents = lookInside(fileOf(options));
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(contents.depth->kind, DepthKind::kUnknown);
    EXPECT_FALSE(contents.depth->near);
}

TEST(GContainer, MeaningDecidesNotTheLook) {
    AppendedOptions options;
    options.original = jpegFile(somePhoto(158, 118));
    options.gain_map = jpegFile(somePlane(80, 60));
    options.matte = pngFile(somePlane(82, 60));
    options.confidence = pngFile(somePlane(20, 15));
    options.video = std::string("\0\0\0\x18", 4) + "ftypisom" + std::string(500, 'v');
    for (const bool elements : {false, true}) {
        options.manner = {elements, elements ? "x" : ""};
        options.padding = elements ? 5 : 0;
        const std::string file = fileOf(options);
        const Contents contents = lookInside(file);
        EXPECT_THAT(contents.remarks, IsEmpty());
        ASSERT_TRUE(contents.depth);
        EXPECT_TRUE(planeBytes(*contents.depth) == pngFile(kPlane));
        ASSERT_TRUE(contents.original);
        EXPECT_TRUE(contents.original->bytes == options.original);
        EXPECT_EQ(contents.original->where, "JPEG at byte " + std::to_string(file.find(options.original)));

        std::vector<ImageRole> roles;
        for (const InnerImage& image : contents.images) roles.push_back(image.role);
        EXPECT_THAT(roles, ElementsAre(ImageRole::kPhoto, ImageRole::kOriginal, ImageRole::kGainMap,
                                       ImageRole::kOther, ImageRole::kDepth, ImageRole::kConfidence,
                                       ImageRole::kVideo));
        EXPECT_EQ(contents.images[2].bytes, options.gain_map.size());
    }
}

TEST(GContainer, GainMapAloneIsNoDepth) {
    AppendedOptions options;
    options.gain_map = jpegFile(somePlane(80, 60));
    std::string file = fileOf(options);
    for (const char* text : {"GItem:Semantic=\"Depth\"", "GDepth:Format"}) {
        ASSERT_NE(file.find(text), file.npos);
        file[file.find(text) + std::string(text).size() - 2] = 'X';
    }
    const Contents contents = lookInside(file);
    EXPECT_FALSE(contents.depth);
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_EQ(contents.images.size(), 3u);
    EXPECT_EQ(contents.images[1].role, ImageRole::kGainMap);
}

TEST(GContainer, ItemsOfTheShorterNamespaceAreTheSame) {
    std::string file = test::withSegments(
        jpegFile(kPhoto),
        {test::xmpSegment("<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" "
                          "xmlns:C=\"http://ns.google.com/photos/1.0/container/\" "
                          "xmlns:I=\"http://ns.google.com/photos/1.0/item/\"><C:Directory><rdf:Seq>"
                          "<rdf:li><C:Item I:Semantic=\"Primary\" I:Mime=\"image/jpeg\"/></rdf:li>"
                          "<rdf:li I:Semantic=\"Depth\" I:Mime=\"image/png\" I:Length=\"" +
                          std::to_string(pngFile(kPlane).size()) +
                          "\"/></rdf:Seq></C:Directory></rdf:RDF>")});
    const Contents contents = lookInside(file + pngFile(kPlane));
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    EXPECT_TRUE(planeBytes(*contents.depth) == pngFile(kPlane));
}

TEST(GContainer, DamageIsSaid) {
    AppendedOptions options;
    options.original = jpegFile(somePhoto(158, 118));
    const std::string file = fileOf(options);
    EXPECT_THAT(lookInside(file.substr(0, file.size() - 1)).remarks,
                ElementsAre("GContainer: its depth item lies outside the file"));
    std::string other = file;
    other[file.find(pngFile(kPlane))] = 'x';
    EXPECT_THAT(lookInside(other).remarks,
                ElementsAre("GContainer: its depth item is no whole picture where its directory puts it"));
}

TEST(GContainer, OneDepthInTwoDirectoriesIsListedOnce) {
    AppendedOptions options;
    options.original = jpegFile(somePhoto(158, 118));
    options.gain_map = jpegFile(somePlane(40, 30));
    const Contents contents = lookInside(twoDirectoriesFile(kPhoto, kPlane, options, options));
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(contents.depth->container, "Dynamic Depth 1.0");
    std::vector<ImageRole> roles;
    for (const InnerImage& image : contents.images) roles.push_back(image.role);
    EXPECT_THAT(roles,
                ElementsAre(ImageRole::kPhoto, ImageRole::kOriginal, ImageRole::kGainMap, ImageRole::kDepth));
}

TEST(GContainer, StandsInForADirectoryThatIsWrong) {
    AppendedOptions wrong;
    wrong.depth_mime = "image/jpeg";
    wrong.depth_length = "100";
    wrong.terms.far = "20";
    const Contents contents = lookInside(twoDirectoriesFile(kPhoto, kPlane, wrong, AppendedOptions()));
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(contents.depth->container, "GContainer");
    EXPECT_TRUE(planeBytes(*contents.depth) == pngFile(kPlane));
    EXPECT_EQ(contents.depth->far, 20.0) << "in Dynamic Depth's words";
    EXPECT_THAT(
        contents.remarks,
        ElementsAre("Dynamic Depth 1.0: its depth item is no whole picture where its directory puts it"));
}

TEST(GContainer, IsWrongBesideADirectoryThatIsRight) {
    AppendedOptions wrong;
    wrong.depth_mime = "image/jpeg";
    wrong.depth_length = "999999999";
    const Contents contents = lookInside(twoDirectoriesFile(kPhoto, kPlane, AppendedOptions(), wrong));
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(contents.depth->container, "Dynamic Depth 1.0");
    EXPECT_TRUE(planeBytes(*contents.depth) == pngFile(kPlane));
    EXPECT_THAT(contents.remarks, ElementsAre("GContainer: its depth item lies outside the file"));
}

TEST(GContainer, TwoDifferentDepthsAreSaid) {
    test::GDepthOptions inside_packet;
    inside_packet.extended = false;
    const std::string older = test::gdepthFile(kPhoto, somePlane(40, 30), inside_packet);
    std::string packet;
    const auto jpeg = walkJpeg(older);
    for (const JpegSegment& segment : jpeg->segments)
        if (segment.marker == 0xe1) packet = segment.body;
    AppendedOptions without_terms;
    without_terms.terms = {"", "", "", ""};
    const Contents contents =
        lookInside(test::withSegments(fileOf(without_terms), {test::segment(0xe1, packet)}));
    ASSERT_TRUE(contents.depth);
    EXPECT_EQ(contents.depth->container, "GContainer");
    EXPECT_TRUE(planeBytes(*contents.depth) == pngFile(kPlane));
    EXPECT_THAT(contents.remarks, ElementsAre("GDepth: not used, its depth is not that of GContainer"));
}

}  // namespace
}  // namespace quorvane::media
