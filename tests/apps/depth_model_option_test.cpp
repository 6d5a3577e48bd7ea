// --depth-model on the program's commands: networks made by tests/networks/make stand for those that people
// have.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "media/depth/model_session.h"
#include "media/picture/picture_file.h"
#include "process.h"
#include "support/photo_writers/pictures.h"
#include "support/processes.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kNetworks = QUORVANE_NETWORKS;

class DepthModelOption : public testing::Test {
  protected:
    void SetUp() override {
        const std::vector<media::RuntimePlace> places = media::runtimePlaces();
        if (std::none_of(places.begin(), places.end(),
                         [](const media::RuntimePlace& place) { return place.holds_it; }))
            GTEST_SKIP() << "NO ONNX RUNTIME HERE (scripts/setup model installs it)";
        // Left dark and right bright: brighter is what these networks call nearer.
        media::RgbImage picture(192, 128);
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x)
                std::fill_n(&picture.at(x, y), 3, static_cast<uint8_t>(x < picture.width / 2 ? 48 : 208));
        media::writePng(picture, photo);
    }

    Outcome run(std::vector<std::string> arguments, const std::string& model) const {
        arguments.insert(arguments.end(), {"--depth-model", kNetworks + "/" + model});
        return quorvane(arguments);
    }

    /// A command line that does not end by itself.
    std::vector<std::string> endless() const {
        return {"render", photo, "-o", out, "--depth-model", kNetworks + "/no_end.onnx"};
    }

    /// Waits for the process that names `name`, besides the program and its decoding worker, which a build
    /// for sanitizers does without.
    static void waitForRunner(const std::string& name) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        constexpr int kProcesses = 2;
#else
        constexpr int kProcesses = 3;
#endif
        for (int i = 0; i < 1000 && processesNaming(name) < kProcesses; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ASSERT_EQ(processesNaming(name), kProcesses);
    }

    const TemporaryFolder folder;
    const std::string photo = folder / "photo.png";
    const std::string out = folder / "out.png";
};

TEST_F(DepthModelOption, ExtractWritesTheEstimateIn16Bit) {
    // Distances come out as their reciprocals, so both give the same.
    for (const char* model : {"midas_v21_small.onnx", "metric3d.onnx"}) {
        const Outcome outcome = run({"extract", photo, "-o", out}, model);
        ASSERT_EQ(outcome.code, 0) << outcome.err;
        const media::DepthMap depth = media::readDepthMap(out);
        EXPECT_EQ(depth.bits, 16);
        EXPECT_NEAR(static_cast<double>(depth.plane.width) / depth.plane.height, 1.5, 0.02);
        const int middle = depth.plane.height / 2;
        EXPECT_EQ(depth.plane.at(depth.plane.width / 4, middle), 0.0f);
        EXPECT_EQ(depth.plane.at(depth.plane.width * 3 / 4, middle), 255.0f);
    }
}

TEST_F(DepthModelOption, RenderAndStagesTakeIt) {
    const Outcome outcome = run({"render", photo, "-o", out, "-v"}, "metric3d.onnx");
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(outcome.err, AllOf(HasSubstr("metric3d.onnx: 392 x 261, 16 bit"),
                                   HasSubstr("\nmodel    pixel_values 392 x 224 of float32, its only size"),
                                   HasSubstr("larger = farther (it gives predicted_normal too)\n")));
    const std::string still = bytesOf(out);
    EXPECT_EQ(run({"stages", photo, "-o", out}, "metric3d.onnx").code, 0);
    EXPECT_NE(bytesOf(out), still);
}

TEST_F(DepthModelOption, WinsOverANeighbourAndTheDepthInside) {
    writeBytes(folder / "photo_depth.png", pngFile(somePlane(96, 64)));
    const Outcome outcome = run({"inspect", photo, "--json"}, "midas_v21_small.onnx");
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const auto depth = nlohmann::json::parse(outcome.out)["depth"];
    EXPECT_EQ(depth["source"], "model");
    EXPECT_EQ(depth["file"], kNetworks + "/midas_v21_small.onnx");
    EXPECT_THAT(std::string(depth["belief"]), StartsWith("0 256 x 256 of float32, its only size"));
}

TEST_F(DepthModelOption, InvertDepthExchangesNearAndFar) {
    ASSERT_EQ(run({"render", photo, "-o", out, "--no-doctor"}, "midas_v21_small.onnx").code, 0);
    const std::string still = bytesOf(out);
    ASSERT_EQ(run({"render", photo, "-o", out, "--no-doctor", "--invert-depth"}, "midas_v21_small.onnx").code,
              0);
    EXPECT_NE(bytesOf(out), still);
}

TEST_F(DepthModelOption, OtherSourcesOfDepthGoAgainstIt) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"render", photo, photo, "-o", out},
          {"render", photo, "-o", out, "--depth-cmd", "estimate {in} {out}"},
          {"render", photo, "-o", out, "--rgbd", "left"},
          {"extract", photo, "-o", out, "--raw"}})
        EXPECT_EQ(run(arguments, "midas_v21_small.onnx").code, 2);
    EXPECT_EQ(quorvane({"render", photo, "-o", out, "--depth-size", "300"}).code, 2);
    EXPECT_FALSE(fs::exists(out));
}

TEST_F(DepthModelOption, FailuresAreOneLineAndLeaveNothing) {
    for (const char* model : {"no_classifier.onnx", "no_two_inputs.onnx", "none.onnx", "make"}) {
        const Outcome outcome = run({"render", photo, "-o", out}, model);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_THAT(outcome.err, StartsWith("quorvane: " + kNetworks + "/" + model + ": "));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_FALSE(fs::exists(out));
    }
}

TEST_F(DepthModelOption, TheModelIsNeverOverwritten) {
    const std::string model = folder / "model.png";
    fs::copy_file(kNetworks + "/midas_v21_small.onnx", model);
    const std::string before = bytesOf(model);
    for (const char* command : {"render", "stages", "extract", "inspect"}) {
        const Outcome outcome = quorvane({command, photo, "-o", model, "--depth-model", model});
        EXPECT_EQ(outcome.code, 1) << command;
        EXPECT_THAT(outcome.err, HasSubstr("is an input")) << command;
    }
    EXPECT_EQ(bytesOf(model), before);
}

TEST_F(DepthModelOption, SignalEndsItsProcess) {
    const std::string name = folder.path() + "/started";
    Process process(endless(), {{"QUORVANE_TEST", name}});
    waitForRunner(name);
    process.signal(SIGINT);
    const Outcome outcome = process.wait();
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.err, "quorvane: interrupted\n");
    EXPECT_TRUE(noProcessNames(name)) << "a process still runs";
    EXPECT_FALSE(fs::exists(out));
}

// Nothing tidies up after a program that is killed; the runner itself goes.
TEST_F(DepthModelOption, ItsProcessDoesNotOutliveTheProgram) {
    const std::string name = folder.path() + "/started";
    Process process(endless(), {{"QUORVANE_TEST", name}});
    waitForRunner(name);
    // By now the network is being run.
    std::this_thread::sleep_for(std::chrono::seconds(1));
    process.signal(SIGKILL);
    process.wait();
    EXPECT_TRUE(noProcessNames(name)) << "a process still runs";
}

TEST(InfoModels, NamesNetworksAndWhereTheRuntimeIsLookedFor) {
    const TemporaryFolder folder;
    const Outcome outcome = quorvane({"info", "--models"}, {{"QUORVANE_ONNXRUNTIME", folder.path()}});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.out, AllOf(HasSubstr("Depth Anything V2 small"), HasSubstr("Apache-2.0"),
                                   HasSubstr("99 MB"), HasSubstr("QUORVANE_ONNXRUNTIME   " + folder.path()),
                                   HasSubstr("It is not there; "), HasSubstr("scripts/setup model")));
    fs::create_directories(folder / "node_modules/onnxruntime-node");
    EXPECT_THAT(quorvane({"info", "--models"}, {{"QUORVANE_ONNXRUNTIME", folder.path()}}).out,
                HasSubstr(folder.path() + ": there, used"));
    const Outcome elsewhere =
        quorvane({"info", "--models"}, {{"QUORVANE_ONNXRUNTIME", ""}, {"XDG_DATA_HOME", folder.path()}});
    EXPECT_THAT(elsewhere.out,
                HasSubstr("the user's data        " + folder.path() + "/quorvane/onnxruntime"));
}

}  // namespace
}  // namespace quorvane::test
