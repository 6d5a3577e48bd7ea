// Networks of every interface that people have, made by tests/networks/make, give the photo's depth with no
// option.

#include "media/depth/depth_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "support/temporary_folder.h"
#include "system/child_process.h"
#include "system/error.h"

namespace quorvane::media {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string kNetworks = NETWORKS;

// The photos: 8 x 6 patches of uneven sides, brighter = nearer. A patch of level i has the mean (i + 0.5) / 8
// of red, green and blue, so that eighths of it, rounded down, are i.
constexpr int kColumns = 8, kRows = 6;
constexpr int kLefts[kColumns + 1] = {0, 60, 155, 219, 329, 387, 475, 541, 640};
constexpr int kTops[kRows + 1] = {0, 60, 170, 232, 330, 400, 480};

enum class Scene {
    kPatches,  ///< of every level
    kGround,   ///< brighter from row to row
};

int levelAt(Scene scene, int column, int row) {
    if (scene == Scene::kGround) return std::min(row + (column * 5 + row * 3) % 4 / 2, 7);
    constexpr int kLevels[kRows][kColumns] = {{3, 0, 5, 7, 1, 4, 2, 6}, {6, 2, 7, 0, 4, 1, 5, 3},
                                              {1, 5, 3, 6, 2, 7, 0, 4}, {4, 7, 0, 2, 5, 3, 6, 1},
                                              {0, 3, 6, 1, 7, 5, 4, 2}, {5, 1, 4, 3, 0, 6, 2, 7}};
    return kLevels[row][column];
}

RgbImage somePhoto(Scene scene = Scene::kPatches) {
    RgbImage photo(kLefts[kColumns], kTops[kRows]);
    for (int row = 0; row < kRows; ++row)
        for (int column = 0; column < kColumns; ++column) {
            const int mean = levelAt(scene, column, row) * 255 / 8 + 16;
            for (int y = kTops[row]; y < kTops[row + 1]; ++y)
                for (int x = kLefts[column]; x < kLefts[column + 1]; ++x)
                    for (int c = 0; c < 3; ++c)
                        (&photo.at(x, y))[c] = static_cast<uint8_t>(mean + 10 - 10 * c);
        }
    return photo;
}

/// Expects the level of each patch in its middle, the lowest as 0 and the highest as 255.
void expectLevels(const Plane& plane, Scene scene = Scene::kPatches) {
    int least = 7, most = 0;
    for (int i = 0; i < kRows * kColumns; ++i) {
        least = std::min(least, levelAt(scene, i % kColumns, i / kColumns));
        most = std::max(most, levelAt(scene, i % kColumns, i / kColumns));
    }
    for (int row = 0; row < kRows; ++row)
        for (int column = 0; column < kColumns; ++column) {
            const int x = (kLefts[column] + kLefts[column + 1]) * plane.width / (2 * kLefts[kColumns]);
            const int y = (kTops[row] + kTops[row + 1]) * plane.height / (2 * kTops[kRows]);
            EXPECT_NEAR(plane.at(x, y), 255.0 * (levelAt(scene, column, row) - least) / (most - least), 1.0)
                << "patch " << column << ", " << row;
        }
}

bool runtimeIsThere() {
    const std::vector<RuntimePlace> places = runtimePlaces();
    const bool package =
        std::any_of(places.begin(), places.end(), [](const RuntimePlace& place) { return place.holds_it; });
    try {
        return package && ChildProcess({"node", "--version"}, {}).wait().succeeded();
    } catch (const StartError&) {
        return false;
    }
}

/// Has the runtime looked for in a folder while it lives.
class RuntimeIn {
  public:
    explicit RuntimeIn(const std::string& folder) {
        if (const char* named = getenv(kName)) m_before = named;
        setenv(kName, folder.c_str(), 1);
    }
    ~RuntimeIn() {
        if (m_before)
            setenv(kName, m_before->c_str(), 1);
        else
            unsetenv(kName);
    }
    RuntimeIn(const RuntimeIn&) = delete;
    RuntimeIn& operator=(const RuntimeIn&) = delete;

  private:
    static constexpr const char* kName = "QUORVANE_ONNXRUNTIME";
    std::optional<std::string> m_before;
};

#define NEEDS_THE_RUNTIME() \
    if (!runtimeIsThere()) GTEST_SKIP() << "NO ONNX RUNTIME HERE (scripts/setup model installs it)"

struct Known {
    const char* file;
    const char* takes;     ///< what the belief says of its input
    const char* manner;    ///< and of the normalisation
    const char* polarity;  ///< and of its larger values
    bool polarity_known;
};

void PrintTo(const Known& known, std::ostream* out) { *out << known.file; }

class KnownNetwork : public testing::TestWithParam<Known> {};

TEST_P(KnownNetwork, GivesThePhotosDepthWithoutAnOption) {
    NEEDS_THE_RUNTIME();
    const Known& known = GetParam();
    DepthModel model(kNetworks + "/" + known.file);
    const ModelEstimate estimate = model.estimate(somePhoto());
    expectLevels(estimate.depth.plane);
    EXPECT_THAT(estimate.belief, AllOf(StartsWith(known.takes), HasSubstr(known.manner),
                                       HasSubstr(known.polarity), Not(HasSubstr("\n"))));
    EXPECT_EQ(estimate.polarity_confidence == 1.0, known.polarity_known);
    EXPECT_EQ(estimate.depth.bits, 16);
    EXPECT_TRUE(estimate.depth.known.samples.empty());
    EXPECT_NEAR(static_cast<double>(estimate.depth.plane.width) / estimate.depth.plane.height, 4.0 / 3.0,
                0.01);
}

// 640 x 480 at a shorter side of 518: 690.7, of which 49 patches of 14 are 686.
INSTANTIATE_TEST_SUITE_P(
    DepthModel, KnownNetwork,
    testing::Values(
        Known{"depth_anything_v2.onnx", "pixel_values 686 x 518 of float32, first kernel 14 x 14;",
              "ImageNet", "nearer", false},
        Known{"depth_anything_v2_fp16.onnx", "pixel_values 686 x 518 of float16", "ImageNet", "nearer",
              false},
        Known{"dynamo_vits_518.onnx", "l_x_ 518 x 518 of float32, its only size", "ImageNet", "nearer",
              false},
        Known{"dynamo_vits_indoor_dynamic.onnx", "l_x_ 686 x 518 of float32", "ImageNet",
              "farther (\"indoor\" in its name or notes)", true},
        Known{"depth_anything_3.onnx", "image 686 x 518 of float32", "ImageNet",
              "depth 686 x 518, larger = farther (it gives confidence too)", true},
        Known{"midas_v21_small.onnx", "0 256 x 256 of float32, its only size", "ImageNet", "nearer", false},
        Known{"midas_normalised_inside.onnx", "input.1 256 x 256 of float32", "as 0 to 1;", "nearer", false},
        Known{"dpt_levit_224.onnx", "input 224 x 224 of float32", "as -1 to 1", "nearer", false},
        Known{"depth_pro.onnx", "pixel_values 384 x 384 of float32", "as -1 to 1",
              "farther (it gives focallength_px too)", true},
        Known{"metric3d.onnx", "pixel_values 392 x 224 of float32", "as 0 to 255",
              "predicted_depth 392 x 224, larger = farther (it gives predicted_normal too)", true},
        Known{"mobile_uint8.onnx", "input_image 256 x 256 of uint8, its only size, channels last",
              "as 0 to 255", "nearer", false},
        // 4 / 3 of 320 is 426.7; the nearest multiple of 32 is 416. The folder's own files decide.
        Known{"hub", "pixel_values 416 x 320 of float32, first kernel 16 x 16;",
              "as preprocessor_config.json says", "farther (config.json says metric)", true}),
    [](const testing::TestParamInfo<Known>& known) {
        std::string name = known.param.file;
        name.erase(std::remove(name.begin(), name.end(), '.'), name.end());
        return name;
    });

TEST(DepthModel, TellsDistancesByThePhotoWhereNothingElseSays) {
    NEEDS_THE_RUNTIME();
    const test::TemporaryFolder folder;
    fs::copy_file(kNetworks + "/dynamo_vits_indoor_dynamic.onnx", folder / "model.onnx");
    const ModelEstimate estimate = DepthModel(folder / "model.onnx").estimate(somePhoto(Scene::kGround));
    expectLevels(estimate.depth.plane, Scene::kGround);
    EXPECT_THAT(estimate.belief, HasSubstr("larger = farther (by the photo)"));
    EXPECT_GE(estimate.polarity_confidence, 0.85);
}

TEST(DepthModel, SizeIsTheShorterSidesInMultiplesOfThePatch) {
    NEEDS_THE_RUNTIME();
    DepthModel model(kNetworks + "/depth_anything_v2.onnx", 300);
    // 300 is nearest to 21 patches; 400 to 29.
    EXPECT_THAT(model.estimate(somePhoto()).belief, StartsWith("pixel_values 406 x 294 "));
    // Longer than 4 : 1 is squeezed.
    EXPECT_THAT(model.estimate(RgbImage(900, 100)).belief, StartsWith("pixel_values 1204 x 294 "));
}

TEST(DepthModel, StaysForSeveralPhotos) {
    NEEDS_THE_RUNTIME();
    using std::chrono::steady_clock;
    const auto start = steady_clock::now();
    DepthModel model(kNetworks + "/midas_v21_small.onnx");
    const Plane first = model.estimate(somePhoto()).depth.plane;
    const auto begun = steady_clock::now();
    for (int i = 0; i < 5; ++i) EXPECT_EQ(model.estimate(somePhoto()).depth.plane.samples, first.samples);
    // Each process more would take as long as the one that is there took to start.
    EXPECT_LT(steady_clock::now() - begun, 3 * (begun - start));
}

TEST(DepthModel, FlatPhotosAreSurvived) {
    NEEDS_THE_RUNTIME();
    DepthModel model(kNetworks + "/midas_v21_small.onnx");
    for (const RgbImage& photo : {RgbImage(1, 1), RgbImage(1, 500), RgbImage(64, 48)}) {
        const Plane plane = model.estimate(photo).depth.plane;
        EXPECT_EQ(*std::max_element(plane.samples.begin(), plane.samples.end()), 0.0f);
    }
}

/// The one line that `path` is refused with.
std::string refusal(const std::string& path, const ModelLimits& limits = {}) {
    try {
        DepthModel(path, 0, limits).estimate(somePhoto());
    } catch (const Error& error) {
        EXPECT_THAT(error.what(), Not(HasSubstr("\n")));
        EXPECT_LT(std::string(error.what()).size(), 420u);
        return error.what();
    }
    ADD_FAILURE() << path << " is not refused";
    return "";
}

TEST(DepthModel, WhatIsNoDepthModelIsRefusedWithItsReason) {
    NEEDS_THE_RUNTIME();
    const auto of = [](const char* name) { return refusal(kNetworks + "/" + name + ".onnx"); };
    EXPECT_THAT(of("no_classifier"), HasSubstr("gives no plane of depth (logits 1 x 3)"));
    EXPECT_THAT(of("no_enlarger"), HasSubstr("gives no plane of depth (larger 1 x 3 x 32 x 32)"));
    EXPECT_THAT(of("no_four_views"), HasSubstr("views is 1 x 4 x 3 x 28 x 28 of float32, several pictures"));
    EXPECT_THAT(of("no_two_inputs"), HasSubstr("has 2 inputs (pixels, prompt)"));
}

TEST(DepthModel, WhatIsDamagedIsRefused) {
    const test::TemporaryFolder folder;
    const std::string whole = test::bytesOf(kNetworks + "/depth_anything_v2.onnx");
    const auto of = [&folder](const std::string& bytes) {
        test::writeBytes(folder / "a.onnx", bytes);
        return refusal(folder / "a.onnx");
    };
    EXPECT_THAT(of(""), HasSubstr("a.onnx: the file is empty"));
    EXPECT_THAT(of("hello"), HasSubstr("not an .onnx file"));
    EXPECT_THAT(of(whole.substr(0, whole.size() / 2)), HasSubstr("not an .onnx file, or a damaged one"));
    EXPECT_THAT(of("version https://git-lfs.github.com/spec/v1\noid"), HasSubstr("placeholder of Git LFS"));
    EXPECT_THAT(of(std::string("PK\3\4") + std::string(60, 'a')), HasSubstr("PyTorch"));
    EXPECT_THAT(of("<!DOCTYPE html><html></html>"), HasSubstr("web page"));
    EXPECT_THAT(refusal(folder / "none.onnx"), HasSubstr("none.onnx: no such file"));
    EXPECT_THAT(refusal("/dev/zero"), HasSubstr("/dev/zero: not a file"));
    EXPECT_THAT(refusal(folder.path()), HasSubstr("a.onnx: a web page"));
    fs::create_directory(folder / "empty");
    EXPECT_THAT(refusal(folder / "empty"), HasSubstr("neither model.onnx nor onnx/model.onnx"));
    // 3 GB of nothing: no byte of it is read.
    test::writeBytes(folder / "huge.onnx", "");
    fs::resize_file(folder / "huge.onnx", uint64_t{3} << 30);
    EXPECT_THAT(refusal(folder / "huge.onnx"), HasSubstr("larger than 2 GB"));
}

TEST(DepthModel, WeightsBesideItHaveToBeThereAndNowhereElse) {
    const test::TemporaryFolder folder;
    fs::copy_file(kNetworks + "/depth_pro.onnx", folder / "depth_pro.onnx");
    EXPECT_THAT(refusal(folder / "depth_pro.onnx"),
                HasSubstr("its weights lie in depth_pro.onnx_data next to it, which is not there"));
    std::string bytes = test::bytesOf(kNetworks + "/depth_pro.onnx");
    const std::string name = "depth_pro.onnx_data", outside = "../../etc/passwords";
    ASSERT_EQ(name.size(), outside.size());
    for (size_t at = 0; (at = bytes.find(name, at)) != std::string::npos;)
        bytes.replace(at, name.size(), outside);
    test::writeBytes(folder / "depth_pro.onnx", bytes);
    EXPECT_THAT(refusal(folder / "depth_pro.onnx"), HasSubstr("weights outside of its folder, " + outside));
}

TEST(DepthModel, DamageThatTheRuntimeFindsIsOneLine) {
    NEEDS_THE_RUNTIME();
    const test::TemporaryFolder folder;
    std::string bytes = test::bytesOf(kNetworks + "/midas_v21_small.onnx");
    bytes.replace(bytes.find("Floor"), 5, "Flaar");
    test::writeBytes(folder / "a.onnx", bytes);
    EXPECT_THAT(refusal(folder / "a.onnx"),
                AllOf(HasSubstr("ONNX Runtime refuses it: "), HasSubstr("Flaar")));
}

TEST(DepthModel, WhatNeverEndsIsGivenUp) {
    NEEDS_THE_RUNTIME();
    ModelLimits limits;
    limits.answer = std::chrono::seconds(2);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(refusal(kNetworks + "/no_end.onnx", limits),
                HasSubstr("no answer within 2 s; it is given up"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(DepthModel, WhatNeedsTooMuchMemoryIsRefused) {
    NEEDS_THE_RUNTIME();
    EXPECT_THAT(refusal(kNetworks + "/no_modesty.onnx"),
                HasSubstr("takes more than the 8192 MB of memory that a model may use"));
}

TEST(DepthModel, WithoutTheRuntimeTheCommandIsNamed) {
    const test::TemporaryFolder folder;
    const RuntimeIn place(folder.path());
    const std::string said = refusal(kNetworks + "/midas_v21_small.onnx");
    EXPECT_THAT(said, AllOf(HasSubstr("ONNX Runtime is not there (looked in " + folder.path() + ")"),
                            HasSubstr("scripts/setup model installs it")));
}

TEST(DepthModel, WithoutNodeTheCommandIsNamed) {
    NEEDS_THE_RUNTIME();
    const std::string path = getenv("PATH");
    setenv("PATH", "/nowhere", 1);
    const std::string said = refusal(kNetworks + "/midas_v21_small.onnx");
    setenv("PATH", path.c_str(), 1);
    EXPECT_THAT(said, AllOf(HasSubstr("node does not start (No such file or directory)"),
                            HasSubstr("scripts/setup model installs it")));
}

TEST(DepthModel, FailsAsOneLineWhereTheRuntimeIsBroken) {
    NEEDS_THE_RUNTIME();
    const test::TemporaryFolder folder;
    fs::create_directories(folder / "node_modules/onnxruntime-node");
    const RuntimeIn place(folder.path());
    for (const char* script :
         {"", "throw 1", "process.exit(3)", "process.abort()", "while (true);",
          "require('fs').writeSync(0, Buffer.alloc(1000, 255))",
          "require('fs').writeSync(0, Buffer.from('\\x02\\0\\0\\0[]'))",
          "require('fs').writeSync(0, Buffer.from('\\x1d\\0\\0\\0{\"inputs\":[4],\"outputs\":[[]]}'))"}) {
        SCOPED_TRACE(script);
        test::writeBytes(folder / "node_modules/onnxruntime-node/index.js", script);
        ModelLimits limits;
        limits.answer = std::chrono::seconds(3);
        EXPECT_NE(refusal(kNetworks + "/midas_v21_small.onnx", limits), "");
    }
}

}  // namespace
}  // namespace quorvane::media
