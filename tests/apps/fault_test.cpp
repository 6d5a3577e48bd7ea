// The world fails around the program: disks, streams, ffmpeg, signals. It ends with one line and exit code 1,
// or does its work all the same; no half-written file and no process stays behind.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <thread>

#include "media/picture/picture_file.h"
#include "media/picture/vips.h"
#include "media/scene/sample_scene.h"
#include "process.h"
#include "support/processes.h"
#include "support/temporary_folder.h"
#include "system/error.h"

namespace quorvane::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

using Arguments = std::vector<std::string>;
using Environment = std::map<std::string, std::string>;

void pauseMs(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

/// Waits until `holds`, for ten seconds at most.
template <typename Condition>
bool eventually(Condition holds) {
    for (int i = 0; i < 1000; ++i) {
        if (holds()) return true;
        pauseMs(10);
    }
    return holds();
}

/// A disk of its own, mounted for as long as it lives.
class Disk {
  public:
    Disk(const std::string& place, const std::string& size) : m_place(place) {
        fs::create_directory(place);
        m_mounted = mount("tmpfs", place.c_str(), "tmpfs", 0, ("size=" + size).c_str()) == 0;
    }
    ~Disk() {
        if (m_mounted) umount2(m_place.c_str(), MNT_DETACH);
    }
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;

    bool mounted() const { return m_mounted; }
    bool makeReadOnly() const {
        return mount("tmpfs", m_place.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

  private:
    std::string m_place;
    bool m_mounted = false;
};

#define SKIP_WITHOUT_DISK(disk) \
    if (!(disk).mounted()) GTEST_SKIP() << "NO RIGHT TO MOUNT, NOT TESTED: " << std::strerror(errno)

/// A shell script's lines that stand for an ffmpeg which works: its last word is the file.
const std::string kWritesAll = "for last; do :; done; cat > \"${last#file:}\"\n";

class Fault : public testing::Test {
  protected:
    void SetUp() override {
        nameInProcesses(folder.path());
        const media::SampleScene scene = media::makeSampleScene(96, 72);
        media::writePng(scene.photo, photo);
        media::writePng(scene.depth, depth);
    }

    Arguments render(const std::string& out, const Arguments& more = {}) const {
        Arguments arguments = {"render", photo, depth, "-o", out};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    Arguments stages(const std::string& out) const { return {"stages", photo, depth, "-o", out}; }

    void expectOneLine(const Outcome& outcome, const std::string& said) const {
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, StartsWith("quorvane: "));
        EXPECT_THAT(outcome.err, HasSubstr(said));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
        EXPECT_TRUE(noProcessNames(folder.path())) << "a process still runs";
    }

    void expectInterrupted(const Outcome& outcome) const {
        expectOneLine(outcome, "quorvane: interrupted\n");
    }

    /// Runs, expects one line, and nothing new in the folder.
    void expectRefused(const Arguments& arguments, const std::string& said,
                       const Environment& environment = {}, const std::function<void()>& prepare = {}) const {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const std::vector<std::string> before = folder.names();
        expectOneLine(quorvane(arguments, environment, prepare), said);
        EXPECT_EQ(folder.names(), before) << "something was left behind";
    }

    /// Whether a rendering process has got as far as its output.
    bool hasBegun() const { return folder.names().size() > 2 || processesNaming(folder.path()) > 1; }

    /// An environment in which ffmpeg is a shell script.
    Environment withFfmpeg(const std::string& script) const {
        fs::create_directory(folder / "bin");
        writeBytes(folder / "bin/ffmpeg", "#!/bin/sh\n" + script);
        fs::permissions(folder / "bin/ffmpeg", fs::perms::owner_all);
        return {{"PATH", (folder / "bin") + ":/usr/bin:/bin"}};
    }

    const TemporaryFolder folder;
    const std::string photo = folder / "photo.png";
    const std::string depth = folder / "depth.png";
};

// Disks.

TEST_F(Fault, FullDiskIsToldAndTheOldFileStays) {
    for (const char* name : {"a.mp4", "a.webp", "a.gif", "a.png", "frames/"})
        // No room from the start, and room for a part.
        for (const char* size : {"4k", "16k"}) {
            SCOPED_TRACE(std::string(name) + " on " + size);
            const Disk disk(folder / "disk", size);
            SKIP_WITHOUT_DISK(disk);
            const std::string out = folder / "disk/" + name;
            const bool file = out.back() != '/';
            if (file) writeBytes(out, "old");
            expectRefused(render(out, {"--size", "400x300", "--frames", "24"}), name);
            if (file) {
                EXPECT_EQ(bytesOf(out), "old");
            }
            EXPECT_EQ(folder.names().size(), 3u);
            EXPECT_EQ(TemporaryFolder::names(folder / "disk").size(), file ? 1u : 0u);
        }
}

TEST_F(Fault, FullDiskIsToldByTheOtherCommands) {
    const Disk disk(folder / "disk", "16k");
    SKIP_WITHOUT_DISK(disk);
    expectRefused(stages(folder / "disk/sheet.png"),
                  "sheet.png: cannot be written (No space left on device)");
    expectRefused({"sample", folder / "disk/p.png", folder / "disk/d.png"},
                  "p.png: cannot be written (No space left on device)");
    EXPECT_THAT(TemporaryFolder::names(folder / "disk"), IsEmpty());
}

TEST_F(Fault, FullDiskIsToldForTimingsAndStandardOutput) {
    expectRefused(render(folder / "a.png", {"--timings", "/dev/full"}),
                  "/dev/full: cannot be written (No space");
    const auto to_full = [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); };
    expectRefused({"--help"}, "standard output: cannot be written (No space", {}, to_full);
}

TEST_F(Fault, ReadOnlyFolderIsTold) {
    const Disk disk(folder / "disk", "1m");
    SKIP_WITHOUT_DISK(disk);
    ASSERT_TRUE(disk.makeReadOnly());
    for (const char* name : {"a.mp4", "a.webp", "a.gif", "a.png", "frames/"})
        expectRefused(render(folder / "disk/" + name), "cannot be written (Read-only file system)");
    expectRefused(stages(folder / "disk/a.png"), "cannot be written (Read-only file system)");
    expectRefused({"sample", folder / "disk/a.png", folder / "disk/b.png"},
                  "cannot be written (Read-only file system)");
    expectRefused(render(folder / "a.png", {"--timings", folder / "disk/t.txt"}),
                  "cannot be written (Read-only file system)");
}

TEST_F(Fault, FileThatMayNotGrowIsTold) {
    const auto limit = [] {
        const rlimit small = {8192, 8192};
        setrlimit(RLIMIT_FSIZE, &small);
    };
    for (const char* name : {"a.mp4", "a.webp", "a.gif", "a.png", "frames/"})
        expectRefused(render(folder / name, {"--size", "400x300", "--frames", "24"}), name, {}, limit);
}

TEST_F(Fault, FolderMayBeADiskOfItsOwn) {
    const Disk disk(folder / "disk", "10m");
    SKIP_WITHOUT_DISK(disk);
    fs::permissions(folder / "disk", fs::perms::owner_all);
    fs::create_symlink("disk", folder / "link");
    for (const char* name : {"disk", "disk/", "link"}) {
        SCOPED_TRACE(name);
        const Outcome outcome = quorvane(render(folder / name, {"--frames", "3", "--force"}));
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_THAT(TemporaryFolder::names(folder / "disk"),
                    ElementsAre("00001.png", "00002.png", "00003.png"));
        EXPECT_EQ(fs::status(folder / "disk").permissions(), fs::perms::owner_all);
        fs::remove(folder / "disk/00002.png");
    }
    EXPECT_EQ(quorvane(render(folder / "disk", {"--frames", "1", "--force"})).code, 0);
    EXPECT_THAT(TemporaryFolder::names(folder / "disk"), ElementsAre("00001.png"));
}

TEST_F(Fault, NamedTemporaryFilesAreRemovedToo) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers need /proc";
#endif
    // Without /proc there is no path to an unnamed file.
    const auto prepare = [] {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("tmpfs", "/proc", "tmpfs", 0, nullptr) != 0)
            _exit(99);
    };
    const Outcome outcome = quorvane(render(folder / "a.mp4", {"--frames", "3"}), {}, prepare);
    if (outcome.code == 99) GTEST_SKIP() << "NO RIGHT TO MOUNT, NOT TESTED";
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(folder.names(), ElementsAre("a.mp4", "depth.png", "photo.png"));
    fs::remove(folder / "a.mp4");
    for (const int signal : {SIGINT, SIGQUIT, SIGALRM, SIGUSR1, SIGXCPU}) {
        SCOPED_TRACE(signal);
        Process process(render(folder / "a.mp4", {"--frames", "99999"}), {}, false, prepare);
        ASSERT_TRUE(eventually([&] { return folder.names().size() > 2; }));
        pauseMs(100);
        process.signal(signal);
        expectInterrupted(process.wait());
        EXPECT_THAT(folder.names(), ElementsAre("depth.png", "photo.png"));
    }
}

TEST_F(Fault, NoPlaceForTemporaryFilesIsNoFault) {
    const Disk disk(folder / "disk", "10m");
    SKIP_WITHOUT_DISK(disk);
    // In a view of the file system of its own, where only the disk can be written.
    const auto prepare = [] {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("/tmp", "/tmp", nullptr, MS_BIND | MS_REC, nullptr) != 0 ||
            mount("none", "/tmp", nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) != 0)
            _exit(99);
    };
    const Outcome outcome =
        quorvane(render(folder / "disk/a.mp4", {"--frames", "3"}), {{"TMPDIR", "/nonexistent"}}, prepare);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(TemporaryFolder::names(folder / "disk"), ElementsAre("a.mp4"));
}

TEST_F(Fault, FolderThatVanishesIsTold) {
    // ffmpeg takes it away when it has read all.
    fs::create_directory(folder / "gone");
    const Environment environment = withFfmpeg(kWritesAll + "rm -r " + (folder / "gone") + "\n");
    expectOneLine(quorvane(render(folder / "gone/a.mp4", {"--frames", "3"}), environment),
                  "gone/a.mp4: cannot be written (No such file or directory)");

    fs::create_directory(folder / "gone");
    Process process(render(folder / "gone/frames/", {"--frames", "99999"}));
    EXPECT_TRUE(eventually([&] { return !fs::is_empty(folder / "gone"); }));
    while (fs::exists(folder / "gone")) {
        // A frame may come between looking and removing.
        std::error_code again;
        fs::remove_all(folder / "gone", again);
    }
    expectOneLine(process.wait(), "gone/frames/");
}

// Where the output stands.

TEST_F(Fault, InputIsNotOverwrittenThroughLinks) {
    const std::string before = bytesOf(photo);
    fs::create_symlink(photo, folder / "soft.png");
    fs::create_hard_link(photo, folder / "hard.png");
    for (const char* name : {"soft.png", "hard.png"}) {
        expectRefused(render(folder / name), "is an input");
        expectRefused(stages(folder / name), "is an input");
        expectRefused(render(folder / "a.png", {"--timings", folder / name}), "is an input");
    }
    EXPECT_EQ(bytesOf(photo), before);
}

TEST_F(Fault, InputIsNotReplacedAsAFrame) {
    fs::create_directory(folder / "frames");
    fs::copy_file(photo, folder / "frames/00001.png");
    fs::create_symlink(folder / "frames", folder / "link");
    for (const char* out : {"frames", "frames/", "link", "link/"})
        expectRefused({"render", folder / "frames/00001.png", depth, "-o", folder / out, "--force"},
                      "holds the input");
    EXPECT_EQ(bytesOf(folder / "frames/00001.png"), bytesOf(photo));
}

TEST_F(Fault, LinkIsWrittenThrough) {
    fs::create_directory(folder / "elsewhere");
    // The first leads to nothing yet, the second to an old file, the last two to folders.
    fs::create_symlink("elsewhere/new.png", folder / "dangling.png");
    writeBytes(folder / "elsewhere/old.png", "old");
    fs::create_symlink("elsewhere/old.png", folder / "link.png");
    fs::create_symlink("elsewhere/frames", folder / "frames");
    fs::create_directory(folder / "elsewhere/empty");
    fs::create_symlink("elsewhere/empty", folder / "empty");
    for (const char* name : {"dangling.png", "link.png", "frames/", "empty"}) {
        const Outcome outcome = quorvane(render(folder / name, {"--frames", "1"}));
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
    }
    EXPECT_TRUE(fs::is_symlink(folder / "dangling.png"));
    EXPECT_EQ(media::readPhoto(folder / "elsewhere/new.png").width, 96);
    EXPECT_EQ(media::readPhoto(folder / "elsewhere/old.png").width, 96);
    EXPECT_THAT(TemporaryFolder::names(folder / "elsewhere"),
                ElementsAre("empty", "frames", "new.png", "old.png"));
    EXPECT_THAT(TemporaryFolder::names(folder / "elsewhere/frames"), ElementsAre("00001.png"));
    EXPECT_THAT(TemporaryFolder::names(folder / "elsewhere/empty"), ElementsAre("00001.png"));
}

TEST_F(Fault, LinkThatLeadsNowhereIsTold) {
    fs::create_symlink("none/a.png", folder / "a.png");
    fs::create_symlink("round.png", folder / "round.png");
    expectRefused(render(folder / "a.png"), "there is no folder");
    expectRefused(render(folder / "round.png"), "too many symbolic links");
}

TEST_F(Fault, OutputThatIsNoFileIsTold) {
    ASSERT_EQ(mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    expectRefused(render(folder / "pipe.png"), "pipe.png: is not a plain file");
}

TEST_F(Fault, NamesMayBeAsLongAsTheDiskTakes) {
    const std::string out = folder / (std::string(251, 'n') + ".png");
    const Outcome outcome = quorvane(render(out));
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_TRUE(fs::exists(out));
}

TEST_F(Fault, ControlCharactersInANameStayOneLine) {
    expectRefused({"render", folder / "two\nlines\x1b[2J.png", depth, "-o", folder / "a.png"},
                  "two?lines?[2J.png");
}

TEST_F(Fault, SamplesTwoFilesAreNotOne) {
    fs::create_symlink("a.png", folder / "b.png");
    for (const char* other : {"./a.png", "bin/../a.png", "b.png"})
        EXPECT_EQ(quorvane({"sample", folder / "a.png", folder / other}).code, 2) << other;
    EXPECT_FALSE(fs::exists(folder / "a.png"));
}

TEST_F(Fault, ModeIsKeptAndElseTheUmasks) {
    const auto private_by_default = [] { umask(0027); };
    for (const char* name : {"a.png", "a.mp4"}) {
        SCOPED_TRACE(name);
        const std::string out = folder / name;
        ASSERT_EQ(quorvane(render(out, {"--frames", "2"}), {}, private_by_default).code, 0);
        EXPECT_EQ(fs::status(out).permissions(), fs::perms(0640));
        fs::permissions(out, fs::perms(0604));
        ASSERT_EQ(quorvane(render(out, {"--frames", "2"}), {}, private_by_default).code, 0);
        EXPECT_EQ(fs::status(out).permissions(), fs::perms(0604));
    }
    ASSERT_EQ(quorvane(render(folder / "frames/", {"--frames", "2"}), {}, private_by_default).code, 0);
    EXPECT_EQ(fs::status(folder / "frames").permissions(), fs::perms(0750));
    EXPECT_EQ(fs::status(folder / "frames/00002.png").permissions(), fs::perms(0640));
}

TEST_F(Fault, TimingsAppearWholeOrNotAtAll) {
    const std::string timings = folder / "t.txt";
    const Environment no_ffmpeg = {{"PATH", "/nonexistent"}};
    expectRefused(render(folder / "a.mp4", {"--timings", timings}), "ffmpeg is not installed", no_ffmpeg);
    EXPECT_FALSE(fs::exists(timings));
    writeBytes(timings, "old");
    expectRefused(render(folder / "a.mp4", {"--timings", timings}), "ffmpeg is not installed", no_ffmpeg);
    EXPECT_EQ(bytesOf(timings), "old");
    expectRefused(render(folder / "a.mp4", {"--frames", "3", "--timings", timings}), "has written nothing",
                  withFfmpeg("cat > /dev/null\n"));
    EXPECT_EQ(bytesOf(timings), "old");
    ASSERT_EQ(quorvane(render(folder / "a.png", {"--timings", timings})).code, 0);
    EXPECT_THAT(bytesOf(timings), HasSubstr("ms"));
    EXPECT_THAT(bytesOf(timings), testing::Not(HasSubstr("old")));
}

TEST_F(Fault, TimingsAndOutputAreTwoFiles) {
    fs::create_symlink("a.png", folder / "link");
    for (const char* timings : {"a.png", "./a.png", "link"}) {
        EXPECT_EQ(quorvane(render(folder / "a.png", {"--timings", folder / timings})).code, 2) << timings;
        Arguments sheet = stages(folder / "a.png");
        sheet.insert(sheet.end(), {"--timings", folder / timings});
        EXPECT_EQ(quorvane(sheet).code, 2) << timings;
    }
    EXPECT_FALSE(fs::exists(folder / "a.png"));
}

// Standard streams.

TEST_F(Fault, ClosedStreamsChangeNothing) {
    const Arguments still = {"--size", "64x48", "-v"};
    ASSERT_EQ(quorvane(render(folder / "reference.png", still)).code, 0);
    const std::string reference = bytesOf(folder / "reference.png");
    for (const std::vector<int>& closed :
         std::vector<std::vector<int>>{{0}, {1}, {2}, {0, 1}, {1, 2}, {0, 1, 2}}) {
        SCOPED_TRACE(testing::PrintToString(closed));
        const auto close_them = [&closed] {
            for (const int stream : closed) close(stream);
        };
        EXPECT_EQ(quorvane(render(folder / "a.png", still), {}, close_them).code, 0);
        EXPECT_EQ(bytesOf(folder / "a.png"), reference);
        EXPECT_EQ(quorvane(render(folder / "a.mp4", {"--frames", "3", "-v"}), {}, close_them).code, 0);
        EXPECT_THAT(bytesOf(folder / "a.mp4").substr(4, 4), "ftyp");
        EXPECT_EQ(
            quorvane({"render", folder / "none.png", depth, "-o", folder / "b.png"}, {}, close_them).code, 1);
        EXPECT_THAT(folder.names(), ElementsAre("a.mp4", "a.png", "depth.png", "photo.png", "reference.png"));
    }
}

TEST_F(Fault, MessagesThatNobodyReadsChangeNothing) {
    const auto prepare = [] {
        int ends[2];
        if (pipe(ends) != 0) _exit(99);
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
    };
    EXPECT_EQ(quorvane(render(folder / "a.mp4", {"--frames", "3", "-v"}), {}, prepare).code, 0);
    EXPECT_THAT(folder.names(), ElementsAre("a.mp4", "depth.png", "photo.png"));
}

TEST_F(Fault, DecodersKeepTheirThoughtsToThemselves) {
    const std::string broken = folder / "broken.avif";
    try {
        media::toVips(media::makeSampleScene(64, 64).photo).write_to_file(broken.c_str());
    } catch (const vips::VError&) {
        GTEST_SKIP() << "NO AVIF ENCODER, NOT TESTED: " << media::vipsReason("");
    }
    // Nothing but data units of a kind that there is not.
    std::string bytes = bytesOf(broken);
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.find("mdat") + 4), bytes.end(), '\x42');
    writeBytes(broken, bytes);
    expectRefused({"render", broken, depth, "-o", folder / "a.png"},
                  "broken.avif: cannot be read as a picture");
}

// ffmpeg.

TEST_F(Fault, FfmpegKilledInTheMiddleIsTold) {
    const Environment environment = withFfmpeg("head -c 10000 > /dev/null; kill -9 $$\n");
    expectRefused(render(folder / "a.mp4"), "a.mp4: ffmpeg was ended by signal 9 (Killed)", environment);
}

TEST_F(Fault, FfmpegThatWritesNothingIsTold) {
    writeBytes(folder / "a.mp4", "old");
    expectRefused(render(folder / "a.mp4", {"--frames", "3"}), "a.mp4: ffmpeg has written nothing",
                  withFfmpeg("cat > /dev/null\n"));
    EXPECT_EQ(bytesOf(folder / "a.mp4"), "old");
}

TEST_F(Fault, FfmpegThatSaysNothingIsToldByItsEnd) {
    expectRefused(render(folder / "a.mp4", {"--frames", "3"}), "a.mp4: ffmpeg failed with exit code 3",
                  withFfmpeg("cat > /dev/null\nexit 3\n"));
}

TEST_F(Fault, FfmpegThatStopsReadingIsTold) {
    expectRefused(render(folder / "a.mp4", {"--size", "320x240"}),
                  "a.mp4: ffmpeg stopped before the last frame",
                  withFfmpeg("head -c 10000 > /dev/null\nexit 0\n"));
}

TEST_F(Fault, FfmpegThatDiesWhileFramesWaitIsTold) {
    // 307,200 bytes a frame: it takes the first three, and the next ones pile up before it ends.
    const Environment environment = withFfmpeg("head -c 1000000 > /dev/null; sleep 1; kill -9 $$\n");
    expectRefused(render(folder / "a.mp4", {"--size", "320x240"}),
                  "a.mp4: ffmpeg was ended by signal 9 (Killed)", environment);
}

TEST_F(Fault, FrameThatCannotBeWrittenInTheMiddleIsTold) {
    // Room for about twenty frames.
    const Disk disk(folder / "disk", "256k");
    SKIP_WITHOUT_DISK(disk);
    expectRefused(render(folder / "disk/frames/", {"--frames", "500"}), "disk/frames/000");
    EXPECT_THAT(TemporaryFolder::names(folder / "disk"), IsEmpty());
}

TEST_F(Fault, FfmpegThatHangsIsEndedBySignals) {
    // It never reads; it reads all and never ends; it is a script around another process.
    const std::string started = "touch " + (folder / "started") + "\n";
    const std::string forever = "while :; do sleep 0.1; done\n";
    for (const std::string& script :
         {started + forever, "cat > /dev/null\n" + started + forever,
          started + "sh -c 'while :; do sleep 0.1; done' " + (folder / "inner") + "; :\n"}) {
        SCOPED_TRACE(script);
        Process process(render(folder / "a.mp4", {"--size", "320x240", "--frames", "30"}),
                        withFfmpeg(script));
        ASSERT_TRUE(eventually([&] { return fs::exists(folder / "started"); }));
        pauseMs(300);
        process.signal(SIGINT);
        expectInterrupted(process.wait());
        fs::remove(folder / "started");
        EXPECT_THAT(folder.names(), ElementsAre("bin", "depth.png", "photo.png"));
        fs::remove_all(folder / "bin");
    }
}

// Signals.

TEST_F(Fault, SignalWhileReadingEndsAtOnce) {
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const int signal : {SIGINT, SIGTERM})
        for (const Arguments& arguments :
             {Arguments{"render", folder / "pipe", depth, "-o", folder / "a.mp4"},
              Arguments{"render", photo, folder / "pipe", "-o", folder / "frames/"},
              Arguments{"stages", folder / "pipe", depth, "-o", folder / "a.png"}}) {
            SCOPED_TRACE(testing::PrintToString(arguments));
            Process process(arguments);
            // Returns once the program has opened its end.
            const int pipe = open((folder / "pipe").c_str(), O_WRONLY | O_CLOEXEC);
            ASSERT_EQ(write(pipe, "\x89PNG", 4), 4);
            process.signal(signal);
            expectInterrupted(process.wait());
            close(pipe);
            EXPECT_THAT(folder.names(), ElementsAre("depth.png", "photo.png", "pipe"));
        }
}

TEST_F(Fault, SignalAtAnyTimeLeavesAllOrNothing) {
    const std::vector<std::string> before = folder.names();
    for (const int signal : {SIGINT, SIGTERM})
        for (const int delay : {0, 40, 80, 120, 160, 200, 250, 300, 400})
            for (const Arguments& arguments :
                 {render(folder / "a.png", {"--size", "800x600"}), stages(folder / "a.png"),
                  Arguments{"sample", folder / "a.png", folder / "b.png", "--size", "600x400"}}) {
                SCOPED_TRACE(testing::PrintToString(arguments) + " after ms " + std::to_string(delay));
                Process process(arguments);
                pauseMs(delay);
                process.signal(signal);
                const Outcome outcome = process.wait();
                if (outcome.code == 0) {
                    EXPECT_EQ(outcome.err, "");
                    EXPECT_TRUE(fs::exists(folder / "a.png"));
                } else if (outcome.code != 128 + signal) {  // before it had begun
                    expectInterrupted(outcome);
                }
                for (const char* name : {"a.png", "b.png"}) {
                    if (!fs::exists(folder / name)) continue;
                    EXPECT_GT(media::readPhoto(folder / name).width, 0) << "half a picture";
                    fs::remove(folder / name);
                }
                EXPECT_EQ(folder.names(), before);
            }
}

TEST_F(Fault, MoreSignalsDuringTheEndChangeNothing) {
    for (const char* name : {"a.mp4", "a.gif", "frames/"}) {
        SCOPED_TRACE(name);
        Process process(render(folder / name, {"--frames", "99999"}));
        ASSERT_TRUE(eventually([&] { return hasBegun(); }));
        pauseMs(100);
        for (int i = 0; i < 300; ++i) {
            process.signal(i % 2 == 0 ? SIGINT : SIGTERM);
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        expectInterrupted(process.wait());
        EXPECT_THAT(folder.names(), ElementsAre("depth.png", "photo.png"));
    }
}

TEST_F(Fault, IgnoredSignalStaysIgnored) {
    Process process(render(folder / "a.mp4", {"--frames", "30"}), {}, false,
                    [] { std::signal(SIGHUP, SIG_IGN); });
    ASSERT_TRUE(eventually([&] { return hasBegun(); }));
    process.signal(SIGHUP);
    EXPECT_EQ(process.wait().code, 0);
    EXPECT_THAT(folder.names(), ElementsAre("a.mp4", "depth.png", "photo.png"));
}

// The property file.

TEST_F(Fault, PropertyFileThatCannotBeReadIsTold) {
    fs::create_directory(folder / "properties");
    for (const auto& [path, said] :
         {std::pair{folder / "properties", "cannot read the property file: Is a directory"},
          std::pair{folder / "none", "cannot read the property file: No such file"},
          std::pair{std::string("/dev/zero"), "not read: a property file has at most 1048576 bytes"}}) {
        const Outcome outcome = quorvane(render(folder / "a.png"), {{"QUORVANE_PROPERTIES", path}});
        EXPECT_EQ(outcome.code, 0);
        EXPECT_THAT(outcome.err, StartsWith(path + ": " + said));
        EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
}

// Sizes.

TEST_F(Fault, PhotoOfExtremeAspectIsCutAllTheSame) {
    media::RgbImage line(1000000, 1);
    media::writePng(line, folder / "line.png");
    const Outcome outcome =
        quorvane({"render", folder / "line.png", depth, "-o", folder / "a.png", "--size", "4000x1000", "-v"});
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("cut      the middle 4 x 1 of the photo"));
}

}  // namespace
}  // namespace quorvane::test
