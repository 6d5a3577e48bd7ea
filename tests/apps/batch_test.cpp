// quorvane batch: every photo once, as render makes it, whatever happens to some of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
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
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Arguments = std::vector<std::string>;
using Json = nlohmann::json;

class Batch : public testing::Test {
  protected:
    void SetUp() override {
        nameInProcesses(folder.path());
        fs::create_directory(folder / "in");
        const media::SampleScene scene = media::makeSampleScene(64, 48);
        media::writePng(scene.photo, folder / "in/a.png");
        media::writePng(scene.depth, folder / "in/a_depth.png");
        for (const char* name : {"b", "c"}) copy("a", name);
    }

    void copy(const std::string& from, const std::string& to) const {
        fs::copy_file(folder / ("in/" + from + ".png"), folder / ("in/" + to + ".png"));
        fs::copy_file(folder / ("in/" + from + "_depth.png"), folder / ("in/" + to + "_depth.png"));
    }

    /// Renders the folder's photos as stills.
    Outcome batch(const Arguments& more = {},
                  const std::map<std::string, std::string>& environment = {}) const {
        Arguments arguments = {"batch", folder / "in", "-o", folder / "out/{name}.png", "--size", "32x24"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return quorvane(arguments, environment);
    }

    Outcome manifest(const std::string& lines, const Arguments& more = {}) const {
        writeBytes(folder / "list.jsonl", lines);
        Arguments arguments = {"batch",  "--manifest", folder / "list.jsonl", "-o", folder / "out",
                               "--size", "32x24"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return quorvane(arguments);
    }

    std::string in(const std::string& name) const { return folder / ("in/" + name); }

    /// The lines of results, by the photo's name.
    std::map<std::string, Json> results(const std::string& file = "out/results.jsonl") const {
        std::map<std::string, Json> found;
        std::istringstream lines(bytesOf(folder / file));
        for (std::string line; std::getline(lines, line);) {
            const Json json = Json::parse(line);
            EXPECT_TRUE(found.emplace(fs::path(json["photo"].get<std::string>()).filename(), json).second);
        }
        return found;
    }

    /// An environment in which ffmpeg is a shell script.
    std::map<std::string, std::string> withFfmpeg(const std::string& script) const {
        fs::create_directory(folder / "bin");
        writeBytes(folder / "bin/ffmpeg", "#!/bin/sh\n" + script);
        fs::permissions(folder / "bin/ffmpeg", fs::perms::owner_all);
        return {{"PATH", (folder / "bin") + ":/usr/bin:/bin"}};
    }

    const TemporaryFolder folder;
};

TEST_F(Batch, MakesOfEachPhotoWhatRenderMakes) {
    const Outcome outcome = batch({"--at", "-1,0", "--jobs", "2"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "") << "a batch is quiet in a pipe";
    EXPECT_THAT(TemporaryFolder::names(folder / "out"),
                ElementsAre(".quorvane-index", "a.png", "b.png", "c.png", "results.jsonl"));
    ASSERT_EQ(
        quorvane({"render", in("a.png"), "-o", folder / "one.png", "--size", "32x24", "--at", "-1,0", "-q"})
            .code,
        0);
    const std::string expected = bytesOf(folder / "one.png");
    for (const char* name : {"a", "b", "c"})
        EXPECT_EQ(bytesOf(folder / ("out/" + std::string(name) + ".png")), expected) << name;
}

TEST_F(Batch, TakesThePhotosOfAFolderByTheirExtensionsInOrder) {
    for (const char* name : {"0.PNG", "d.PnG", "e.jpg.txt", ".hidden.png"})
        fs::copy_file(in("a.png"), in(name));
    for (const char* name : {"0", "d"})
        fs::copy_file(in("a_depth.png"), in(std::string(name) + "_depth.png"));
    const Outcome outcome = batch({"--jobs", "1", "--results", "-"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    std::vector<std::string> names;
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);)
        names.push_back(fs::path(Json::parse(line)["photo"].get<std::string>()).filename());
    EXPECT_THAT(names, ElementsAre("0.PNG", "a.png", "b.png", "c.png", "d.PnG"));
}

TEST_F(Batch, SaysInALineWhatCameOfEachPhoto) {
    writeBytes(in("d.jpg"), "no picture");
    EXPECT_EQ(batch().code, 1);
    const std::map<std::string, Json> lines = results();
    ASSERT_EQ(lines.size(), 4u);
    const Json& line = lines.at("a.png");
    EXPECT_EQ(line["output"], folder / "out/a.png");
    EXPECT_EQ(line["bytes"], fs::file_size(folder / "out/a.png"));
    EXPECT_EQ(line["exit"], 0);
    EXPECT_GT(line["seconds"].get<double>(), 0.0);
    EXPECT_EQ(line["depth"]["source"], "neighbour");
    EXPECT_EQ(line["depth"]["file"], in("a_depth.png"));
    EXPECT_TRUE(line["doctor"].is_array());
    EXPECT_THAT(line["warnings"], IsEmpty());
    EXPECT_FALSE(line.contains("error"));
    const Json& bad = lines.at("d.jpg");
    // echo -n "no picture" | sha256sum
    EXPECT_EQ(bad["sha256"], "9ed97c950c330a5b556b00fe9d46390594f0a34437886edd034c323444fbd7d8");
    EXPECT_EQ(bad["exit"], 65);
    EXPECT_EQ(bad["bytes"], nullptr);
    EXPECT_THAT(bad["error"].get<std::string>(), HasSubstr("d.jpg: not a JPEG"));
}

TEST_F(Batch, HasTheDoctorsFindingsAndTheWarningsInALine) {
    // Turned upside down, which the doctor sees by the photo's edges.
    const media::SampleScene scene = media::makeSampleScene(320, 240);
    media::GrayImage turned = scene.depth;
    std::reverse(turned.samples.begin(), turned.samples.end());
    media::writePng(scene.photo, in("t.png"));
    media::writePng(turned, in("t_depth.png"));
    const Outcome outcome =
        manifest("{\"photo\": \"" + in("t.png") + "\", \"output\": \"t.png\"}\n", {"--fps", "24"});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const Json line = results().at("t.png");
    ASSERT_FALSE(line["doctor"].empty());
    EXPECT_EQ(line["doctor"][0]["ailment"], "turned");
    ASSERT_EQ(line["warnings"].size(), 1u);
    EXPECT_THAT(line["warnings"][0].get<std::string>(), HasSubstr("--fps: of no effect"));
}

TEST_F(Batch, TakesOptionsFromAManifestsLine) {
    const std::string lines =
        "{\"photo\": \"" + in("a.png") + "\", \"output\": \"deep/left.png\", \"options\": " +
        R"({"at": "-1,0", "set": ["rotate_x_boundary=5", "rotate_y_boundary=5"]}})" + "\n\n{\"photo\": \"" +
        in("b.png") + "\", \"depth\": \"" + in("a_depth.png") + "\", \"options\": {\"no-doctor\": true}}\n";
    const Outcome outcome = manifest(lines, {"--at", "1,0", "--format", "png"});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    Arguments left = {"render", in("a.png"), "-o", folder / "left.png", "--size", "32x24",
                      "--at",   "-1,0",      "-q"};
    for (const char* set : {"rotate_x_boundary=5", "rotate_y_boundary=5"})
        left.insert(left.end(), {"--set", set});
    ASSERT_EQ(quorvane(left).code, 0);
    ASSERT_EQ(quorvane({"render", in("b.png"), in("a_depth.png"), "-o", folder / "b.png", "--size", "32x24",
                        "--at", "1,0", "--no-doctor"})
                  .code,
              0);
    EXPECT_EQ(bytesOf(folder / "out/deep/left.png"), bytesOf(folder / "left.png"));
    EXPECT_EQ(bytesOf(folder / "out/b.png"), bytesOf(folder / "b.png"));
}

TEST_F(Batch, AManifestsOptionReplacesAnEmptyOne) {
    const Outcome outcome =
        manifest("{\"photo\": \"" + in("a.png") + R"(", "output": "a.html", "options": {"title": "Dawn"}})",
                 {"--title", ""});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(bytesOf(folder / "out/a.html"), HasSubstr("<title>Dawn</title>"));
}

TEST_F(Batch, RefusesBeforeAnyWorkBegins) {
    fs::create_directory(folder / "other");
    fs::copy_file(in("a.png"), folder / "other/a.png");
    const auto expect_refused = [&](const Arguments& arguments, const std::string& said) {
        const Outcome outcome = quorvane(arguments);
        EXPECT_EQ(outcome.code, 2) << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(said));
        EXPECT_FALSE(fs::exists(folder / "out"));
    };
    const std::string out = folder / "out";
    expect_refused({"batch", folder / "in", folder / "other", "-o", out}, "out/a.mp4 would be made of ");
    expect_refused({"batch", in("a.png"), in("b.png"), "-o", out + "/one.gif", "--manifest", "x"},
                   "one of them is wanted");
    expect_refused({"batch", in("a.png"), "-o", folder / "in/{name}.png"}, "in/a.png: is an input");
    writeBytes(folder / "own.jsonl", "{\"photo\": \"" + in("a.png") + "\", \"depth\": \"" +
                                         in("b_depth.png") + R"(", "output": "b_depth.png"})");
    expect_refused({"batch", "--manifest", folder / "own.jsonl", "-o", in("")},
                   "in/b_depth.png: is an input");
    expect_refused({"batch", in("a.png"), "-o", out, "--size", "63x48"}, "such as 62x48");
    expect_refused({"batch", in("a.png"), "-o", out, "--shard", "3/2"}, "--shard 3");
    expect_refused({"batch", in("a.png"), "-o", out, "--timings", "t"}, "no such option");
    EXPECT_EQ(quorvane({"batch", folder / "nowhere", "-o", out}).code, 1);
    for (const char* name : {"same.mp4", "same.GIF", "same.html", "same.png"}) {
        expect_refused({"batch", folder / "in", "-o", folder / name},
                       "same" + fs::path(name).extension().string() + ": a batch makes a file of each photo");
        EXPECT_FALSE(fs::exists(folder / name));
    }
    for (const auto& [line, said] : std::map<std::string, std::string>{
             {"photo.jpg", "line 2: an object with a photo is wanted"},
             {"{\"photo\": \"a.jpg\", \"options\": {\"motoin\": \"eight\"}}",
              "--motoin: no such option; did you mean --motion?"},
             {"{\"photo\": \"a.jpg\", \"output\": \"../a.mp4\"}", "leads out of the folder"},
             {"{\"photo\": \"a.jpg\", \"ouput\": \"a.mp4\"}", "\"ouput\""},
             {"{\"photo\": " + std::string(100000, '[') + std::string(100000, ']') + "}",
              "100001 brackets in each other"}}) {
        const Outcome outcome = manifest("{\"photo\": \"" + in("a.png") + "\"}\n" + line + "\n");
        EXPECT_EQ(outcome.code, 2) << line;
        EXPECT_THAT(outcome.err, HasSubstr(said));
        EXPECT_FALSE(fs::exists(out));
    }
}

TEST_F(Batch, AFolderMayBeCalledLikeAFile) {
    EXPECT_EQ(quorvane({"batch", in("a.png"), "-o", folder / "new.mp4/", "--motion", "still", "--frames", "1",
                        "--size", "32x24"})
                  .code,
              0);
    EXPECT_TRUE(fs::exists(folder / "new.mp4/a.mp4"));
    EXPECT_EQ(quorvane({"batch", in("a.png"), "-o", folder / "new.mp4", "--motion", "still", "--frames", "1",
                        "--size", "32x24", "--resume"})
                  .code,
              0)
        << "it is there now";
}

TEST_F(Batch, TakesListsWhateverTheirNamesHold) {
    fs::rename(in("b.png"), in("two\nlines.png"));
    fs::rename(in("b_depth.png"), in("two\nlines_depth.png"));
    fs::rename(in("c.png"), in("-q.png"));
    fs::rename(in("c_depth.png"), in("-q_depth.png"));
    writeBytes(folder / "list", in("two\nlines.png") + '\0' + '\0' + "-q.png" + '\0');
    const std::string out = folder / "out";
    Process process(
        {"batch", "--from", "-", "-0", "-o", out, "--format", "png", "--size", "32x24"}, {}, false, [&] {
            if (chdir(in("").c_str()) != 0 || freopen((folder / "list").c_str(), "r", stdin) == nullptr)
                _exit(126);
        });
    const Outcome outcome = process.wait();
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(TemporaryFolder::names(out),
                ElementsAre("-q.png", ".quorvane-index", "results.jsonl", "two\nlines.png"));
}

TEST_F(Batch, GoesOnAfterAFailureUnlessToldOtherwise) {
    writeBytes(in("0.jpg"), "no picture");
    Outcome outcome = batch({"--jobs", "1"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.err, HasSubstr("3 of 4 photos rendered, 1 failed: "));
    EXPECT_EQ(batch({"--exit-codes", "sysexits"}).code, 65);
    fs::remove_all(folder / "out");
    EXPECT_EQ(batch({"--jobs", "1", "--fail-fast"}).code, 1);
    EXPECT_EQ(results().size(), 1u);
    EXPECT_THAT(TemporaryFolder::names(folder / "out"), ElementsAre(".quorvane-index", "results.jsonl"));
}

TEST_F(Batch, TellsWhatMaySucceedLater) {
    const Arguments clips = {"batch", folder / "in", "-o", folder / "out", "--size",
                             "32x24", "--frames",    "2",  "--exit-codes", "sysexits"};
    const Outcome outcome = quorvane(clips, withFfmpeg("kill -KILL $$\n"));
    EXPECT_EQ(outcome.code, 75);
    EXPECT_THAT(outcome.err, HasSubstr("3 failed (3 may succeed later"));
    for (const auto& [name, line] : results()) EXPECT_EQ(line["exit"], 75) << name;
    EXPECT_THAT(TemporaryFolder::names(folder / "out"), ElementsAre(".quorvane-index", "results.jsonl"));
}

// A worker that is killed takes one photo along, and another worker does the rest.
TEST_F(Batch, OutlivesItsWorkers) {
    const std::string killing = R"("options": {"depth-cmd": "sh -c 'kill -KILL $PPID' {in} {out}"}})";
    std::string lines = "{\"photo\": \"" + in("a.png") + "\", " + killing + "\n";
    // As a machine is shut down.
    const std::string ending = R"("options": {"depth-cmd": "sh -c 'kill -TERM $PPID; sleep 5' {in} {out}"}})";
    lines += "{\"photo\": \"" + in("b.png") + "\", " + ending + "\n{\"photo\": \"" + in("c.png") + "\"}\n";
    const Outcome outcome = manifest(lines, {"--jobs", "1", "--format", "png"});
    EXPECT_EQ(outcome.code, 1);
    const std::map<std::string, Json> came = results();
    EXPECT_EQ(came.at("a.png")["exit"], 75);
    EXPECT_THAT(came.at("a.png")["error"].get<std::string>(), HasSubstr("signal 9"));
    EXPECT_EQ(came.at("b.png")["exit"], 75);
    EXPECT_EQ(came.at("c.png")["exit"], 0);
}

TEST_F(Batch, ResumeSkipsWhatIsDoneAsItWouldBeDoneNow) {
    ASSERT_EQ(batch().code, 0);
    const auto lines_that = [&](const Arguments& more) {
        fs::remove(folder / "out/results.jsonl");
        Arguments arguments = {"--resume"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = batch(arguments);
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        std::set<std::string> rendered;
        for (const auto& [name, line] : results())
            if (!line.contains("skipped")) rendered.insert(name);
        return rendered;
    };
    EXPECT_THAT(lines_that({}), IsEmpty());
    fs::remove(folder / "out/a.png");
    EXPECT_THAT(lines_that({}), ElementsAre("a.png"));
    writeBytes(folder / "out/b.png", "spoilt");
    EXPECT_THAT(lines_that({}), ElementsAre("b.png"));
    // The same number of bytes, and a time long past.
    std::string photo = bytesOf(in("c_depth.png"));
    const auto changed = fs::last_write_time(in("c_depth.png"));
    media::writePng(media::makeSampleScene(64, 48).photo, folder / "other.png");
    fs::copy_file(in("a_depth.png"), in("c_depth.png"), fs::copy_options::overwrite_existing);
    EXPECT_THAT(lines_that({}), IsEmpty()) << "the same bytes are the same map";
    media::GrayImage flat(64, 48);
    media::writePng(flat, in("c_depth.png"));
    fs::last_write_time(in("c_depth.png"), changed);
    EXPECT_THAT(lines_that({}), ElementsAre("c.png"));
    EXPECT_THAT(lines_that({"--at", "1,0"}), ElementsAre("a.png", "b.png", "c.png"));
    EXPECT_THAT(lines_that({}), ElementsAre("a.png", "b.png", "c.png")) << "another view stands there now";
}

TEST_F(Batch, ResumeKnowsWhatOptionsFilesHold) {
    const std::string profile = folder / "p.json", properties = folder / "properties";
    const auto render = [&](double frame, const std::string& property) {
        writeBytes(profile, Json({{"quorvane_profile", 1}, {"options", {{"frame", frame}}}}).dump());
        writeBytes(properties, property);
        const Outcome outcome = quorvane({"batch", in("a.png"), "-o", folder / "out/{name}.png", "--size",
                                          "32x24", "--profile", profile, "--resume", "--results", "-"},
                                         {{"QUORVANE_PROPERTIES", properties}});
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return Json::parse(outcome.out).contains("skipped") ? "skipped" : "rendered";
    };
    EXPECT_STREQ(render(0.8, ""), "rendered");
    EXPECT_STREQ(render(0.8, ""), "skipped");
    EXPECT_STREQ(render(0.7, ""), "rendered");
    EXPECT_STREQ(render(0.7, "quorvane.para10=17\n"), "rendered");
    EXPECT_STREQ(render(0.7, "quorvane.para10=17\n"), "skipped");
}

// What was being written when the power failed.
TEST_F(Batch, ResumeCutsOffHalfALine) {
    ASSERT_EQ(batch().code, 0);
    const std::string index = folder / "out/.quorvane-index", lines = folder / "out/results.jsonl";
    fs::remove(folder / "out/a.png");
    writeBytes(index, bytesOf(index) + R"({"key":"12)");
    writeBytes(lines, bytesOf(lines) + R"({"photo":)");
    ASSERT_EQ(batch({"--resume"}).code, 0);
    EXPECT_EQ(bytesOf(lines).find(R"({"photo":{)"), std::string::npos);
    fs::remove(lines);
    ASSERT_EQ(batch({"--resume"}).code, 0);
    for (const auto& [name, line] : results()) EXPECT_TRUE(line.contains("skipped")) << name;
}

// A batch may be killed when frames are in their folder and that is not noted yet.
TEST_F(Batch, ResumeReplacesFramesOfItsOwnOnly) {
    const Arguments words = {"batch",  in("a.png"), "-o",       folder / "out/{name}/",
                             "--size", "32x24",     "--frames", "2"};
    ASSERT_EQ(quorvane(words).code, 0);
    EXPECT_EQ(results().at("a.png")["bytes"],
              fs::file_size(folder / "out/a/00001.png") + fs::file_size(folder / "out/a/00002.png"));
    const std::string frame = folder / "out/a/00001.png";
    const std::string expected = bytesOf(frame);
    std::string begun;
    std::istringstream index(bytesOf(folder / "out/.quorvane-index"));
    for (std::string line; std::getline(index, line);)
        if (Json::parse(line).contains("begun")) begun += line + '\n';
    writeBytes(folder / "out/.quorvane-index", begun);
    writeBytes(frame, "cut off");
    Arguments resumed = words;
    resumed.emplace_back("--resume");
    const Outcome outcome = quorvane(resumed);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(bytesOf(frame), expected);

    fs::remove(folder / "out/.quorvane-index");
    EXPECT_EQ(quorvane(resumed).code, 1) << "frames of somebody else's";
}

TEST_F(Batch, ShardsShareTheListWithoutALeftover) {
    for (const char* name : {"d", "e"}) copy("a", name);
    ASSERT_EQ(batch({"--shard", "1/3"}).code, 0);
    ASSERT_EQ(batch({"--shard", "auto"}, {{"SLURM_ARRAY_TASK_ID", "14"},
                                          {"SLURM_ARRAY_TASK_MIN", "10"},
                                          {"SLURM_ARRAY_TASK_STEP", "4"},
                                          {"SLURM_ARRAY_TASK_COUNT", "3"}})
                  .code,
              0);
    ASSERT_EQ(batch({"--shard", "auto/3"}, {{"JOB_COMPLETION_INDEX", "2"}}).code, 0);
    std::map<std::string, Json> all;
    for (const char* shard : {"1", "2", "3"}) {
        const auto some = results(std::string("out/results-") + shard + "-of-3.jsonl");
        EXPECT_LE(some.size(), 2u);
        for (const auto& line : some) EXPECT_TRUE(all.insert(line).second) << line.first << " twice";
    }
    EXPECT_EQ(all.size(), 5u);
    // Another number of machines finds what all of them have made.
    ASSERT_EQ(batch({"--resume"}).code, 0);
    for (const auto& [name, line] : results()) EXPECT_TRUE(line.contains("skipped")) << name;
}

TEST_F(Batch, EndsWithinTenSecondsOfASignal) {
    // The encoder that never ends is one of the hardest to get rid of.
    const auto slow = withFfmpeg("trap '' TERM\n: > \"" + folder.path() + "/begun$$\"\nsleep 100 & wait\n");
    Process process({"batch", folder / "in", "-o", folder / "out", "--size", "32x24", "--frames", "2",
                     "--jobs", "2", "--exit-codes", "sysexits"},
                    slow);
    const auto begun = [&] {
        const std::vector<std::string> names = folder.names();
        return std::count_if(names.begin(), names.end(),
                             [](const std::string& name) { return name.rfind("begun", 0) == 0; });
    };
    for (int i = 0; i < 1000 && begun() < 2; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const auto start = std::chrono::steady_clock::now();
    process.signal(SIGTERM);
    const Outcome outcome = process.wait();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(outcome.code, 75);
    EXPECT_THAT(outcome.err, HasSubstr("0 of 3 photos are done; --resume goes on"));
    EXPECT_THAT(TemporaryFolder::names(folder / "out"), ElementsAre(".quorvane-index", "results.jsonl"));
    for (const auto& [name, line] : results()) {
        EXPECT_EQ(line["exit"], 75) << name;
        EXPECT_EQ(line["error"], "interrupted") << name;
    }
    EXPECT_TRUE(noProcessNames(folder.path())) << "a process still runs";
}

TEST_F(Batch, WaitsForNoOtherBatchInItsPlaceForLong) {
    const auto slow = withFfmpeg("exec sleep 100\n");
    const Arguments arguments = {"batch", folder / "in", "-o", folder / "out", "--size", "32x24"};
    Process first(arguments, slow);
    for (int i = 0; i < 1000 && !fs::exists(folder / "out/results.jsonl"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const Outcome second = quorvane(arguments, slow);
    EXPECT_EQ(second.code, 1);
    EXPECT_THAT(second.err, HasSubstr("another batch is writing there"));
    first.signal(SIGTERM);
    EXPECT_EQ(first.wait().code, 1);
}

TEST_F(Batch, ShowsProgressOnATerminal) {
    if (!hasTerminals()) GTEST_SKIP() << "NO PSEUDO-TERMINALS HERE, THE PROGRESS WAS NOT TESTED";
    Process process({"batch", folder / "in", "-o", folder / "out/{name}.png", "--size", "32x24"}, {}, true);
    const Outcome outcome = process.wait();
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.err, HasSubstr("] 3/3"));
    EXPECT_THAT(outcome.err, HasSubstr("3 of 3 photos rendered"));
}

TEST_F(Batch, WritesItsLinesToAPipe) {
    const Outcome outcome = batch({"--results", "-"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 3);
    EXPECT_FALSE(fs::exists(folder / "out/results.jsonl"));
}

TEST_F(Batch, CallsViewsAsPlayersKnowThem) {
    ASSERT_EQ(batch({"--stereo", "sbs"}).code, 0);
    EXPECT_TRUE(fs::exists(folder / "out/a_SBS.png"));
}

TEST_F(Batch, OtherCommandsTellTheSameByTheirExitCodes) {
    const auto code = [&](Arguments arguments, const std::map<std::string, std::string>& environment = {}) {
        const int plain = quorvane(arguments, environment).code;
        arguments.insert(arguments.end(), {"--exit-codes", "sysexits"});
        return std::pair(plain, quorvane(arguments, environment).code);
    };
    EXPECT_EQ(code({"render", in("a.png"), "-o", folder / "a.png", "--size", "32x24"}), std::pair(0, 0));
    EXPECT_EQ(code({"inspect", folder / "nowhere.jpg"}), std::pair(1, 65));
    EXPECT_EQ(code({"inspect", in("a.png"), "--colour"}), std::pair(2, 64));
    EXPECT_EQ(code({"render", in("a.png"), "-o", folder / "a.mp4"}, withFfmpeg("kill -KILL $$\n")),
              std::pair(1, 75));
    EXPECT_EQ(quorvane({"info", "--exit-codes", "good"}).code, 2);
}

}  // namespace
}  // namespace quorvane::test
