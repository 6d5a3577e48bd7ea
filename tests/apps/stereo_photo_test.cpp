// Stereo photos and meshes, written and read back.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>
#include <numeric>

#include "media/depth/stereo_views.h"
#include "media/embedded/embedded.h"
#include "media/picture/crop.h"
#include "media/picture/picture_file.h"
#include "on_sample_scene.h"
#include "process.h"
#include "support/processes.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

using media::RgbImage;
using Json = nlohmann::json;

constexpr double kPi = 3.14159265358979323846;

// The sample's photo has 320 x 240 pixels, and in software its picture is drawn twice as large. By the
// README's parameters a view from the side is turned by 12 * 0.6 degrees, less a dead zone of a 64th of the
// picture: from pixel 10 to pixel 639 - 10 of 640. The grid is 18.5 half high and 18.5 * 4 / 3 + 32 * 15 /
// 415 half wide; the picture shows 0.8 of it at a distance of 32.
constexpr double kHalfWidth = 25.823293, kHalfHeight = 18.5;
constexpr double kLeftTurn = 7.2 * (10.0 - 320.0) / 320.0, kRightTurn = 7.2 * (629.0 - 320.0) / 320.0;
constexpr double kTangentX = 0.8 * kHalfWidth / 32.0, kTangentY = 0.8 * kHalfHeight / 32.0;

/// By which the views are enlarged to be parallel: as much as it takes for 7.2 degrees, looked for in small
/// steps.
double zoom() {
    const double turn = 7.2 * kPi / 180.0;
    for (double zoom = 1.0;; zoom += 1e-5) {
        // The farthest corner, as the camera that is turned away from it sees it.
        const double across = kTangentX / zoom - std::tan(turn), angle = std::atan(across) + turn;
        const double up = kTangentY / zoom / (std::sqrt(across * across + 1.0) * std::cos(angle));
        if (std::tan(angle) <= kTangentX && up <= kTangentY) return zoom;
    }
}

class StereoPhoto : public OnSampleScene<StereoPhoto> {
  public:
    static constexpr const char* kSceneSize = "320x240";

  protected:
    void render(const std::string& photo, const std::string& out,
                const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments = {
            "render",  photo, scene("depth.png"), "-o",         folder / out, "--frame", "0.8",
            "--pivot", "off", "--no-doctor",      "--renderer", "software"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = quorvane(arguments);
        ASSERT_EQ(outcome.code, 0) << outcome.err;
    }
};
double meanDifference(const RgbImage& a, const RgbImage& b) {
    EXPECT_EQ(a.samples.size(), b.samples.size());
    double sum = 0.0;
    for (size_t i = 0; i < std::min(a.samples.size(), b.samples.size()); ++i)
        sum += std::abs(a.samples[i] - b.samples[i]);
    return sum / static_cast<double>(a.samples.size());
}

double correlation(const std::vector<double>& a, const std::vector<double>& b) {
    const auto mean = [](const std::vector<double>& v) {
        return std::accumulate(v.begin(), v.end(), 0.0) / static_cast<double>(v.size());
    };
    const double mean_a = mean(a), mean_b = mean(b);
    double both = 0.0, of_a = 0.0, of_b = 0.0;
    for (size_t i = 0; i < a.size(); ++i) {
        both += (a[i] - mean_a) * (b[i] - mean_b);
        of_a += (a[i] - mean_a) * (a[i] - mean_a);
        of_b += (b[i] - mean_b) * (b[i] - mean_b);
    }
    return both / std::sqrt(of_a * of_b);
}

TEST_F(StereoPhoto, BothViewsComeBackThroughTheReader) {
    render(scene("photo.png"), "both.png", {"--stereo", "sbs"});
    const RgbImage both = media::readPhoto(folder / "both.png");
    for (const char* name : {"photo.mpo", "photo.heic"}) {
        render(scene("photo.png"), name);
        const std::string bytes = bytesOf(folder / name);
        const media::Contents contents = media::lookInside(bytes);
        ASSERT_TRUE(contents.pair) << name;
        EXPECT_TRUE(contents.remarks.empty()) << contents.remarks.front();
        const media::StereoViews views = media::decodeViews(bytes, *contents.pair, name);
        EXPECT_LT(meanDifference(views.left, media::cut(both, 0, 0, {320, 240})), 3.0) << name;
        EXPECT_LT(meanDifference(views.right, media::cut(both, 320, 0, {320, 240})), 3.0) << name;
        EXPECT_GT(meanDifference(views.left, views.right), 10.0) << name;
    }
}

TEST_F(StereoPhoto, DepthOfTheViewsIsTheDepthThatDrewThem) {
    // The depth map, seen by the same left eye.
    render(scene("depth.png"), "depth.png", {"--stereo", "sbs"});
    const RgbImage drawn = media::readPhoto(folder / "depth.png");
    render(scene("photo.png"), "photo.mpo");
    ASSERT_EQ(quorvane({"extract", folder / "photo.mpo", "-o", folder / "found.png"}).code, 0);
    const media::DepthMap found = media::readDepthMap(folder / "found.png");
    std::vector<double> a, b;
    for (int y = 0; y < 240; ++y)
        for (int x = 0; x < 320; ++x) {
            a.push_back(static_cast<double>(found.plane.at(x, y)));
            b.push_back(drawn.at(x, y));
        }
    EXPECT_GT(correlation(a, b), 0.75);
    // Nothing of it bulges: the sky's middle is as far as its sides, and the near lantern is nearer.
    EXPECT_LT(found.plane.at(150, 20), found.plane.at(230, 145) - 100.0f);
}

/// What `exiftool` says of one tag, of all its places, or "" where it is not installed.
std::string exif(const std::string& file, const std::string& tag) {
    return outputOf("exiftool -a -ee -n -s3 -" + tag + " '" + file + "' 2>/dev/null");
}

TEST_F(StereoPhoto, MpoSaysWhereTheCamerasStandAndWhatTheySee) {
    render(scene("photo.png"), "photo.mpo");
    const std::string file = folder / "photo.mpo";
    if (exif(file, "FileType").empty()) GTEST_SKIP() << "NO EXIFTOOL HERE, ITS READING WAS NOT TESTED";
    EXPECT_EQ(exif(file, "MPF0:BaselineLength"), "0.063\n0.063\n");
    EXPECT_EQ(exif(file, "MPF0:ConvergenceAngle"), "0\n0\n");
    EXPECT_EQ(exif(file, "MPF0:NumberOfImages"), "2\n");
    // A sensor of 36 mm behind that lens has the picture's field of view.
    EXPECT_NEAR(std::stod(exif(file, "FocalLength")), 18.0 / (kTangentX / zoom()), 0.01);
    EXPECT_NEAR(std::stod(exif(file, "FocalPlaneXResolution")), 320 / 3.6, 0.001);
    EXPECT_NEAR(std::stod(exif(file, "FocalPlaneYResolution")), 240 / 3.6 * kTangentX / kTangentY, 0.001);
    EXPECT_EQ(exif(file, "FocalPlaneResolutionUnit"), "3\n3\n") << "centimetres";
    EXPECT_EQ(exif(file, "MPImage1:MPImageFlags") + exif(file, "MPImage2:MPImageFlags"), "4\n0\n")
        << "the left view stands for both";
    // Both views from one place.
    render(scene("photo.png"), "flat.mpo", {"--eyes", "0"});
    EXPECT_EQ(exif(folder / "flat.mpo", "MPF0:BaselineLength"), "0\n0\n");
}

/// The first bytes of the body of every box of that type, wherever it is.
std::vector<std::string> boxes(const std::string& file, const std::string& type) {
    std::vector<std::string> found;
    for (size_t at = 0; (at = file.find(type, at)) != std::string::npos; at += 4)
        found.push_back(file.substr(at + 4, 64));
    return found;
}

int32_t number(const std::string& bytes, size_t at) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<uint8_t>(bytes.at(at + i));
    return static_cast<int32_t>(value);
}

TEST_F(StereoPhoto, HeicSaysWhereTheCamerasStandAndWhatTheySee) {
    render(scene("photo.png"), "photo.heic");
    const std::string file = bytesOf(folder / "photo.heic");
    const std::vector<std::string> intrinsics = boxes(file, "cmin"), extrinsics = boxes(file, "cmex");
    ASSERT_EQ(intrinsics.size(), 2u);
    ASSERT_EQ(extrinsics.size(), 2u);
    for (const size_t eye : {size_t{0}, size_t{1}}) {
        const std::string& box = intrinsics[eye];
        // Version 0, two focal lengths, and the bits of fractions in the second byte from behind.
        ASSERT_EQ(box[0], 0);
        ASSERT_EQ(box[3], 1);
        const double scale = std::ldexp(1.0, -box[2]);
        EXPECT_NEAR(number(box, 4) * scale, 0.5 / (kTangentX / zoom()), 1e-5);
        const double turn = (eye == 0 ? kLeftTurn : kRightTurn) * kPi / 180.0;
        EXPECT_NEAR(number(box, 8) * scale, 0.5 + std::tan(turn) * 0.5 / (kTangentX / zoom()), 1e-5);
        EXPECT_NEAR(number(box, 12) * scale, 0.5, 1e-6);
        EXPECT_NEAR(number(box, 16) * scale, 0.5 / (kTangentY / zoom()), 1e-5);
        EXPECT_EQ(number(box, 20), 0);
    }
    // x, y and z are there, in micrometres; the cameras are parallel.
    EXPECT_EQ(number(extrinsics[0], 0), 7);
    EXPECT_EQ(number(extrinsics[1], 0), 7);
    EXPECT_EQ(number(extrinsics[0], 4), 0);
    EXPECT_EQ(number(extrinsics[1], 4), 63000);
    EXPECT_EQ(number(extrinsics[1], 8), 0);
    EXPECT_EQ(boxes(file, "ster").size(), 1u);
    // The same for readers of XMP: millimetres, metres and pixels.
    EXPECT_THAT(file, testing::HasSubstr("ai:Baseline=\"63\""));
    EXPECT_THAT(file, testing::HasSubstr("<ai:CameraExtrinsicsPosition><rdf:Seq><rdf:li>0.063</rdf:li>"));
    std::vector<double> matrix;
    const std::string name = "<ai:CameraIntrinsics>", item = "<rdf:li>";
    for (size_t at = file.find(name); matrix.size() < 9 && (at = file.find(item, at)) != std::string::npos;)
        matrix.push_back(std::stod(file.substr(at += item.size(), 20)));
    ASSERT_EQ(matrix.size(), 9u);
    EXPECT_NEAR(matrix[0], 320 * 0.5 / (kTangentX / zoom()), 0.01);
    EXPECT_NEAR(matrix[4], 240 * 0.5 / (kTangentY / zoom()), 0.01);
    EXPECT_EQ(matrix[5], 120.0);
    if (exif(folder / "photo.heic", "FileType").empty()) return;
    EXPECT_NEAR(std::stod(exif(folder / "photo.heic", "FocalLength")), 18.0 / (kTangentX / zoom()), 0.01);
}

/// The JSON of a .glb and its binary part.
struct Glb {
    Json json;
    std::string bytes;

    explicit Glb(const std::string& file) {
        const auto word = [&](size_t at) {
            uint32_t value = 0;
            std::memcpy(&value, file.data() + at, 4);
            return value;
        };
        EXPECT_EQ(file.substr(0, 4), "glTF");
        EXPECT_EQ(word(4), 2u);
        EXPECT_EQ(word(8), file.size());
        EXPECT_EQ(file.substr(16, 4), "JSON");
        json = Json::parse(file.substr(20, word(12)));
        const size_t at = 20 + word(12);
        EXPECT_EQ(at % 4, 0u);
        EXPECT_EQ(file.substr(at + 4, 4), std::string("BIN\0", 4));
        bytes = file.substr(at + 8);
        EXPECT_EQ(bytes.size(), word(at));
    }

    template <typename Number>
    std::vector<Number> numbers(size_t accessor, size_t each) const {
        const Json& of = json["accessors"][accessor];
        const Json& view = json["bufferViews"][of["bufferView"].get<size_t>()];
        std::vector<Number> all(of["count"].get<size_t>() * each);
        EXPECT_EQ(all.size() * sizeof(Number), view["byteLength"].get<size_t>());
        std::memcpy(all.data(), bytes.data() + view["byteOffset"].get<size_t>(), all.size() * sizeof(Number));
        return all;
    }
};

TEST_F(StereoPhoto, MeshSeenByItsCameraIsThePhoto) {
    render(scene("photo.png"), "scene.glb", {"--grid", "coarse"});
    const Glb glb(bytesOf(folder / "scene.glb"));
    const std::vector<float> positions = glb.numbers<float>(0, 3), places = glb.numbers<float>(1, 2);
    const std::vector<uint32_t> corners = glb.numbers<uint32_t>(2, 1);
    const size_t vertices = positions.size() / 3;
    ASSERT_EQ(places.size() / 2, vertices);
    const Json& camera = glb.json["cameras"][0]["perspective"];
    const double distance = glb.json["nodes"][1]["translation"][2];
    const double half_height = std::tan(camera["yfov"].get<double>() / 2);
    EXPECT_NEAR(half_height, kTangentY, 1e-6);
    EXPECT_NEAR(camera["aspectRatio"].get<double>(), 4.0 / 3.0, 1e-9);
    float nearest = -10.0f, farthest = 10.0f;
    for (size_t i = 0; i < vertices; ++i) {
        const double x = positions[3 * i], y = positions[3 * i + 1], z = positions[3 * i + 2];
        nearest = std::max(nearest, positions[3 * i + 2]);
        farthest = std::min(farthest, positions[3 * i + 2]);
        // The camera sees 0.8 of each side; a vertex is seen where the photo shows it.
        const double column = x / (distance - z) / (half_height * 4.0 / 3.0) * 0.8;
        const double row = -y / (distance - z) / half_height * 0.8;
        EXPECT_NEAR(column, 2.0 * static_cast<double>(places[2 * i]) - 1.0, 1e-4);
        EXPECT_NEAR(row, 2.0 * static_cast<double>(places[2 * i + 1]) - 1.0, 1e-4);
    }
    EXPECT_GT(nearest - farthest, 0.2f) << "it has depth";
    const auto bounds = glb.json["accessors"][0];
    EXPECT_EQ(bounds["min"][2].get<float>(), farthest);
    EXPECT_EQ(bounds["max"][2].get<float>(), nearest);
    for (const size_t axis : {size_t{0}, size_t{1}}) {
        float least = positions[axis], most = least;
        for (size_t i = axis; i < positions.size(); i += 3) {
            least = std::min(least, positions[i]);
            most = std::max(most, positions[i]);
        }
        EXPECT_EQ(bounds["min"][axis].get<float>(), least);
        EXPECT_EQ(bounds["max"][axis].get<float>(), most);
    }
    // Clamped to the edge: repeated, the photo's other side would shine through at its border.
    EXPECT_EQ(glb.json["samplers"][0]["wrapS"], 33071);
    EXPECT_EQ(glb.json["samplers"][0]["wrapT"], 33071);
    // Every triangle looks at the viewer: its corners go round against the clock.
    for (size_t i = 0; i < corners.size(); i += 3) {
        ASSERT_LT(*std::max_element(&corners[i], &corners[i] + 3), vertices);
        const auto u = [&](size_t k) { return static_cast<double>(places[2 * corners[i + k]]); };
        const auto v = [&](size_t k) { return -static_cast<double>(places[2 * corners[i + k] + 1]); };
        EXPECT_GT((u(1) - u(0)) * (v(2) - v(0)) - (u(2) - u(0)) * (v(1) - v(0)), 0.0);
    }
    // The photo is in it.
    const Json& view = glb.json["bufferViews"][glb.json["images"][0]["bufferView"].get<size_t>()];
    const std::string jpeg = glb.bytes.substr(view["byteOffset"], view["byteLength"]);
    EXPECT_LT(meanDifference(media::decodePhoto(jpeg, "photo"), media::readPhoto(scene("photo.png"))), 4.0);
}

TEST_F(StereoPhoto, MeshSaysOnceWhatSaysNothingOfIt) {
    const Outcome outcome =
        quorvane({"render", scene("photo.png"), scene("depth.png"), "-o", folder / "scene.glb", "--grid",
                  "coarse", "--motion", "circle", "--seconds", "2", "--eyes", "0.5", "--at", "1,0"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(
        outcome.err,
        "mesh: --seconds, --at, --eyes, --motion: of no effect; other programs choose the view and move "
        "it\n");
}

}  // namespace
}  // namespace quorvane::test
