#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/embedded/embedded.h"
#include "media/embedded/jpeg.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/xmp_depth.h"

namespace quorvane::media {
namespace {

using test::AppendedOptions;
using test::dynamicDepthFile;
using test::jpegFile;
using test::pngFile;
using test::somePhoto;
using test::somePlane;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const RgbImage kPhoto = somePhoto(160, 120);
const GrayImage kPlane = somePlane(80, 60);

/// With an unblurred photo before the plane and a confidence behind it.
AppendedOptions three() {
    AppendedOptions options;
    options.original = jpegFile(somePhoto(158, 118));
    options.confidence = pngFile(somePlane(20, 15));
    return options;
}

std::string fileOf(const AppendedOptions& options) { return dynamicDepthFile(kPhoto, kPlane, options); }

/// Expects the whole plane, wherever it lies; returns the remarks.
std::vector<std::string> remarksBesideThePlane(const std::string& file) {
    const Contents contents = lookInside(file);
    EXPECT_TRUE(contents.depth);
    if (contents.depth) {
        EXPECT_EQ(contents.depth->container, "Dynamic Depth 1.0");
        EXPECT_TRUE(planeBytes(*contents.depth) == pngFile(kPlane));
        EXPECT_EQ(contents.depth->where, "PNG at byte " + std::to_string(file.find(pngFile(kPlane))));
    }
    return contents.remarks;
}

/// Expects no plane; returns the remarks.
std::vector<std::string> remarksWithoutPlane(const std::string& file) {
    const Contents contents = lookInside(file);
    EXPECT_FALSE(contents.depth);
    EXPECT_FALSE(contents.original);
    return contents.remarks;
}

std::string replaced(std::string text, const std::string& old, const std::string& fresh) {
    return text.replace(text.find(old), old.size(), fresh);
}

TEST(DynamicDepth, GivesThePlaneAndWhatItMeans) {
    const std::string file = fileOf(AppendedOptions());
    const Contents contents = lookInside(file);
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    const EmbeddedDepth& depth = *contents.depth;
    EXPECT_EQ(depth.container, "Dynamic Depth 1.0");
    EXPECT_EQ(depth.where, "PNG at byte " + std::to_string(file.size() - pngFile(kPlane).size()));
    EXPECT_EQ(planeBytes(depth), pngFile(kPlane));
    EXPECT_TRUE(std::holds_alternative<DepthPicture>(depth.plane));
    EXPECT_EQ(depth.kind, DepthKind::kInverseRange);
    EXPECT_FALSE(depth.larger_is_nearer);
    EXPECT_EQ(depth.polarity_reason, "Dynamic Depth stores 0 for near");
    EXPECT_EQ(depth.near, 0.5);
    EXPECT_EQ(depth.far, 8.0);
    EXPECT_EQ(depth.units, "m");
    EXPECT_FALSE(contents.original);
    ASSERT_EQ(contents.images.size(), 2u);
    EXPECT_EQ(contents.images[0].bytes, file.size() - pngFile(kPlane).size());
}

TEST(DynamicDepth, ItemsAreToldApartByTheirNames) {
    AppendedOptions options = three();
    options.gain_map = jpegFile(somePlane(40, 30));
    options.matte = pngFile(somePlane(81, 61));
    options.video = std::string("\0\0\0\x18", 4) + "ftypisom" + std::string(500, 'v');
    options.orientation = 8;
    options.terms.format = "RangeLinear";
    for (const bool elements : {false, true})
        for (const char* suffix : {"", "_"})
            for (const int padding : {0, 13}) {
                options.manner = {elements, suffix};
                options.padding = padding;
                const std::string file = fileOf(options);
                EXPECT_THAT(remarksBesideThePlane(file), IsEmpty());
                const Contents contents = lookInside(file);
                ASSERT_TRUE(contents.depth);
                EXPECT_EQ(contents.depth->orientation, 8);
                EXPECT_EQ(contents.depth->kind, DepthKind::kLinearRange);
                ASSERT_TRUE(contents.original);
                EXPECT_EQ(contents.original->bytes, options.original);
                EXPECT_EQ(contents.original->orientation, 8);
                EXPECT_EQ(contents.original->where,
                          "JPEG at byte " + std::to_string(file.find(options.original)));

                std::vector<ImageRole> roles;
                for (const InnerImage& image : contents.images) roles.push_back(image.role);
                EXPECT_THAT(roles, ElementsAre(ImageRole::kPhoto, ImageRole::kOriginal, ImageRole::kOther,
                                               ImageRole::kOther, ImageRole::kDepth, ImageRole::kConfidence,
                                               ImageRole::kVideo));
                EXPECT_EQ(contents.images[3].bytes, options.matte.size());
                EXPECT_EQ(contents.images[6].mime, "video/mp4");
            }
}

TEST(DynamicDepth, BytesBehindTheItemsDoNotMatter) {
    AppendedOptions options = three();
    options.behind = jpegFile(somePhoto(30, 20)) + "trailer";
    EXPECT_THAT(remarksBesideThePlane(fileOf(options)), IsEmpty());
}

TEST(DynamicDepth, BytesBeforeTheItemsAreGotAroundFromTheEnd) {
    AppendedOptions options = three();
    options.gap = "something else";
    EXPECT_THAT(remarksBesideThePlane(fileOf(options)),
                ElementsAre(HasSubstr("its depth item does not lie where its directory puts it"),
                            HasSubstr("its unblurred photo does not lie where its directory puts it")));
}

TEST(DynamicDepth, WrongLengthBeforeThePlaneIsGotAround) {
    for (const char* length : {"100", "1", "999999999", "99999999999999999999", "-5", "0", "x"}) {
        SCOPED_TRACE(length);
        AppendedOptions options = three();
        options.original_length = length;  // shorter ones lay the plane over the unblurred photo
        EXPECT_THAT(remarksBesideThePlane(fileOf(options)),
                    testing::Contains(HasSubstr("its depth item does not lie where its directory puts it")));
    }
}

TEST(DynamicDepth, WrongLengthOfThePlaneIsCorrected) {
    for (const char* length : {"100", "999999999", "x"}) {
        SCOPED_TRACE(length);
        AppendedOptions options = three();
        options.depth_length = length;
        const std::string file = fileOf(options);
        EXPECT_THAT(remarksBesideThePlane(file),
                    ElementsAre("Dynamic Depth 1.0: its depth item is not as long as its directory says"));
        const Contents contents = lookInside(file);
        ASSERT_EQ(contents.images.size(), 4u);
        EXPECT_EQ(contents.images[3].bytes, options.confidence.size()) << "found from the end";
    }
}

TEST(DynamicDepth, ItemsInAnotherOrderAreFoundByTheirLengths) {
    AppendedOptions options = three();
    options.reversed = true;
    const std::string file = fileOf(options);
    EXPECT_THAT(remarksBesideThePlane(file), testing::Contains(HasSubstr("it was found by its length")));
    const Contents contents = lookInside(file);
    ASSERT_TRUE(contents.original);
    EXPECT_TRUE(contents.original->bytes == options.original);
}

TEST(DynamicDepth, ItemsOfOneLengthAreNotMixedUp) {
    AppendedOptions options = three();
    options.confidence = pngFile(kPlane);
    options.confidence[options.confidence.size() / 2] ^= 1;
    // So that neither end of the file leads to them.
    options.original_length = "100";
    options.behind = "trailer";
    const std::string file = fileOf(options);
    EXPECT_EQ(remarksBesideThePlane(file).size(), 2u);
    const Contents contents = lookInside(file);
    ASSERT_EQ(contents.images.size(), 4u);
    EXPECT_EQ(contents.images[3].role, ImageRole::kConfidence);
    EXPECT_EQ(contents.images[3].where, "PNG at byte " + std::to_string(file.find(options.confidence)));
}

TEST(DynamicDepth, LengthMayIncludeZeroesBehindThePlane) {
    AppendedOptions options;
    options.behind = std::string(10, '\0');
    options.depth_length = std::to_string(pngFile(kPlane).size() + 10);
    EXPECT_THAT(remarksBesideThePlane(fileOf(options)), IsEmpty());
}

TEST(DynamicDepth, PhotoWithoutItsEndIsGotAround) {
    const std::string file = fileOf(AppendedOptions());
    std::string damaged = file;
    damaged.erase(static_cast<size_t>(walkJpeg(file)->end) - 2, 2);
    EXPECT_THAT(remarksBesideThePlane(damaged), ElementsAre(HasSubstr("its depth item does not lie where")));
}

TEST(DynamicDepth, CutFilesAreSaid) {
    AppendedOptions options = three();
    const std::string file = fileOf(options);
    const std::string cut = file.substr(0, file.find(pngFile(kPlane)) + 50);
    const Contents contents = lookInside(cut);
    EXPECT_FALSE(contents.depth);
    EXPECT_THAT(contents.remarks, ElementsAre("Dynamic Depth 1.0: its depth item lies outside the file"));
    EXPECT_THAT(remarksWithoutPlane(file.substr(0, static_cast<size_t>(walkJpeg(file)->end))),
                ElementsAre("Dynamic Depth 1.0: its depth item lies outside the file",
                            "Dynamic Depth 1.0: its unblurred photo lies outside the file"));
}

TEST(DynamicDepth, OtherBytesInThePlanesPlaceAreSaid) {
    std::string file = fileOf(AppendedOptions());
    file[file.find(pngFile(kPlane))] = 'x';
    EXPECT_THAT(
        remarksWithoutPlane(file),
        ElementsAre("Dynamic Depth 1.0: its depth item is no whole picture where its directory puts it"));
}

TEST(DynamicDepth, FilmIsNoDepth) {
    AppendedOptions options;
    options.depth_mime = "video/mp4";
    std::string file = fileOf(options);
    file.replace(file.find(pngFile(kPlane)), 12, std::string("\0\0\0\x18", 4) + "ftypisom");
    EXPECT_THAT(remarksWithoutPlane(file), ElementsAre("Dynamic Depth 1.0: its depth item is a film"));
}

TEST(DynamicDepth, MissingPartsAreSaid) {
    const std::string file = fileOf(three());
    std::string without_directory = file;
    for (int i = 0; i < 2; ++i)
        without_directory = replaced(without_directory, "Container:Directory", "Container:Dyrectory");
    EXPECT_THAT(remarksWithoutPlane(without_directory),
                ElementsAre("Dynamic Depth 1.0: the directory of its items is missing"));
    EXPECT_THAT(lookInside(replaced(file, "android/depthmap", "android/someitem")).remarks,
                ElementsAre("Dynamic Depth 1.0: its depth item is not in its directory"));
}

TEST(DynamicDepth, DirectoryOfThousandsIsReadQuickly) {
    std::string items;
    for (int i = 0; i < 1000; ++i) items += "<rdf:li c:Mime=\"image/png\" c:Length=\"1\"/>";
    const std::string packet =
        "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" "
        "xmlns:c=\"http://ns.google.com/photos/dd/1.0/container/\"><c:Directory>" +
        items + "</c:Directory><c:DepthMap c:DepthURI=\"a\"/></rdf:RDF>";
    const Contents contents = lookInside(test::withSegments(jpegFile(kPhoto), {test::xmpSegment(packet)}));
    EXPECT_THAT(contents.remarks, ElementsAre(HasSubstr("not in its directory")));
}

/// A photo with this directory and a description of the depth item "d"; `behind` lies behind the photo.
std::string listing(const std::vector<std::string>& items, const std::string& behind) {
    std::string packet =
        "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" "
        "xmlns:c=\"http://ns.google.com/photos/dd/1.0/container/\"><c:Directory>"
        "<rdf:li c:Mime=\"image/jpeg\"/>";
    for (const std::string& item : items) packet += "<rdf:li c:Mime=\"image/png\" " + item + "/>";
    packet += "</c:Directory><c:DepthMap c:DepthURI=\"d\"/></rdf:RDF>";
    return test::withSegments(jpegFile(kPhoto), {test::xmpSegment(packet)}) + behind;
}

std::string itemOf(const std::string& file, const std::string& properties) {
    return "c:Length=\"" + std::to_string(file.size()) + "\" " + properties;
}

TEST(DynamicDepth, PaddingBehindAnItemIsPassedOver) {
    const std::string plane = pngFile(kPlane), other = pngFile(somePlane(20, 15)), zeroes(7, '\0');
    EXPECT_THAT(
        remarksBesideThePlane(listing({itemOf(other, "c:Padding=\"7\""), itemOf(plane, "c:DataURI=\"d\"")},
                                      other + zeroes + plane)),
        IsEmpty());
    // Where only the file's end leads to it.
    EXPECT_THAT(
        remarksBesideThePlane(listing({itemOf(plane, "c:DataURI=\"d\" c:Padding=\"7\""), itemOf(other, "")},
                                      "something else" + plane + zeroes + other)),
        ElementsAre(HasSubstr("its depth item does not lie where its directory puts it")));
}

TEST(DynamicDepth, PictureOfOneItemIsNotTakenForAnother) {
    // The unblurred photo is gone, and its wrong length leads to the plane.
    const std::string plane = pngFile(kPlane);
    const Contents contents = lookInside(
        listing({"c:Length=\"100\" c:Semantic=\"Original\"", itemOf(plane, "c:DataURI=\"d\"")}, plane));
    ASSERT_TRUE(contents.depth);
    EXPECT_TRUE(planeBytes(*contents.depth) == plane);
    EXPECT_FALSE(contents.original);
    EXPECT_THAT(contents.remarks, testing::Contains(HasSubstr("its unblurred photo is no whole picture")));
}

TEST(DynamicDepth, ThirtyOneItemsAreRead) {
    const std::string plane = pngFile(kPlane);
    for (const size_t before : {30u, 31u}) {
        std::vector<std::string> items(before, "c:Length=\"0\"");
        items.push_back(itemOf(plane, "c:DataURI=\"d\""));
        const std::string file = listing(items, plane);
        if (before == 30)
            EXPECT_THAT(remarksBesideThePlane(file), IsEmpty());
        else
            EXPECT_THAT(remarksWithoutPlane(file), ElementsAre(HasSubstr("not in its directory")));
    }
}

TEST(DynamicDepth, EveryCutIsSurvived) {
    const std::string file = fileOf(three());
    for (size_t size = 0; size < file.size(); size += 37) lookInside(file.substr(0, size));
}

}  // namespace
}  // namespace quorvane::media
