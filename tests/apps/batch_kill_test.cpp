// A batch that is killed at random moments and resumed ends as one that nobody touched.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "media/picture/picture_file.h"
#include "media/scene/sample_scene.h"
#include "process.h"
#include "support/processes.h"
#include "support/temporary_folder.h"

namespace quorvane::test {
namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

/// A number from the environment: the stage "batch" of scripts/test asks for more than there is time for
/// here.
int number(const char* name, int usual) {
    const char* const text = std::getenv(name);
    return text == nullptr ? usual : std::atoi(text);
}

/// The bytes of every file below a folder, by its path, but for what a batch says of itself.
std::map<std::string, std::string> filesBelow(const std::string& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string path = fs::relative(entry.path(), folder).string();
        if (path == "results.jsonl" || path == ".quorvane-index") continue;
        files[path] = entry.is_directory() ? "" : bytesOf(entry.path().string());
    }
    return files;
}

TEST(KilledBatch, EndsAsAnUnbrokenOne) {
    const int photos = number("QUORVANE_BATCH_PHOTOS", 16), kills = number("QUORVANE_BATCH_KILLS", 6);
    const TemporaryFolder folder;
    nameInProcesses(folder.path());
    const media::SampleScene scene = media::makeSampleScene(48, 36);
    media::writePng(scene.photo, folder / "photo.png");
    media::writePng(scene.depth, folder / "depth.png");
    // One of each kind of output; each photo is seen from elsewhere, so that no two outputs are alike.
    const char* const kKinds[] = {".png", ".mp4", "/", ".gif", ".html", ".webp"};
    std::string lines;
    for (int i = 0; i < photos; ++i) {
        const nlohmann::json line = {{"photo", folder / "photo.png"},
                                     {"depth", folder / "depth.png"},
                                     {"output", "photo" + std::to_string(i) + kKinds[i % 6]},
                                     {"options",
                                      {{"set", "rotate_x_boundary=" + std::to_string(1 + i % 40)},
                                       {"frames", 2},
                                       {"size", i % 6 == 4 ? "40x30" : "32x24"}}}};
        lines += line.dump() + '\n';
    }
    writeBytes(folder / "list.jsonl", lines);
    const auto batch = [&](const std::string& out, bool resume) {
        Arguments arguments = {"batch",  "--manifest", folder / "list.jsonl", "-o", folder / out,
                               "--jobs", "2"};
        if (resume) arguments.emplace_back("--resume");
        return arguments;
    };
    ASSERT_EQ(quorvane(batch("whole", false)).code, 0);
    const std::map<std::string, std::string> whole = filesBelow(folder / "whole");

    std::mt19937 random(20261122);
    std::uniform_int_distribution<int> delay(1, 600);
    int killed = 0, finished = 0;
    while (killed < kills) {
        Process process(batch("broken", true));
        std::this_thread::sleep_for(std::chrono::milliseconds(delay(random)));
        process.signal(SIGKILL);
        if (process.wait().code == 0) {
            // Once more from the start: all moments are to be met.
            ++finished;
            EXPECT_EQ(filesBelow(folder / "broken"), whole) << "after " << killed << " kills";
            fs::remove_all(folder / "broken");
        } else {
            ++killed;
        }
    }
    const Outcome last = quorvane(batch("broken", true));
    ASSERT_EQ(last.code, 0) << last.err;
    const std::map<std::string, std::string> broken = filesBelow(folder / "broken");
    ASSERT_EQ(broken.size(), whole.size());
    for (const auto& [path, bytes] : whole) {
        ASSERT_EQ(broken.count(path), 1u) << path;
        EXPECT_TRUE(broken.at(path) == bytes) << path << " differs";
    }
    // Every photo has been told of, each in a line that is whole.
    std::set<std::string> told;
    std::istringstream results(bytesOf(folder / "broken/results.jsonl"));
    for (std::string line; std::getline(results, line);) {
        const nlohmann::json json = nlohmann::json::parse(line);
        if (json["exit"] == 0) told.insert(json["output"]);
    }
    EXPECT_EQ(told.size(), static_cast<size_t>(photos));
    EXPECT_TRUE(noProcessNames(folder.path())) << "a process still runs";
    RecordProperty("finished_between", finished);
}

}  // namespace
}  // namespace quorvane::test
