#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/embedded/embedded.h"
#include "support/photo_writers/pictures.h"
#include "support/photo_writers/xmp_depth.h"

namespace quorvane::media {
namespace {

using test::base64;
using test::jpegFile;
using test::pngFile;
using test::somePhoto;
using test::somePlane;
using test::xdmFile;
using test::XdmOptions;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const RgbImage kPhoto = somePhoto(160, 120);
const GrayImage kPlane = somePlane(80, 60);

TEST(Xdm, GivesThePlaneAndWhatItMeans) {
    const Contents contents = lookInside(xdmFile(kPhoto, kPlane));
    EXPECT_THAT(contents.remarks, IsEmpty());
    ASSERT_TRUE(contents.depth);
    const EmbeddedDepth& depth = *contents.depth;
    EXPECT_EQ(depth.container, "XDM 1.0");
    EXPECT_EQ(depth.where, "Depthmap:Data");
    EXPECT_EQ(planeBytes(depth), pngFile(kPlane));
    EXPECT_EQ(depth.kind, DepthKind::kInverseRange);
    EXPECT_FALSE(depth.larger_is_nearer);
    EXPECT_EQ(depth.polarity_reason, "XDM stores 0 for near");
    EXPECT_EQ(depth.near, 0.5);
    EXPECT_EQ(depth.far, 8.0);
    EXPECT_EQ(depth.units, "m");
    EXPECT_FALSE(contents.original);
}

TEST(Xdm, PlaneIsInlineOrBehindThePhoto) {
    for (const bool appended : {false, true})
        for (const bool google : {false, true})
            for (const bool elements : {false, true}) {
                SCOPED_TRACE(std::to_string(appended) + std::to_string(google) + std::to_string(elements));
                XdmOptions options;
                options.appended = appended;
                options.google_directory = google;
                options.manner = {elements, google ? "" : "9"};
                options.original = jpegFile(somePhoto(158, 118));
                options.orientation = 6;
                options.terms.format = "RangeLinear";
                const std::string file = xdmFile(kPhoto, kPlane, options);
                const Contents contents = lookInside(file);
                EXPECT_THAT(contents.remarks, IsEmpty());
                ASSERT_TRUE(contents.depth);
                EXPECT_EQ(contents.depth->container, "XDM 1.0");
                EXPECT_TRUE(planeBytes(*contents.depth) == pngFile(kPlane));
                EXPECT_EQ(contents.depth->kind, DepthKind::kLinearRange);
                EXPECT_EQ(contents.depth->orientation, 6);
                ASSERT_TRUE(contents.original);
                EXPECT_TRUE(contents.original->bytes == options.original);
                EXPECT_EQ(contents.original->orientation, 6);
                if (appended) {
                    EXPECT_EQ(contents.depth->where,
                              "PNG at byte " + std::to_string(file.find(pngFile(kPlane))));
                }
                ASSERT_EQ(contents.images.size(), 3u);
                EXPECT_EQ(contents.images[1].role, ImageRole::kDepth);
                EXPECT_EQ(contents.images[2].role, ImageRole::kOriginal);
            }
}

/// A photo with these cameras.
std::string withCameras(const std::string& cameras) {
    return test::withSegments(
        jpegFile(kPhoto),
        {test::xmpSegment("<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\" "
                          "xmlns:D=\"http://ns.xdm.org/photos/1.0/device/\" "
                          "xmlns:C=\"http://ns.xdm.org/photos/1.0/camera/\" "
                          "xmlns:M=\"http://ns.xdm.org/photos/1.0/depthmap/\" "
                          "xmlns:I=\"http://ns.xdm.org/photos/1.0/image/\"><D:Cameras><rdf:Seq>" +
                          cameras + "</rdf:Seq></D:Cameras></rdf:RDF>")});
}

TEST(Xdm, UnblurredPhotoIsThatOfTheSameCamera) {
    const std::string left = jpegFile(somePhoto(40, 30)), right = jpegFile(somePhoto(48, 32));
    const std::string plane = pngFile(somePlane(20, 15));
    const auto camera = [](const std::string& inside) {
        return "<rdf:li><D:Camera>" + inside + "</D:Camera></rdf:li>";
    };
    const auto image = [](const std::string& file) { return "<C:Image I:Data=\"" + base64(file) + "\"/>"; };
    const std::string map = "<C:DepthMap M:Data=\"" + base64(plane) + "\"/>";

    const Contents both = lookInside(withCameras(camera(image(left)) + camera(image(right) + map)));
    ASSERT_TRUE(both.depth);
    EXPECT_TRUE(planeBytes(*both.depth) == plane);
    ASSERT_TRUE(both.original);
    EXPECT_TRUE(both.original->bytes == right);

    const Contents other_only = lookInside(withCameras(camera(image(left)) + camera(map)));
    ASSERT_TRUE(other_only.depth);
    EXPECT_FALSE(other_only.original);
}

TEST(Xdm, FirstDepthThatCanBeReadIsUsed) {
    const std::string plane = pngFile(somePlane(20, 15));
    const Contents contents =
        lookInside(withCameras("<rdf:li><D:Camera><C:DepthMap M:Data=\"!\"/></D:Camera></rdf:li>"
                               "<rdf:li><D:Camera><C:DepthMap M:Far=\"1\"/></D:Camera></rdf:li>"
                               "<rdf:li><D:Camera><C:DepthMap M:Data=\"" +
                               base64(plane) + "\"/></D:Camera></rdf:li>"));
    ASSERT_TRUE(contents.depth);
    EXPECT_TRUE(planeBytes(*contents.depth) == plane);
    EXPECT_THAT(contents.remarks, ElementsAre("XDM 1.0: its depth is not base 64",
                                              "XDM 1.0: the depth that it describes is missing"));
}

TEST(Xdm, CutFilesAreSaid) {
    XdmOptions options;
    options.appended = true;
    for (const bool google : {false, true}) {
        options.google_directory = google;
        const std::string file = xdmFile(kPhoto, kPlane, options);
        const Contents contents = lookInside(file.substr(0, file.size() - 1));
        EXPECT_FALSE(contents.depth);
        EXPECT_THAT(contents.remarks, ElementsAre("XDM 1.0: its depth lies outside the file"));
    }
}

}  // namespace
}  // namespace quorvane::media
