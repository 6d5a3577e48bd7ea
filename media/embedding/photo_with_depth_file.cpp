#include "media/embedding/photo_with_depth_file.h"

#include <glib.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "media/embedded/bytes.h"
#include "media/embedded/jpeg.h"
#include "media/embedding/heif_writing.h"
#include "media/embedding/written_bytes.h"
#include "media/picture/picture_file.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

using namespace std::string_literals;

constexpr uint8_t kApp1 = 0xe1, kApp2 = 0xe2;
constexpr size_t kStart = 2;  // a JPEG's first marker

const std::string kXmpSignature = "http://ns.adobe.com/xap/1.0/\0"s;
const std::string kExtendedSignature = "http://ns.adobe.com/xmp/extension/\0"s;

bool describesTheFile(const JpegSegment& segment) {
    return (segment.marker == kApp1 &&
            (startsWith(segment.body, kXmpSignature) || startsWith(segment.body, kExtendedSignature))) ||
           (segment.marker == kApp2 && startsWith(segment.body, "MPF\0"s));
}

std::string nameSpace(const std::string& prefix, const std::string& uri) {
    return " xmlns:" + prefix + "=\"" + uri + "\"";
}

constexpr char kGDepth[] = "http://ns.google.com/photos/1.0/depthmap/";

/// What both forms say of the samples. Without distances the farthest is as good as infinitely far, in no
/// unit.
std::string terms(const std::string& prefix, const std::optional<DepthRange>& range) {
    const DepthRange said = range.value_or(DepthRange{1.0, 1000.0});
    char text[200];
    std::snprintf(text, sizeof text, " %s:Format=\"RangeInverse\" %s:Near=\"%.9g\" %s:Far=\"%.9g\"",
                  prefix.c_str(), prefix.c_str(), said.near, prefix.c_str(), said.far);
    return text + (range ? " " + prefix + ":Units=\"m\"" : "");
}

/// https://developer.android.com/static/media/camera/camera2/Dynamic-depth-v1.0.pdf
std::string dynamicDepth(size_t depth_bytes, const std::optional<DepthRange>& range) {
    const auto item = [](const std::string& mime, size_t length, const std::string& uri) {
        return "<rdf:li rdf:parseType=\"Resource\"><Container:Item Item:Mime=\"" + mime +
               "\" Item:Length=\"" + std::to_string(length) + "\" Item:DataURI=\"" + uri + "\"/></rdf:li>";
    };
    return "<Device:Profiles><rdf:Seq><rdf:li rdf:parseType=\"Resource\"><Device:Profile "
           "Profile:Type=\"DepthPhoto\"><Profile:CameraIndices><rdf:Seq><rdf:li>0</rdf:li></rdf:Seq>"
           "</Profile:CameraIndices></Device:Profile></rdf:li></rdf:Seq></Device:Profiles>"
           "<Device:Container rdf:parseType=\"Resource\"><Container:Directory><rdf:Seq>" +
           item("image/jpeg", 0, "primary_image") + item("image/png", depth_bytes, "android/depthmap") +
           "</rdf:Seq></Container:Directory></Device:Container>"
           "<Device:Cameras><rdf:Seq><rdf:li rdf:parseType=\"Resource\"><Device:Camera "
           "rdf:parseType=\"Resource\"><Camera:Image Image:ItemSemantic=\"Primary\" "
           "Image:ItemURI=\"primary_image\"/><Camera:DepthMap" +
           terms("DepthMap", range) +
           " DepthMap:DepthURI=\"android/depthmap\" DepthMap:ItemSemantic=\"Depth\"/></Device:Camera>"
           "</rdf:li></rdf:Seq></Device:Cameras>";
}

std::string dynamicDepthNames() {
    std::string names;
    for (const auto& [prefix, name] :
         {std::pair{"Device", "device"}, std::pair{"Profile", "profile"}, std::pair{"Camera", "camera"},
          std::pair{"DepthMap", "depthmap"}, std::pair{"Image", "image"}, std::pair{"Container", "container"},
          std::pair{"Item", "item"}})
        names += nameSpace(prefix, std::string("http://ns.google.com/photos/dd/1.0/") + name + "/");
    return names;
}

/// The segments of a packet that is too long for one: Adobe's XMP specification, part 3, "Extended XMP". `id`
/// is its MD5, in capitals.
std::string extendedSegments(const std::string& text, const std::string& id) {
    constexpr size_t kPiece = 65'000;
    std::string segments;
    for (size_t at = 0; at < text.size(); at += kPiece)
        segments += jpegSegment(
            kApp1, kExtendedSignature + id + bigEndianBytes(static_cast<int64_t>(text.size()), 4) +
                       bigEndianBytes(static_cast<int64_t>(at), 4) + text.substr(at, kPiece));
    return segments;
}

std::string md5(const std::string& text) {
    const std::unique_ptr<gchar, void (*)(gpointer)> digest(
        g_compute_checksum_for_data(G_CHECKSUM_MD5, reinterpret_cast<const guchar*>(text.data()),
                                    text.size()),
        g_free);
    std::string id = digest.get();
    std::transform(id.begin(), id.end(), id.begin(), g_ascii_toupper);
    return id;
}

}  // namespace

std::string bareJpeg(std::string_view file, const std::string& name) {
    const auto jpeg = walkJpeg(file);
    if (!jpeg || !jpeg->complete) throw Error(name + ": not a whole JPEG picture");
    std::string bare;
    // Segments refer into the file; what lies between those that go is kept.
    size_t kept = 0;
    for (const JpegSegment& segment : jpeg->segments) {
        if (!describesTheFile(segment)) continue;
        constexpr size_t kMarkerAndLength = 4;
        const auto body = static_cast<size_t>(segment.body.data() - file.data());
        bare += file.substr(kept, body - kMarkerAndLength - kept);
        kept = body + segment.body.size();
    }
    bare += file.substr(kept, jpeg->end - kept);
    return bare;
}

std::string jpegWithDepth(const std::string& jpeg, const Plane& depth, int bits,
                          const std::optional<DepthRange>& range) {
    Plane stored = depth;
    for (float& level : stored.samples) level = 255.0f - level;
    const std::string png = grayPng(stored, bits);
    const std::string extended =
        xmpPacket(nameSpace("GDepth", kGDepth) + " GDepth:Data=\"" + toBase64(png) + "\"", "");
    const std::string id = md5(extended);
    const std::string main =
        xmpPacket(nameSpace("GDepth", kGDepth) + nameSpace("xmpNote", "http://ns.adobe.com/xmp/note/") +
                      dynamicDepthNames() + terms("GDepth", range) +
                      " GDepth:Mime=\"image/png\" xmpNote:HasExtendedXMP=\"" + id + "\"",
                  dynamicDepth(png.size(), range));

    // Exif comes first, where there is one.
    size_t at = kStart;
    if (const auto walked = walkJpeg(jpeg))
        for (const JpegSegment& segment : walked->segments) {
            const bool leads = (segment.marker == kApp1 && startsWith(segment.body, "Exif")) ||
                               (segment.marker == 0xe0 && at == kStart);
            if (leads) at = static_cast<size_t>(segment.body.data() - jpeg.data()) + segment.body.size();
        }
    return jpeg.substr(0, at) + jpegSegment(kApp1, kXmpSignature + main) + extendedSegments(extended, id) +
           jpeg.substr(at) + png;
}

std::string heicWithDepth(const RgbImage& photo, const GrayImage& depth, int quality) {
    constexpr int kPhoto = 1;
    CodedPicture picture = codedPicture(photo, quality), plane = codedPlane(depth);
    // What describes a picture comes before what shows a part of it.
    plane.properties.insert(plane.properties.begin(),
                            heifFullBox("auxC", 0, 0, "urn:mpeg:hevc:2015:auxid:2\0"s));
    return heifFile({{"hvc1", std::move(picture.bytes), std::move(picture.properties), "", {}},
                     {"hvc1", std::move(plane.bytes), std::move(plane.properties), "", {{"auxl", kPhoto}}}},
                    "");
}

}  // namespace quorvane::media
